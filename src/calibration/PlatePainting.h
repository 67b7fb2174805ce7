#pragma once

#include "calibration/PlateDrawing.h"

#include <QColor>
#include <QFont>
#include <QPointF>
#include <QRectF>
#include <QString>

class QPainter;

namespace kx {

// Maps the plate top into a rectangle of a paint device, to scale (one factor for X and Y),
// centred, Y upward. The plate's origin lands wherever the extents put it.
class PlateView {
public:
    PlateView(const PlateDrawing& drawing, const QRectF& area);

    QPointF toDevice(QPointF plate) const;
    QPointF toPlate(QPointF device) const;
    double pixelsPerMetre() const { return m_scale; }
    QRectF plateRect() const;

private:
    double m_left;
    double m_bottom;
    double m_width;
    double m_height;
    QPointF m_origin; // device position of (left, bottom)
    double m_scale = 1;
};

// The part of a picture's area that the plate takes: all but the legend lines at the top.
QRectF plateArea(const QRectF& area, const QFont& font);

// Draws the plate top with its point marks, their states, the current point, a legend and,
// after a fit, each point's centre-of-pressure error as an arrow (PlateDrawing::Arrow) with the
// true size beside a shortened one, and a red ring round each point that does not fit. Paints
// onto any painter, so a printed report draws the same picture.
void paintPlate(QPainter& painter, const QRectF& area, const PlateDrawing& drawing);

// The colours a reader of the picture tells apart.
inline const QColor ErrorArrowColour(0, 64, 200);
inline const QColor DoesNotFitRing(220, 0, 0);

// The height a picture `width` pixels wide needs to show the plate to scale under its legend.
int plateHeightForWidth(const PlateDrawing& drawing, int width, const QFont& font);

// A mark's state in words ("zero and data taken, current, does not fit"), as its tooltip
// says it.
QString markState(const PlateDrawing& drawing, std::size_t mark);

} // namespace kx
