#include "sim/BenchPlacement.h"

#include <algorithm>

namespace kx {

namespace {

constexpr int StripMargin = 8;
// A full-height dialog's OK and Cancel row and status bar.
constexpr int StripClearsBottom = 120;

// The top that keeps `height` on the screen, as near `wanted` as can be.
int onScreen(int wanted, int height, int screenTop, int screenHeight) {
    return std::clamp(wanted, screenTop, std::max(screenTop, screenTop + screenHeight - height));
}

} // namespace

SideBySide SideBySide::on(const QRect& screen, const QRect& window, const QSize& bench,
                          int benchMinimumWidth) {
    const int room = screen.width() - window.width();
    const QSize size(bench.width() <= room ? bench.width() : std::max(benchMinimumWidth, room),
                     bench.height());
    SideBySide placed{window.topLeft(), QRect(QPoint(), size)};
    const int y = onScreen(window.top(), size.height(), screen.top(), screen.height());
    const int screenRight = screen.left() + screen.width();
    if (window.left() + window.width() + size.width() <= screenRight) {
        placed.bench.moveTopLeft({window.left() + window.width(), y});
    } else if (window.left() - size.width() >= screen.left()) {
        placed.bench.moveTopLeft({window.left() - size.width(), y});
    } else if (size.width() <= room) {
        const int left = screen.left() + (room - size.width()) / 2;
        placed.window.setX(left);
        placed.bench.moveTopLeft({left + window.width(), y});
    } else {
        placed.window.setX(screen.left());
        placed.bench.moveTopLeft({std::max(screen.left(), screenRight - size.width()), y});
    }
    return placed;
}

QPoint loadingStripCorner(const QRect& screen, const QSize& strip) {
    return {std::max(screen.left(), screen.left() + screen.width() - strip.width() - StripMargin),
            onScreen(screen.top() + screen.height() - strip.height() - StripClearsBottom,
                     strip.height(), screen.top(), screen.height())};
}

} // namespace kx
