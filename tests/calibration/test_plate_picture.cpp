#include "calibration/PlatePainting.h"

#include <QImage>
#include <QPainter>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>

namespace kx {
namespace {

const QPointF Mark(0.0, 0.18); // the middle of the default top
constexpr double Radius = 0.025;

// One point at the middle of the top, with a centre-of-pressure error (point minus fitted).
PlateDrawing oneMark(QPointF error, bool flagged = false) {
    PlateDrawing drawing;
    drawing.markRadius = Radius;
    drawing.current = -1;
    drawing.marks.push_back({Mark, true, true, error, flagged});
    return drawing;
}

double length(QPointF v) {
    return std::hypot(v.x(), v.y());
}

// The arrow runs from where the matrix puts the load towards the mark: the way of the error
// table's sign, 50 times the error and at most 10 cm of plate, ending on the mark's rim so that
// it never crosses the point's number.
TEST(PlateDrawingArrow, PointsTheWayOfTheErrorsSignToTheMarksRimAndIsShortenedPastTwoMillimetres) {
    struct Case {
        const char* name;
        QPointF error;     // m
        QPointF direction; // unit
        double length;     // m of plate
        bool shortened;
    } cases[] = {
        {"X +1 mm: to the right", {0.001, 0}, {1, 0}, 0.05, false},
        {"Y -1.5 mm: down", {0, -0.0015}, {0, -1}, 0.075, false},
        {"X -0.6, Y -0.8 mm: down to the left", {-0.0006, -0.0008}, {-0.6, -0.8}, 0.05, false},
        {"Y +2.3 mm: up, shortened", {0, 0.0023}, {0, 1}, 0.1, true},
        {"X +20 mm: shortened", {0.02, 0}, {1, 0}, 0.1, true},
    };
    for (const Case& k : cases) {
        const std::optional<PlateDrawing::Arrow> arrow = oneMark(k.error).arrow(0);
        ASSERT_TRUE(arrow) << k.name;
        const QPointF shaft = arrow->tip - arrow->tail;
        EXPECT_NEAR(length(shaft), k.length, 1e-12) << k.name;
        EXPECT_NEAR(length(shaft / length(shaft) - k.direction), 0, 1e-12) << k.name;
        EXPECT_NEAR(length(Mark - k.direction * Radius - arrow->tip), 0, 1e-12)
            << k.name << ": on the rim, on the side the load was put";
        EXPECT_EQ(arrow->shortened, k.shortened) << k.name;
        EXPECT_DOUBLE_EQ(arrow->error, length(k.error)) << k.name;
    }
    EXPECT_FALSE(oneMark({0, 0}).arrow(0)) << "no error, no arrow";
}

// The drawing painted as the dialog and the report paint it, and the ink of one colour in the
// plate's part of the picture, as positions relative to the mark's centre in pixels (Y down).
struct Painted {
    std::vector<QPointF> ink;
    double pixelsPerMetre = 0;
};

Painted paint(const PlateDrawing& drawing, const std::function<bool(QColor)>& isInk) {
    QImage image(400, 420, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    paintPlate(painter, QRectF(image.rect()), drawing);
    const PlateView view(drawing, plateArea(QRectF(image.rect()), painter.font()));
    painter.end();
    Painted painted{{}, view.pixelsPerMetre()};
    const QPointF centre = view.toDevice(Mark);
    const QRect plate = view.plateRect().toAlignedRect() & image.rect();
    for (int y = plate.top(); y <= plate.bottom(); ++y)
        for (int x = plate.left(); x <= plate.right(); ++x)
            if (isInk(image.pixelColor(x, y)))
                painted.ink.push_back(QPointF(x + 0.5, y + 0.5) - centre);
    return painted;
}

bool arrowBlue(QColor c) {
    return c.blue() > 150 && c.red() < 100 && c.green() < 140;
}

bool ringRed(QColor c) {
    return c.red() > 180 && c.green() < 90 && c.blue() < 90;
}

// Y +1.5 mm in the table: the arrow stands below the mark and its head points up at it.
TEST(PaintPlate, DrawsTheArrowOnTheSideTheLoadWasPutWithItsHeadAtTheMark) {
    const Painted painted = paint(oneMark({0, 0.0015}), arrowBlue);
    ASSERT_GT(painted.ink.size(), 40u);
    const double r = Radius * painted.pixelsPerMetre;
    for (const QPointF& p : painted.ink) {
        EXPECT_NEAR(p.x(), 0, 5) << "straight below the mark";
        EXPECT_GT(p.y(), r - 2) << "below the rim, off the number";
        EXPECT_LT(p.y(), r + 0.075 * painted.pixelsPerMetre + 2);
        if (std::abs(p.x()) > 2.5) {
            EXPECT_LT(p.y(), r + 10) << "wider than the shaft only at the head, by the mark";
        }
    }
}

// A shortened arrow carries its true size by its tail; a whole one needs none. Errors to the
// left put the arrows to the right of the mark.
TEST(PaintPlate, WritesTheTrueSizeBesideAShortenedArrowOnly) {
    const auto inkBeyondTail = [](QPointF error) {
        const Painted painted = paint(oneMark(error), arrowBlue);
        const double tail = (Radius + std::min(std::abs(error.x()) * ErrorMagnification,
                                               PlateDrawing::MaxArrowLength)) *
                            painted.pixelsPerMetre;
        return std::count_if(painted.ink.begin(), painted.ink.end(),
                             [tail](QPointF p) { return p.x() > tail + 3; });
    };
    EXPECT_GT(inkBeyondTail({-0.02, 0}), 20) << "20 mm to the left: \"20.0 mm\" at the tail";
    EXPECT_EQ(inkBeyondTail({-0.0015, 0}), 0);
}

// Only a point that does not fit is ringed in red; the current point's ring is another colour.
TEST(PaintPlate, RingsAPointThatDoesNotFitInRed) {
    const Painted flagged = paint(oneMark({0, 0}, true), ringRed);
    ASSERT_GT(flagged.ink.size(), 40u);
    const double r = Radius * flagged.pixelsPerMetre;
    for (const QPointF& p : flagged.ink) {
        EXPECT_GT(length(p), r + 1) << "outside the mark's rim";
        EXPECT_LT(length(p), r + std::max(3.0, 0.3 * r) + 3);
    }
    PlateDrawing current = oneMark({0, 0});
    current.current = 0;
    EXPECT_TRUE(paint(current, ringRed).ink.empty());
}

} // namespace
} // namespace kx
