#include "sim/PlateTopView.h"

#include <QMouseEvent>
#include <QPainter>
#include <cmath>

namespace kx {

namespace {

constexpr double Margin = 14;
constexpr double GridMetres = 0.1;
const QColor GuideColour(70, 100, 160, 190);

// A weight's disc grows with the cube root of its mass, as a steel weight's size does.
double discRadius(double kilograms) {
    return 4 + 3 * std::cbrt(std::max(kilograms, 0.0));
}

} // namespace

PlateTopView::PlateTopView(QWidget* parent)
    : QWidget(parent) {
    setObjectName(QStringLiteral("picPlate"));
    setAccessibleName(tr("Plate top"));
    setCursor(Qt::CrossCursor);
    setMinimumSize(240, 230);
}

void PlateTopView::setGuidePoints(const QList<QPointF>& points) {
    m_guides = points;
    if (m_current >= m_guides.size())
        m_current = -1;
    update();
}

void PlateTopView::setCurrentGuide(int index) {
    m_current = index >= 0 && index < m_guides.size() ? index : -1;
    update();
}

void PlateTopView::setLoads(const std::vector<PlateLoads::Placed>& loads) {
    m_loads = loads;
    update();
}

PlateTopGeometry PlateTopView::topGeometry() const {
    return {size(), Margin};
}

void PlateTopView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const PlateTopGeometry geometry = topGeometry();
    const QRectF top = geometry.top();
    painter.fillRect(rect(), palette().window());
    painter.setPen(QPen(QColor(90, 90, 90), 2));
    painter.setBrush(QColor(214, 218, 222));
    painter.drawRect(top);

    painter.setPen(QPen(QColor(190, 194, 200), 1));
    for (double x = std::ceil(PlateTopGeometry::MinX / GridMetres) * GridMetres;
         x <= PlateTopGeometry::MaxX; x += GridMetres)
        painter.drawLine(geometry.toPicture({x, PlateTopGeometry::MinY}),
                         geometry.toPicture({x, PlateTopGeometry::MaxY}));
    for (double y = std::ceil(PlateTopGeometry::MinY / GridMetres) * GridMetres;
         y <= PlateTopGeometry::MaxY; y += GridMetres)
        painter.drawLine(geometry.toPicture({PlateTopGeometry::MinX, y}),
                         geometry.toPicture({PlateTopGeometry::MaxX, y}));
    painter.setPen(QPen(QColor(120, 124, 130), 1, Qt::DashLine));
    painter.drawLine(geometry.toPicture({0, PlateTopGeometry::MinY}),
                     geometry.toPicture({0, PlateTopGeometry::MaxY}));
    painter.drawLine(geometry.toPicture({PlateTopGeometry::MinX, 0}),
                     geometry.toPicture({PlateTopGeometry::MaxX, 0}));

    painter.setBrush(Qt::NoBrush);
    for (int i = 0; i < m_guides.size(); ++i) {
        const QPointF at = geometry.toPicture(m_guides[i]);
        const bool current = i == m_current;
        painter.setPen(current ? QPen(QColor(200, 40, 30), 3) : QPen(GuideColour, 1.5));
        painter.drawEllipse(at, current ? 9 : 6, current ? 9 : 6);
        painter.drawLine(at - QPointF(3, 0), at + QPointF(3, 0));
        painter.drawLine(at - QPointF(0, 3), at + QPointF(0, 3));
        painter.setPen(current ? QColor(200, 40, 30) : GuideColour);
        painter.drawText(at + QPointF(8, -8), QString::number(i + 1));
    }

    for (const PlateLoads::Placed& load : m_loads) {
        const QPointF at = geometry.toPicture({load.x, load.y});
        const double radius = discRadius(load.kilograms);
        painter.setPen(QPen(Qt::black, 1));
        painter.setBrush(load.person ? QColor(230, 150, 60) : QColor(60, 70, 85));
        painter.drawEllipse(at, radius, radius);
        painter.setPen(Qt::black);
        painter.drawText(at + QPointF(radius + 3, 4),
                         QStringLiteral("%1 kg").arg(load.kilograms, 0, 'f', 1));
    }
}

void PlateTopView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return QWidget::mousePressEvent(event);
    const QPointF plate = topGeometry().toPlate(event->position());
    if (PlateTopGeometry::isOnTop(plate))
        Q_EMIT clickedAt(plate);
}

} // namespace kx
