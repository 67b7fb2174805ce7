#include "sim/BenchInput.h"
#include "sim/BenchPlacement.h"
#include "sim/MatrixDifference.h"
#include "sim/PlateTopGeometry.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

// A picture exactly 1000 px per metre plus a 10 px margin: the top is 812.8 × 762 px.
TEST(PlateTopGeometry, PlatePointsLandWhereTheScaleSaysBothWays) {
    const PlateTopGeometry geometry(QSizeF(812.8 + 20, 762 + 20), 10);
    ASSERT_NEAR(geometry.pixelsPerMetre(), 1000, 1e-9);
    const std::pair<QPointF, QPointF> points[] = {
        {{-0.4064, 0.5588}, {10, 10}},     // far left corner, top
        {{0.4064, -0.2032}, {822.8, 772}}, // near right corner, bottom
        {{0, 0}, {416.4, 568.8}},          // origin
        {{0.1, 0.2}, {516.4, 368.8}}};     // Y up: higher is smaller
    for (const auto& [plate, picture] : points) {
        const QPointF drawn = geometry.toPicture(plate);
        EXPECT_NEAR(drawn.x(), picture.x(), 1e-6) << plate.x() << ", " << plate.y();
        EXPECT_NEAR(drawn.y(), picture.y(), 1e-6) << plate.x() << ", " << plate.y();
        const QPointF back = geometry.toPlate(picture);
        EXPECT_NEAR(back.x(), plate.x(), 1e-9);
        EXPECT_NEAR(back.y(), plate.y(), 1e-9);
    }
}

TEST(PlateTopGeometry, AWidePictureCentresTheTopAndKeepsItsProportions) {
    const PlateTopGeometry geometry(QSizeF(2000, 782), 10);
    EXPECT_NEAR(geometry.pixelsPerMetre(), 1000, 1e-9) << "the height limits the scale";
    const QRectF top = geometry.top();
    EXPECT_NEAR(top.width(), 812.8, 1e-6);
    EXPECT_NEAR(top.height(), 762, 1e-6);
    EXPECT_NEAR(top.center().x(), 1000, 1e-6);
}

TEST(PlateTopGeometry, OnlyPointsOfTheTopAreOnIt) {
    EXPECT_TRUE(PlateTopGeometry::isOnTop({0.4064, 0.5588}));
    EXPECT_TRUE(PlateTopGeometry::isOnTop({-0.4064, -0.2032}));
    EXPECT_FALSE(PlateTopGeometry::isOnTop({0.41, 0}));
    EXPECT_FALSE(PlateTopGeometry::isOnTop({0, -0.21}));
    EXPECT_FALSE(PlateTopGeometry::isOnTop({0, 0.56}));
}

// On a 1366 × 768 screen (less a 32 px panel at the top) and a wide one, with the bench 800
// px wide at most and 640 at least.
TEST(SideBySide, TheBenchStandsBesideTheWindowWhereTheScreenAllows) {
    const QRect small(0, 32, 1366, 736);
    const QRect wide(0, 0, 1920, 1080);
    const QSize bench(800, 700);
    const struct {
        const char* what;
        QRect screen, window;
        QPoint windowAt;
        QRect benchAt;
    } cases[] = {
        {"right of it", wide, {300, 200, 700, 450}, {300, 200}, {1000, 200, 800, 700}},
        {"left of it", wide, {1000, 100, 700, 450}, {1000, 100}, {200, 100, 800, 700}},
        {"narrowed to the room left, the window moved over",
         small,
         {330, 161, 706, 446},
         {0, 161},
         {706, 68, 660, 700}},
        {"over the window's right side",
         small,
         {330, 161, 900, 600},
         {0, 161},
         {726, 68, 640, 700}},
        {"kept on the screen", small, {0, 0, 400, 300}, {0, 0}, {400, 32, 800, 700}},
    };
    for (const auto& c : cases) {
        const SideBySide placed = SideBySide::on(c.screen, c.window, bench, 640);
        EXPECT_EQ(placed.window, c.windowAt) << c.what;
        EXPECT_EQ(placed.bench, c.benchAt) << c.what;
    }
}

TEST(SideBySide, TheLoadingStripWaitsInTheLowerRightCornerAboveADialogsButtons) {
    const QRect screen(0, 32, 1366, 736);
    const QPoint corner = loadingStripCorner(screen, {560, 50});
    EXPECT_EQ(corner.x() + 560, 1366 - 8);
    EXPECT_GE(768 - (corner.y() + 50), 100);
    EXPECT_EQ(loadingStripCorner(QRect(0, 0, 300, 120), {560, 50}), QPoint(0, 0))
        << "on a tiny screen, its corner on the screen";
}

TEST(MatrixDifference, PercentOfTheLargestTrueCellOfEachRow) {
    const Matrix3 truth{{{-1000, -1000, -1000}, {300, 300, -700}, {-500, 500, 2}}};
    const Matrix3 stored{{{-990, -1000, -1010}, {307, 300, -693}, {-500, 500, 7}}};
    const Matrix3 difference = differencePercent(truth, stored);
    const Matrix3 expected{{{1, 0, -1}, {1, 0, 1}, {0, 0, 1}}};
    for (std::size_t r = 0; r < 3; ++r)
        for (std::size_t c = 0; c < 3; ++c)
            EXPECT_NEAR(difference[r][c], expected[r][c], 1e-9) << r << "," << c;
}

TEST(MatrixDifference, AnEmptyStoredMatrixIsAHundredPercentOffOnEachRowsLargestCell) {
    const Matrix3 truth{{{-1000, -980, -1020}, {310, 290, -700}, {-500, 510, 3}}};
    const Matrix3 difference = differencePercent(truth, Matrix3{});
    EXPECT_NEAR(difference[0][2], 100, 1e-9);
    EXPECT_NEAR(difference[1][2], 100, 1e-9);
    EXPECT_NEAR(difference[2][1], -100, 1e-9);
    EXPECT_NEAR(difference[2][2], -3.0 / 510 * 100, 1e-9);
}

struct Typed {
    const char* text;
    std::optional<double> accepted;
};

class BenchNumber : public ::testing::TestWithParam<Typed> {};

TEST_P(BenchNumber, OnlyNumbersInRangeAreAccepted) {
    const BenchRange range{QStringLiteral("Mass"), 0.01, 1000, QStringLiteral("kg")};
    const BenchReading reading = readBenchNumber(QString::fromUtf8(GetParam().text), range);
    EXPECT_EQ(reading.value, GetParam().accepted);
    if (reading.value) {
        EXPECT_TRUE(reading.refusal.isEmpty());
    } else {
        EXPECT_TRUE(reading.refusal.startsWith(QStringLiteral("Mass:")));
        EXPECT_TRUE(reading.refusal.contains(QStringLiteral("0.01 to 1000 kg")));
    }
}

INSTANTIATE_TEST_SUITE_P(Texts, BenchNumber,
                         ::testing::Values(Typed{"25", 25.0}, Typed{" 12.5 ", 12.5},
                                           Typed{"1e3", 1000.0}, Typed{"0.01", 0.01},
                                           Typed{"1000.0001", std::nullopt},
                                           Typed{"0.001", std::nullopt}, Typed{"-5", std::nullopt},
                                           Typed{"12,5", std::nullopt}, Typed{"", std::nullopt},
                                           Typed{"abc", std::nullopt}, Typed{"nan", std::nullopt},
                                           Typed{"inf", std::nullopt},
                                           Typed{"25 kg", std::nullopt}));

} // namespace
} // namespace kx
