#include "calibration/PlateDrawing.h"

#include "calibration/Calibration.h"

#include <algorithm>
#include <cmath>

namespace kx {

PlateDrawing PlateDrawing::of(const Calibration& c, double markRadius) {
    PlateDrawing drawing;
    drawing.left = c.record.plateXLeft;
    drawing.right = c.record.plateXRight;
    drawing.top = c.record.plateYTop;
    drawing.bottom = c.record.plateYBottom;
    drawing.markRadius = markRadius;
    drawing.current = c.currentPoint;
    for (const CalPoint& point : c.record.points)
        drawing.marks.push_back({QPointF(point.x, point.y), point.zeroDone, point.dataDone});
    // A stale fit's findings would be pinned on points whose data have changed.
    if (!c.fit || !MatrixFit::matches(*c.fit, c.record.points))
        return drawing;
    const FitResult& fit = *c.fit;
    for (std::size_t k = 0; k < fit.errors.size(); ++k) {
        const FitErrorRow& row = fit.errors[k];
        if (row.point < 0 || std::size_t(row.point) >= drawing.marks.size())
            continue;
        Mark& mark = drawing.marks[std::size_t(row.point)];
        if (std::isfinite(row.x) && std::isfinite(row.y))
            mark.copError = QPointF(row.x, row.y);
        mark.flagged = k < fit.diagnostics.flagged.size() && fit.diagnostics.flagged[k];
    }
    return drawing;
}

std::optional<PlateDrawing::Arrow> PlateDrawing::arrow(std::size_t index) const {
    if (index >= marks.size() || !marks[index].copError)
        return std::nullopt;
    const QPointF error = *marks[index].copError;
    const double size = std::hypot(error.x(), error.y());
    if (!(size > 0))
        return std::nullopt;
    const QPointF towardsMark = error / size;
    const double length = std::min(size * ErrorMagnification, MaxArrowLength);
    Arrow arrow;
    arrow.tip = marks[index].position - towardsMark * markRadius;
    arrow.tail = arrow.tip - towardsMark * length;
    arrow.error = size;
    arrow.shortened = size * ErrorMagnification > MaxArrowLength;
    return arrow;
}

} // namespace kx
