#include "support/Folders.h"

#include "support/TrimSpaces.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <cstdio>
#include <mutex>

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
    return folderFrom("KX_COMMON_APPDATA", qEnvironmentVariable("ProgramData"));
#else
    const QString overridden = qEnvironmentVariable("KX_COMMON_APPDATA");
    const QString machineWide = QLatin1String(MachineAppDataFolder);
    const CommonAppDataChoice choice = ChooseCommonAppDataFolder(
        overridden, machineWide,
        overridden.isEmpty() && FolderIsWritable(machineWide + QLatin1String(ProfileSubfolder)),
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation));
    if (!choice.notice.isEmpty()) {
        // Every profile access asks again; the user needs to hear it only once a run.
        static std::once_flag said;
        std::call_once(said, [&] { std::fputs(qPrintable(choice.notice + u'\n'), stderr); });
    }
    return QDir::cleanPath(QDir::fromNativeSeparators(choice.folder));
#endif
}

CommonAppDataChoice ChooseCommonAppDataFolder(const QString& overridden, const QString& machineWide,
                                              bool machineWideUsable, const QString& perUser) {
    if (!overridden.isEmpty())
        return {overridden, {}};
    if (machineWideUsable)
        return {machineWide, {}};
    const QLatin1String subfolder(ProfileSubfolder);
    return {perUser, QStringLiteral("kxcpl: the shared profile folder \"%1\" is missing or not "
                                    "writable; keeping this user's own profile in \"%2\".")
                         .arg(machineWide + subfolder, perUser + subfolder)};
}

bool FolderIsWritable(const QString& path) {
    const QFileInfo folder(path);
    return folder.isDir() && folder.isWritable();
}

QString DocumentsFolder() {
    return folderFrom("KX_DOCUMENTS",
                      QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
}

QString UserDataFolder() {
    return folderFrom("KX_USER_DATA",
                      QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                          QLatin1String(ProfileSubfolder));
}

QString UnsavedCapturesFolder() {
    return UserDataFolder() + QStringLiteral("/Unsaved Captures");
}

} // namespace kx
