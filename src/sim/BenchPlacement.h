#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

namespace kx {

// Where the main window and the bench go on a screen (its available area; frames included in
// the rectangles and sizes). The bench narrows, down to its smallest width, to stand beside
// the window, right of it or else left of it; where neither fits but both do side by side,
// the window moves over to make room; on a screen too narrow for both, the window goes to the
// left edge and the bench to the right edge, over as little of the window as can be. The
// bench is kept on the screen.
struct SideBySide {
    QPoint window;
    QRect bench;

    static SideBySide on(const QRect& screen, const QRect& window, const QSize& bench,
                         int benchMinimumWidth);
};

// The loading strip's place: the screen's lower right corner, high enough to leave a
// dialog's own buttons at the bottom of the screen in sight.
QPoint loadingStripCorner(const QRect& screen, const QSize& strip);

} // namespace kx
