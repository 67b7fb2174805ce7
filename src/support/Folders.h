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

// The machine-wide application-data folder: $KX_COMMON_APPDATA when set; on Windows
// %ProgramData%; elsewhere the user's XDG data home (~/.local/share), because the
// machine-wide data folders there are not writable by ordinary users.
QString CommonAppDataFolder();

// The user's documents folder: $KX_DOCUMENTS when set, else the XDG documents folder.
QString DocumentsFolder();

} // namespace kx
