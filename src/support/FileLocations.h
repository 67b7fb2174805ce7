#pragma once

#include <QString>

namespace kx {

// For --help and the like: where the settings file and the machine-wide profile are on this
// machine, and which environment variables move them and the documents folder.
QString fileLocationsHelp();

} // namespace kx
