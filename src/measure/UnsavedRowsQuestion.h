#pragma once

#include <QString>
#include <QtGlobal>

namespace kx {

class Prompt;

enum class UnsavedRowsAnswer { Save, Discard, Later };

// Asks what becomes of captured rows that are not saved: `text`, with "Save" (Enter's answer)
// and "Discard", and "Later" when `canWait`. Esc answers "Later" where there is one, else
// "Save", whose file dialog can still be cancelled: no key alone loses the rows. "Discard" is
// asked once more, and anything but a second "Discard" asks the first question again.
UnsavedRowsAnswer askAboutUnsavedRows(Prompt& prompt, const QString& text, qint64 rows,
                                      bool canWait);

} // namespace kx
