#pragma once

#include <QString>
#include <QStringList>
#include <functional>

namespace kx::cli {

// Where a file ended up: at the place asked for, in a rescue place, or nowhere.
struct RescueSave {
    QString requested;
    QString path;        // where the file is; empty when no place took it
    QStringList reasons; // why each place before `path` failed, each naming its file

    bool ok() const { return !path.isEmpty(); }
    bool rescued() const { return ok() && path != requested; }
    // One line for the user: why the requested file could not be written and where the data
    // went instead (or that it is lost).
    QString message() const;
};

// Writes a file at `path`; false, with the reason, when it could not.
using FileWriter = std::function<bool(const QString& path, QString& reason)>;

// Where a file that cannot be written at `requested` goes instead, in order: the same file name
// (numbered when taken) in the documents folder, then in the temporary folder.
QStringList rescuePlaces(const QString& requested);

// Writes at `requested`; when that fails, the same file name (numbered when taken) in the
// documents folder, then in the temporary folder. A command's data are gone once the process
// ends, so a full disk or a mistyped folder must not cost them.
RescueSave saveOrRescue(const QString& requested, const FileWriter& write);

} // namespace kx::cli
