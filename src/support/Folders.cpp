#include "support/Folders.h"

#include "support/TrimSpaces.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace kx {
namespace {

// An override from the environment, else the standard location; "/" separators, no trailing
// separator.
QString folderFrom(const char* variable, const QString& fallback) {
    const QString overridden = qEnvironmentVariable(variable);
    return QDir::cleanPath(
        QDir::fromNativeSeparators(overridden.isEmpty() ? fallback : overridden));
}

} // namespace

bool FolderExists(const QString& path) {
    return QFileInfo(trimSpaces(path)).isDir();
}

void CreateFolderPath(const QString& path) {
    if (!FolderExists(path))
        QDir().mkpath(trimSpaces(path));
}

QString FolderOfPath(const QString& path) {
    const QString trimmed = trimSpaces(path);
    QString searched = trimmed;
    searched.replace(u'\\', u'/');
    const qsizetype lastSeparator = searched.lastIndexOf(u'/');
    if (lastSeparator < 0 || lastSeparator == searched.size() - 1)
        return {};
    const qsizetype cut = searched.indexOf(searched.sliced(lastSeparator), 0, Qt::CaseInsensitive);
    return trimmed.left(cut);
}

QString CommonAppDataFolder() {
#ifdef Q_OS_WIN
    const QString machineWide = qEnvironmentVariable("ProgramData");
#else
    const QString machineWide =
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
#endif
    return folderFrom("KX_COMMON_APPDATA", machineWide);
}

QString DocumentsFolder() {
    return folderFrom("KX_DOCUMENTS",
                      QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
}

} // namespace kx
