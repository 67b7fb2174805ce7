#pragma once

#include <QString>

namespace kx {

// Waits until what was written through the open file `handle` is on the disk; false when the
// disk refused it.
bool syncToDisk(int handle);

// Waits until the names in the folder holding `path` are on the disk: a file just created or
// renamed there survives a power cut only then.
void syncFolderOf(const QString& path);

} // namespace kx
