#include "app/SingleInstance.h"

#include <QDir>
#include <QStandardPaths>

namespace kx {

QString SingleInstance::defaultLockPath() {
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty())
        folder = QDir::tempPath();
    return QDir(folder).filePath(QStringLiteral("kxcpl.lock"));
}

SingleInstance::SingleInstance(const QString& lockPath)
    : m_lock(lockPath) {
    // The program runs for hours: only a dead owner makes the lock stale, never its age.
    m_lock.setStaleLockTime(0);
}

bool SingleInstance::tryAcquire() {
    return m_lock.isLocked() || m_lock.tryLock(0);
}

} // namespace kx
