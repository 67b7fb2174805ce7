#include "support/SaveAtomically.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <cerrno>
#include <cstring>

namespace kx {

SaveResult saveAtomically(const QString& path, const QByteArray& contents) {
    const QString folder = QFileInfo(path).absolutePath();
    if (!QDir().mkpath(folder))
        return {QStringLiteral("The folder %1 cannot be created.")
                    .arg(QDir::toNativeSeparators(folder))};
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return {file.errorString()};
    // write() reports a short write only by its count, and commit() overlooks a buffer that
    // could not be flushed: either would publish a cut file.
    errno = 0;
    const bool whole = file.write(contents) == contents.size() && file.flush();
    if (!whole) {
        // Qt keeps no reason for a failed flush ("Unknown error"); the system's is in errno.
        const int reason = errno;
        file.cancelWriting();
        if (reason == 0)
            return {QStringLiteral("The disk took only part of the file (is it full?).")};
        return {QStringLiteral("The disk took only part of the file: %1.")
                    .arg(QString::fromLocal8Bit(std::strerror(reason)))};
    }
    // commit() syncs the new file to the disk before it takes the old one's place.
    if (!file.commit())
        return {file.errorString()};
    return {};
}

} // namespace kx
