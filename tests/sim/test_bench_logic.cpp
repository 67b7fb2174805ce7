#include "sim/BenchInput.h"
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
