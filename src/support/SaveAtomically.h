#pragma once

#include <QByteArray>
#include <QString>

namespace kx {

// What a save did: nothing to report when every byte reached the disk, otherwise why not, in
// words for the user ("No space left on device").
struct SaveResult {
    QString error;

    bool ok() const { return error.isEmpty(); }
    explicit operator bool() const { return ok(); }
};

// Replaces a file's contents in one step: readers see the old file or the new one, never a
// part. The folders on the way are created when missing. A save that fails in any way (a
// short write on a full disk included) leaves the old file as it was and says why.
[[nodiscard]] SaveResult saveAtomically(const QString& path, const QByteArray& contents);

} // namespace kx
