#include "measure/DiskSync.h"

#include <QFile>
#include <QFileInfo>

#ifdef Q_OS_WIN
#include <io.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

namespace kx {

bool syncToDisk(int handle) {
#ifdef Q_OS_WIN
    return _commit(handle) == 0;
#else
    return ::fdatasync(handle) == 0;
#endif
}

void syncFolderOf(const QString& path) {
#ifdef Q_OS_WIN
    Q_UNUSED(path); // the file system keeps its names itself
#else
    const int folder = ::open(QFile::encodeName(QFileInfo(path).absolutePath()).constData(),
                              O_RDONLY | O_DIRECTORY);
    if (folder >= 0) {
        ::fsync(folder);
        ::close(folder);
    }
#endif
}

} // namespace kx
