#include "measure/DriftAccumulator.h"

#include <gtest/gtest.h>

using namespace kx;

namespace {

constexpr float kMinFz = -2.5f;

TEST(DriftAccumulator, SamplesPerPointIsTheRateRoundedHalfToEven) {
    EXPECT_EQ(DriftAccumulator::samplesPerPointFor(62.5f), 62);
    EXPECT_EQ(DriftAccumulator::samplesPerPointFor(63.5f), 64);
    EXPECT_EQ(DriftAccumulator::samplesPerPointFor(0.4f), 0);
}

TEST(DriftAccumulator, AveragesOneSecondAt1000Hz) {
    DriftAccumulator drift;
    drift.setSamplesPerPoint(1000);
    std::optional<DriftPoint> point;
    for (int i = 0; i < 1000; ++i) {
        ASSERT_FALSE(point) << "point before the 1000th sample, at " << i;
        // Loaded for the first 400 samples only; Fz alternates around -100 N.
        const float fz = i < 400 ? (i % 2 ? -99.0f : -101.0f) : 0.0f;
        point = drift.add({fz, 0.5f * fz, 0.25f * fz}, {0.001f, -0.002f, float(i)}, kMinFz);
    }
    ASSERT_TRUE(point);
    EXPECT_FLOAT_EQ(point->forces[0], -40.0f); // 400 x -100 / 1000
    EXPECT_FLOAT_EQ(point->volts[2], 499.5f);
    // The CoP is averaged over the 400 loaded samples only: -My / Fz = -0.25, Mx / Fz = 0.5.
    ASSERT_TRUE(point->cop);
    EXPECT_FLOAT_EQ(point->cop->x, -0.25f);
    EXPECT_FLOAT_EQ(point->cop->y, 0.5f);
    EXPECT_EQ(drift.sampleCount(), 0);
    EXPECT_EQ(point->captureRow().postural, (Float3{-40.0f, -0.25f, 0.5f}));
}

TEST(DriftAccumulator, UnloadedPointHasBlankCopChartsAndZeroPosturalRow) {
    DriftAccumulator drift;
    drift.setSamplesPerPoint(2);
    drift.add({-1, 3, 4}, {1, 2, 3}, kMinFz);
    const auto point = drift.add({-1, 3, 4}, {1, 2, 3}, kMinFz);
    ASSERT_TRUE(point);
    EXPECT_FALSE(point->cop);
    EXPECT_EQ(point->captureRow().postural, Float3{});
    const ChartValues postural = point->chartValues(DisplayType::Postural);
    EXPECT_EQ(postural[0], -1.0f);
    EXPECT_FALSE(postural[1]);
    EXPECT_FALSE(postural[2]);
}

TEST(DriftAccumulator, SamplesCountedOutsideDriftShareTheCounter) {
    DriftAccumulator drift;
    drift.setSamplesPerPoint(3);
    drift.countSample();
    drift.countSample();
    EXPECT_EQ(drift.sampleCount(), 2);
    // The counted samples are part of n but not of the sums.
    const auto point = drift.add({-30, 0, 0}, {3, 0, 0}, kMinFz);
    ASSERT_TRUE(point);
    EXPECT_FLOAT_EQ(point->forces[0], -10.0f);
}

} // namespace
