#pragma once

#include "support/Prompt.h"

#include <QFileDialog>
#include <QStringList>

namespace kx {

// Qt name filters for a "caption|pattern|caption|pattern" filter: each caption shows the
// patterns it stands for ("Text Files (*.txt)"), ";" between patterns becomes a blank, and
// "*.*" becomes "*" so that files without an extension are listed too.
QStringList qtNameFilters(const QString& filter);

// Sets a file dialog up for a request, as far as Qt's dialog has the options. The read-only
// options have no counterpart and are left out; a file that must exist makes an open dialog
// accept only existing files; the overwrite prompt is kept or suppressed.
void setUpFileDialog(QFileDialog& dialog, const FileDialogRequest& request,
                     QFileDialog::AcceptMode mode);

} // namespace kx
