#pragma once

#include "support/Prompt.h"

namespace kx {

// The save dialog for a capture file, opening in `initialFolder`: a ".txt" file, asking
// before it replaces one, in a folder that exists.
FileDialogRequest captureFileDialog(const QString& initialFolder);

} // namespace kx
