#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

namespace kx {

// The plate's top drawn to scale in a picture: plate coordinates in metres (X to the right,
// Y up) against picture pixels (Y down), with the top as large as fits inside a margin and
// centred.
class PlateTopGeometry {
public:
    static constexpr double MinX = -0.4064;
    static constexpr double MaxX = 0.4064;
    static constexpr double MinY = -0.2032;
    static constexpr double MaxY = 0.5588;

    PlateTopGeometry(QSizeF picture, double marginPixels);

    QPointF toPicture(QPointF plate) const;
    QPointF toPlate(QPointF picture) const;
    // The top's outline in picture pixels.
    QRectF top() const;
    double pixelsPerMetre() const { return m_scale; }
    static bool isOnTop(QPointF plate);

private:
    double m_scale;
    QPointF m_origin; // the picture point of plate (MinX, MaxY): the top's upper left corner
};

} // namespace kx
