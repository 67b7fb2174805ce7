#include "measure/ChartScale.h"
#include "measure/TraceBuffer.h"

#include <cmath>
#include <gtest/gtest.h>
#include <tuple>

using namespace kx;

namespace {

struct ScaleCase {
    double low;
    double high;
    double minSpan;
};

void PrintTo(const ScaleCase& c, std::ostream* out) {
    *out << c.low << " .. " << c.high << " min span " << c.minSpan;
}

class ScaleFits : public testing::TestWithParam<ScaleCase> {};

TEST_P(ScaleFits, NiceLimitsAroundTheDataAtLeastMinSpanApart) {
    const ScaleCase c = GetParam();
    ChartScale scale;
    scale.fit(c.low, c.high, c.minSpan);
    const double span = scale.top() - scale.bottom();
    EXPECT_LE(scale.bottom(), c.low);
    EXPECT_GE(scale.top(), c.high);
    EXPECT_GE(span, c.minSpan * (1 - 1e-9));
    EXPECT_GT(span, 0);
    // Limits are whole steps of 1, 2 or 5 times a power of ten, two to six divisions.
    const double mantissa = scale.step() / std::pow(10.0, std::floor(std::log10(scale.step())));
    EXPECT_TRUE(std::abs(mantissa - 1) < 1e-9 || std::abs(mantissa - 2) < 1e-9 ||
                std::abs(mantissa - 5) < 1e-9)
        << scale.step();
    const double divisions = span / scale.step();
    EXPECT_NEAR(divisions, std::round(divisions), 1e-6);
    EXPECT_GE(std::round(divisions), 2);
    EXPECT_LE(std::round(divisions), 6);
    EXPECT_NEAR(scale.bottom() / scale.step(), std::round(scale.bottom() / scale.step()), 1e-6);
}

// Flat at zero, flat far from zero, wider than MinSpan, CoP in metres, flat without MinSpan.
INSTANTIATE_TEST_SUITE_P(Data, ScaleFits,
                         testing::Values(ScaleCase{0, 0, 0.4}, ScaleCase{-812.3, -812.3, 0.4},
                                         ScaleCase{-812.3, -795.1, 0.4},
                                         ScaleCase{0.0101, 0.0102, 5e-4}, ScaleCase{3, 3, 0}));

TEST(ChartScale, KeepsLimitsWhileNoiseFitsAndRefitsWhenTheDataShrink) {
    ChartScale scale;
    EXPECT_TRUE(scale.fit(-1.9, 9.7, 0.1));
    const double top = scale.top();
    const double bottom = scale.bottom();
    EXPECT_FALSE(scale.fit(-1.2, 9.1, 0.1));
    EXPECT_FALSE(scale.fit(0, 8, 0.1));
    EXPECT_EQ(scale.top(), top);
    EXPECT_EQ(scale.bottom(), bottom);
    EXPECT_TRUE(scale.fit(0, 1, 0.1)); // far too loose now
    EXPECT_LE(scale.top(), 1.5);
    EXPECT_TRUE(scale.fit(0, 1, 10)); // a larger MinSpan widens at once
    EXPECT_GE(scale.top() - scale.bottom(), 10);
}

TEST(TraceBuffer, KeepsTheNewestPointsAndFitsBucketsToTheColumns) {
    TraceBuffer trace(1000);
    trace.setColumns(300);
    for (int i = 0; i < 1'000'000; ++i)
        trace.add(float(i));
    EXPECT_EQ(trace.point(999'000), 999'000.0f);
    EXPECT_TRUE(std::isnan(trace.point(998'999)));
    for (const auto& [columns, perBucket, buckets] :
         {std::tuple{250, 20, 250}, std::tuple{700, 8, 625}, std::tuple{0, 5000, 1}}) {
        TraceBuffer wide(5000);
        wide.setColumns(columns);
        EXPECT_EQ(wide.pointsPerBucket(), perBucket) << columns;
        EXPECT_EQ(wide.bucketCount(), buckets) << columns;
    }
}

} // namespace
