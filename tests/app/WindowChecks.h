#pragma once

#include <QWidget>

namespace kx::test {

// Every visible caption and value of the window shown whole: a button wide enough for its
// caption, a label or check box as wide as it asks, a wrapped label as high as its lines.
void expectEveryTextWhole(const QWidget& window);

// The window lies whole on its screen, with room for a window manager's title bar above its
// frame, and every visible control lies inside its parent and so inside the window. What a
// scroll area holds may reach beyond its viewport: it scrolls into view.
void expectWholeOnTheScreen(const QWidget& window);

} // namespace kx::test
