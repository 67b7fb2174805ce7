#pragma once

class QWidget;

namespace kx {

class Prompt;

// Offers back the captures in the journal folder that were never saved (UnsavedCaptures),
// showing each save's progress in a box over `window`, which can cancel it. Returns at once;
// the offer goes by itself when it is done.
void offerUnsavedCaptures(QWidget* window, Prompt& prompt);

} // namespace kx
