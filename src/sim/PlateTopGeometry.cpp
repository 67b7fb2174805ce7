#include "sim/PlateTopGeometry.h"

#include <algorithm>

namespace kx {

PlateTopGeometry::PlateTopGeometry(QSizeF picture, double marginPixels) {
    const double width = MaxX - MinX;
    const double height = MaxY - MinY;
    const double roomX = std::max(picture.width() - 2 * marginPixels, 1.0);
    const double roomY = std::max(picture.height() - 2 * marginPixels, 1.0);
    m_scale = std::min(roomX / width, roomY / height);
    m_origin =
        QPointF((picture.width() - width * m_scale) / 2, (picture.height() - height * m_scale) / 2);
}

QPointF PlateTopGeometry::toPicture(QPointF plate) const {
    return m_origin + QPointF((plate.x() - MinX) * m_scale, (MaxY - plate.y()) * m_scale);
}

QPointF PlateTopGeometry::toPlate(QPointF picture) const {
    const QPointF offset = picture - m_origin;
    return {MinX + offset.x() / m_scale, MaxY - offset.y() / m_scale};
}

QRectF PlateTopGeometry::top() const {
    return {toPicture({MinX, MaxY}), toPicture({MaxX, MinY})};
}

bool PlateTopGeometry::isOnTop(QPointF plate) {
    return plate.x() >= MinX && plate.x() <= MaxX && plate.y() >= MinY && plate.y() <= MaxY;
}

} // namespace kx
