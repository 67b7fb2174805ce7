#pragma once

#include <QByteArray>
#include <QString>

namespace kx {

// Replaces a file's contents in one step: readers see the old file or the new one, never a
// part, and a write that fails leaves the old file as it was. The folder must exist. False
// when the file could not be written.
bool saveAtomically(const QString& path, const QByteArray& contents);

} // namespace kx
