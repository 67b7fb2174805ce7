#pragma once

#include <QString>

namespace kx {

// Folder helpers. Paths returned here use "/" and never end with a separator. Where a path is
// only taken apart (FolderOfPath), "\" is accepted as a separator too; paths handed to the
// file system are used as they are, so on Linux a "\" there is part of a name.

// True when the path, trimmed of spaces, names an existing folder.
bool FolderExists(const QString& path);

// Makes every missing folder of an absolute folder path; failures are ignored.
void CreateFolderPath(const QString& path);

// The part of a path before its file name: the text before the first occurrence of a
// separator followed by the file name, compared without regard to case (so a name that also
// appears earlier in the path cuts it there, which is kept on purpose). Empty when the path
// has no separator or ends with one.
QString FolderOfPath(const QString& path);

// The folder the installed package makes for the profile shared by every user of the machine;
// the profile's own folder below it is writable by the group "kxcpl".
inline constexpr char MachineAppDataFolder[] = "/var/lib/kxcpl";

// The profile's folder below the common application-data folder.
inline constexpr char ProfileSubfolder[] = "/Quentral/Plate Control Panel";

// The common application-data folder: $KX_COMMON_APPDATA when set; on Windows %ProgramData%;
// elsewhere MachineAppDataFolder when its profile folder is writable by this user, else the
// user's XDG data home (~/.local/share), which is said once on stderr.
QString CommonAppDataFolder();

// The choice CommonAppDataFolder makes away from Windows, apart from the file system:
// `overridden` is the environment's folder (empty when unset), `machineWideUsable` whether the
// profile folder under `machineWide` is writable. `notice` is empty unless `perUser` was taken
// for want of the machine-wide folder.
struct CommonAppDataChoice {
    QString folder;
    QString notice;
};
CommonAppDataChoice ChooseCommonAppDataFolder(const QString& overridden, const QString& machineWide,
                                              bool machineWideUsable, const QString& perUser);

// True when the path names an existing folder in which this user may create files.
bool FolderIsWritable(const QString& path);

// The user's documents folder: $KX_DOCUMENTS when set, else the XDG documents folder.
QString DocumentsFolder();

// This user's own data, kept between runs but not a document (work held safe until it is
// saved): $KX_USER_DATA when set, else ProfileSubfolder in the XDG data home
// (~/.local/share/Quentral/Plate Control Panel).
QString UserDataFolder();

// Where captures wait on the disk until they are saved: UserDataFolder() + "/Unsaved Captures".
QString UnsavedCapturesFolder();

} // namespace kx
