#include "resources/ResourceFiles.h"

#include <QDir>
#include <QFileInfo>

namespace kx::resources {

QString soundFile(const QString& programFolder) {
    const QDir program(programFolder);
    const QString beside = program.filePath(QLatin1String(SoundFileName));
    if (QFileInfo(beside).isFile())
        return beside;
    // The installed layout keeps data out of the programs' folder: share/kxcpl beside bin.
    const QString installed = QDir::cleanPath(
        program.filePath(QStringLiteral(KX_DATA_FROM_PROGRAM "/") + QLatin1String(SoundFileName)));
    return QFileInfo(installed).isFile() ? installed : beside;
}

} // namespace kx::resources
