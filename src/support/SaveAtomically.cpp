#include "support/SaveAtomically.h"

#include <QSaveFile>

namespace kx {

bool saveAtomically(const QString& path, const QByteArray& contents) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(contents);
    // commit() overlooks a failure to flush its buffer and would publish a cut file.
    if (!file.flush())
        file.cancelWriting();
    return file.commit();
}

} // namespace kx
