#include "calibration/PlatePainting.h"

#include "resources/StringTable.h"
#include "support/NumberFormat.h"

#include <QFontMetricsF>
#include <QLineF>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

namespace kx {

namespace {
namespace c = strings::calibrate;
constexpr int LegendCurrent = c::PictureCurrent;
constexpr int LegendNoZero = c::PictureNoZero;
constexpr int LegendZero = c::PictureZero;
constexpr int LegendData = c::PictureData;
constexpr int LegendArrow = c::PictureArrow;
constexpr int LegendDoesNotFit = c::PictureDoesNotFit;

constexpr double MarginPixels = 6;
const QColor PlateFill(236, 236, 230);
const QColor NoZeroFill(Qt::white);
const QColor ZeroFill(255, 196, 64);
const QColor DataFill(64, 176, 80);
// Black, so that red says only that a point does not fit.
const QColor CurrentRing(Qt::black);
constexpr double CurrentRingWidth = 3;
constexpr double DoesNotFitRingWidth = 2.5;
constexpr int LegendLines = 3;

QColor markFill(const PlateDrawing::Mark& mark) {
    if (mark.data)
        return DataFill;
    return mark.zero ? ZeroFill : NoZeroFill;
}

int stateText(const PlateDrawing::Mark& mark) {
    if (mark.data)
        return LegendData;
    return mark.zero ? LegendZero : LegendNoZero;
}

void drawArrow(QPainter& painter, QPointF from, QPointF to) {
    const QLineF shaft(from, to);
    if (shaft.length() < 1.0)
        return;
    painter.drawLine(shaft);
    const double head = std::min(8.0, shaft.length() / 2);
    QLineF wing(to, from);
    wing.setLength(head);
    QLineF left = wing;
    left.setAngle(wing.angle() + 25);
    QLineF right = wing;
    right.setAngle(wing.angle() - 25);
    QPainterPath path(to);
    path.lineTo(left.p2());
    path.lineTo(right.p2());
    path.closeSubpath();
    painter.fillPath(path, painter.pen().color());
}

double legendHeight(const QFont& font) {
    return LegendLines * QFontMetricsF(font).height() + 4;
}

// Round a mark of `radius` pixels, clear of its rim.
double doesNotFitRadius(double radius) {
    return radius + std::max(3.0, 0.3 * radius);
}

// The true size of a shortened arrow, beside its tail on the arrow's left. Two arrows that
// point at each other's marks stand on one line; their sizes then fall on either side of it.
void drawArrowLength(QPainter& painter, const PlateDrawing::Arrow& arrow, const PlateView& view) {
    const QString text =
        strings::text(c::PictureArrowLength).arg(formatNumber(arrow.error * 1000, u"0.0"));
    const QFontMetricsF metrics(painter.font());
    const QSizeF size(metrics.horizontalAdvance(text) + 2, metrics.height());
    const QPointF tail = view.toDevice(arrow.tail);
    QLineF shaft(tail, view.toDevice(arrow.tip));
    shaft.setLength(1);
    // Y points down on the device: (y, −x) is the left of the way the arrow points.
    const QPointF left(shaft.dy(), -shaft.dx());
    const double clear =
        std::abs(left.x()) * size.width() / 2 + std::abs(left.y()) * size.height() / 2 + 3;
    QRectF box(QPointF(), size);
    box.moveCenter(tail + left * clear);
    painter.setPen(ErrorArrowColour);
    painter.drawText(box, Qt::AlignCenter, text);
}

// The legend takes three lines above the plate: the mark states; the current point's ring
// (when a point is current) and the ring of a point that does not fit (when one does not);
// after a fit, a 1 mm error arrow and which way it points.
void drawLegend(QPainter& painter, const QRectF& area, const PlateView& view, bool current,
                bool doesNotFit, bool arrows) {
    const QFontMetricsF metrics(painter.font());
    const double r = metrics.height() / 3;
    double x = area.left() + MarginPixels + r;
    double line = area.top() + 2;
    const auto newLine = [&] {
        x = area.left() + MarginPixels + r;
        line += metrics.height();
    };
    const auto entry = [&](const QColor& fill, const QColor& ring, double ringWidth, int text) {
        painter.setPen(QPen(ring, ringWidth));
        painter.setBrush(fill);
        painter.drawEllipse(QPointF(x, line + metrics.height() / 2), r, r);
        painter.setPen(Qt::black);
        const QString caption = strings::text(text);
        painter.drawText(QPointF(x + r + 4, line + metrics.ascent()), caption);
        x += r + 4 + metrics.horizontalAdvance(caption) + 3 * r + 6;
    };
    entry(NoZeroFill, Qt::black, 1, LegendNoZero);
    entry(ZeroFill, Qt::black, 1, LegendZero);
    entry(DataFill, Qt::black, 1, LegendData);
    newLine();
    if (current)
        entry(Qt::transparent, CurrentRing, CurrentRingWidth, LegendCurrent);
    if (doesNotFit)
        entry(Qt::transparent, DoesNotFitRing, DoesNotFitRingWidth, LegendDoesNotFit);
    if (!arrows)
        return;
    newLine();
    const double length = 0.001 * ErrorMagnification * view.pixelsPerMetre();
    const double middle = line + metrics.height() / 2;
    painter.setPen(QPen(ErrorArrowColour, 2));
    drawArrow(painter, QPointF(x - r, middle), QPointF(x - r + length, middle));
    painter.setPen(Qt::black);
    painter.drawText(QPointF(x - r + length + 6, line + metrics.ascent()),
                     strings::text(LegendArrow));
}
} // namespace

PlateView::PlateView(const PlateDrawing& drawing, const QRectF& area)
    : m_left(drawing.left)
    , m_bottom(drawing.bottom)
    , m_width(drawing.right - drawing.left)
    , m_height(drawing.top - drawing.bottom) {
    const QRectF room = area.adjusted(MarginPixels, MarginPixels, -MarginPixels, -MarginPixels);
    if (m_width > 0 && m_height > 0 && room.width() > 0 && room.height() > 0)
        m_scale = std::min(room.width() / m_width, room.height() / m_height);
    const QPointF centre = room.center();
    m_origin = {centre.x() - m_width * m_scale / 2, centre.y() + m_height * m_scale / 2};
}

QPointF PlateView::toDevice(QPointF plate) const {
    return {m_origin.x() + (plate.x() - m_left) * m_scale,
            m_origin.y() - (plate.y() - m_bottom) * m_scale};
}

QPointF PlateView::toPlate(QPointF device) const {
    return {m_left + (device.x() - m_origin.x()) / m_scale,
            m_bottom + (m_origin.y() - device.y()) / m_scale};
}

QRectF PlateView::plateRect() const {
    return QRectF(toDevice({m_left, m_bottom + m_height}), toDevice({m_left + m_width, m_bottom}));
}

QRectF plateArea(const QRectF& area, const QFont& font) {
    return area.adjusted(0, legendHeight(font), 0, 0);
}

void paintPlate(QPainter& painter, const QRectF& area, const PlateDrawing& drawing) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const PlateView view(drawing, plateArea(area, painter.font()));
    painter.setPen(QPen(Qt::darkGray, 2));
    painter.setBrush(PlateFill);
    painter.drawRect(view.plateRect());

    // The plate's axes through its origin, so the technician sees where X and Y are measured.
    painter.setPen(QPen(Qt::gray, 1, Qt::DashLine));
    const QPointF origin = view.toDevice({0, 0});
    const QRectF plate = view.plateRect();
    if (plate.contains(origin)) {
        painter.drawLine(QPointF(plate.left(), origin.y()), QPointF(plate.right(), origin.y()));
        painter.drawLine(QPointF(origin.x(), plate.top()), QPointF(origin.x(), plate.bottom()));
    }

    const double radius = drawing.markRadius * view.pixelsPerMetre();
    bool doesNotFit = false;
    for (std::size_t i = 0; i < drawing.marks.size(); ++i) {
        const PlateDrawing::Mark& mark = drawing.marks[i];
        const QPointF centre = view.toDevice(mark.position);
        const bool current = static_cast<int>(i) == drawing.current;
        painter.setPen(current ? QPen(CurrentRing, CurrentRingWidth) : QPen(Qt::black, 1));
        painter.setBrush(markFill(mark));
        painter.drawEllipse(centre, radius, radius);
        if (mark.flagged) {
            doesNotFit = true;
            painter.setPen(QPen(DoesNotFitRing, DoesNotFitRingWidth));
            painter.setBrush(Qt::NoBrush);
            const double ring = doesNotFitRadius(radius);
            painter.drawEllipse(centre, ring, ring);
        }
        painter.setPen(Qt::black);
        painter.drawText(QRectF(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius),
                         Qt::AlignCenter, QString::number(i + 1));
    }
    bool arrows = false;
    for (std::size_t i = 0; i < drawing.marks.size(); ++i) {
        const std::optional<PlateDrawing::Arrow> arrow = drawing.arrow(i);
        if (!arrow)
            continue;
        arrows = true;
        painter.setPen(QPen(ErrorArrowColour, 2));
        drawArrow(painter, view.toDevice(arrow->tail), view.toDevice(arrow->tip));
        if (arrow->shortened)
            drawArrowLength(painter, *arrow, view);
    }
    const bool anyCurrent =
        drawing.current >= 0 && std::size_t(drawing.current) < drawing.marks.size();
    drawLegend(painter, area, view, anyCurrent, doesNotFit, arrows);
    painter.restore();
}

int plateHeightForWidth(const PlateDrawing& drawing, int width, const QFont& font) {
    const double w = drawing.right - drawing.left;
    const double h = drawing.top - drawing.bottom;
    if (w <= 0 || h <= 0)
        return width;
    return static_cast<int>(
        std::lround((width - 2 * MarginPixels) * h / w + 2 * MarginPixels + legendHeight(font)));
}

QString markState(const PlateDrawing& drawing, std::size_t mark) {
    const PlateDrawing::Mark& m = drawing.marks[mark];
    QString state = strings::text(stateText(m));
    if (static_cast<int>(mark) == drawing.current)
        state += QStringLiteral(", ") + strings::text(LegendCurrent).toLower();
    if (m.flagged)
        state += QStringLiteral(", ") + strings::text(LegendDoesNotFit).toLower();
    return state;
}

} // namespace kx
