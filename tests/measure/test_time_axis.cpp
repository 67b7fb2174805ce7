#include "measure/TimeAxis.h"

#include <gtest/gtest.h>
#include <limits>

using namespace kx;

namespace {

struct TickCase {
    double span;
    std::size_t count;
    double lastSeconds;
    const char* lastLabel;
    const char* secondLabel;
};

void PrintTo(const TickCase& c, std::ostream* out) {
    *out << "span " << c.span << " s";
}

class TimeTicks : public testing::TestWithParam<TickCase> {};

TEST_P(TimeTicks, EvenStepsFromZeroLabelledInTheSpansUnit) {
    const TickCase c = GetParam();
    const auto ticks = TimeAxis::ticks(c.span);
    ASSERT_EQ(ticks.size(), c.count);
    EXPECT_EQ(ticks.front().seconds, 0.0);
    EXPECT_NEAR(ticks.back().seconds, c.lastSeconds, 1e-9);
    EXPECT_EQ(ticks.back().label, QLatin1String(c.lastLabel));
    EXPECT_EQ(ticks[1].label, QLatin1String(c.secondLabel));
    EXPECT_LE(ticks.back().seconds, c.span * (1 + 1e-9));
}

INSTANTIATE_TEST_SUITE_P(
    Spans, TimeTicks,
    testing::Values(TickCase{5, 11, 5, "5 s", "0.5 s"},     // 1000 Hz plate, default width
                    TickCase{20, 11, 20, "20 s", "2 s"},    // exactly ten steps of 2
                    TickCase{60, 7, 60, "60 s", "10 s"},    // 6 would be > 5, so steps of 10
                    TickCase{299, 6, 250, "250 s", "50 s"}, // last span in seconds
                    TickCase{300, 11, 300, "5 min", "0.5 min"},
                    TickCase{5000, 9, 4800, "80 min", "10 min"})); // drift points, default

TEST(TimeTicks, NoTicksForAnEmptyOrBrokenSpan) {
    EXPECT_TRUE(TimeAxis::ticks(0).empty());
    EXPECT_TRUE(TimeAxis::ticks(-5).empty());
    EXPECT_TRUE(TimeAxis::ticks(std::numeric_limits<double>::quiet_NaN()).empty());
    EXPECT_TRUE(TimeAxis::ticks(std::numeric_limits<double>::infinity()).empty());
}

struct WheelCase {
    double span;
    int steps;
    double rate;
    double expected;
};

void PrintTo(const WheelCase& c, std::ostream* out) {
    *out << c.span << " s by " << c.steps << " at " << c.rate << " Hz";
}

class WheelSpans : public testing::TestWithParam<WheelCase> {};

TEST_P(WheelSpans, MovesAlongTheLadderWithinThePointLimits) {
    const WheelCase c = GetParam();
    EXPECT_DOUBLE_EQ(TimeAxis::steppedSpan(c.span, c.steps, c.rate), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Ladder, WheelSpans,
    testing::Values(WheelCase{5, 1, 1000, 10}, WheelCase{5, -1, 1000, 2},
                    WheelCase{20, 2, 1000, 60},    // 30 s, then 60 s
                    WheelCase{60, 3, 1000, 60},    // 120 s would be 120000 points
                    WheelCase{0.5, -1, 1000, 0.5}, // bottom of the ladder
                    WheelCase{0.1, -1, 1000, 0.1}, // 50 points: nothing shorter is allowed
                    WheelCase{4.2, 1, 1000, 5},    // off the ladder: to the next rung
                    WheelCase{4.2, -1, 1000, 2},   // and back past the rung below
                    WheelCase{5000, 1, 1, 7200},   // drift points
                    WheelCase{5000, -1, 1, 3600},  // (one a second)
                    WheelCase{60, -1, 1, 60},      // 30 points are too few
                    WheelCase{14400, 1, 1, 14400}, // top of the ladder
                    WheelCase{10, 0, 1000, 10}));

struct PointsCase {
    double span;
    double rate;
    qsizetype expected;
};

class SpanPoints : public testing::TestWithParam<PointsCase> {};

TEST_P(SpanPoints, RoundedAndClamped) {
    const PointsCase c = GetParam();
    EXPECT_EQ(TimeAxis::pointsForSpan(c.span, c.rate), c.expected);
}

INSTANTIATE_TEST_SUITE_P(Rates, SpanPoints,
                         testing::Values(PointsCase{5, 1000, 5000}, PointsCase{5000, 1, 5000},
                                         PointsCase{2.5, 333.3, 833}, // 833.25
                                         PointsCase{0.01, 1000, 50}, PointsCase{300, 1000, 100000},
                                         PointsCase{std::numeric_limits<double>::infinity(), 1,
                                                    100000}));

} // namespace
