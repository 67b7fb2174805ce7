#include "calibration/PlateDrawing.h"

#include "calibration/Calibration.h"

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
    if (c.fit) {
        for (const FitErrorRow& row : c.fit->errors) {
            if (std::isfinite(row.x) && std::isfinite(row.y) && row.point >= 0 &&
                std::size_t(row.point) < drawing.marks.size())
                drawing.marks[std::size_t(row.point)].copError = QPointF(row.x, row.y);
        }
    }
    return drawing;
}

} // namespace kx
