#include "measure/TimeAxis.h"

#include <gtest/gtest.h>
#include <limits>

using namespace kx;

namespace {

constexpr double Infinity = std::numeric_limits<double>::infinity();

TEST(TimeAxis, TicksInEvenStepsFromZeroLabelledInTheSpansUnit) {
    const struct {
        double span;
        std::size_t count;
        double lastSeconds;
        const char* lastLabel;
        const char* secondLabel;
    } cases[] = {
        {5, 11, 5, "5 s", "0.5 s"},     // 1000 Hz plate, default width
        {20, 11, 20, "20 s", "2 s"},    // exactly ten steps of 2
        {60, 7, 60, "60 s", "10 s"},    // 6 would be > 5, so steps of 10
        {299, 6, 250, "250 s", "50 s"}, // last span in seconds
        {300, 11, 300, "5 min", "0.5 min"},
        {5000, 9, 4800, "80 min", "10 min"}, // drift points, default
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.span);
        const auto ticks = TimeAxis::ticks(c.span);
        ASSERT_EQ(ticks.size(), c.count);
        EXPECT_EQ(ticks.front().seconds, 0.0);
        EXPECT_NEAR(ticks.back().seconds, c.lastSeconds, 1e-9);
        EXPECT_EQ(ticks.back().label, QLatin1String(c.lastLabel));
        EXPECT_EQ(ticks[1].label, QLatin1String(c.secondLabel));
    }
    for (const double broken : {0.0, -5.0, std::numeric_limits<double>::quiet_NaN(), Infinity})
        EXPECT_TRUE(TimeAxis::ticks(broken).empty()) << broken;
}

// The wheel's ladder of spans, within 50 to 100,000 points at the chart's point rate.
TEST(TimeAxis, WheelMovesAlongTheLadderWithinThePointLimits) {
    const struct {
        double span;
        int steps;
        double rate;
        double expected;
    } cases[] = {
        {5, 1, 1000, 10},     {5, -1, 1000, 2}, {20, 2, 1000, 60}, // 30 s, then 60 s
        {60, 3, 1000, 60},                                         // 120 s would be 120000 points
        {0.5, -1, 1000, 0.5},                                      // bottom of the ladder
        {0.1, -1, 1000, 0.1}, // 50 points: nothing shorter is allowed
        {4.2, 1, 1000, 5},    // off the ladder: to the next rung
        {4.2, -1, 1000, 2},   // and back past the rung below
        {5000, 1, 1, 7200},   // drift points
        {5000, -1, 1, 3600},  // (one a second)
        {60, -1, 1, 60},      // 30 points are too few
        {14400, 1, 1, 14400}, // top of the ladder
        {10, 0, 1000, 10},
    };
    for (const auto& c : cases)
        EXPECT_DOUBLE_EQ(TimeAxis::steppedSpan(c.span, c.steps, c.rate), c.expected)
            << c.span << " s by " << c.steps << " at " << c.rate << " Hz";
}

TEST(TimeAxis, PointsForASpanRoundedAndClamped) {
    const struct {
        double span;
        double rate;
        qsizetype expected;
    } cases[] = {{5, 1000, 5000},  {5000, 1, 5000},     {2.5, 333.3, 833}, // 833.25
                 {0.01, 1000, 50}, {300, 1000, 100000}, {Infinity, 1, 100000}};
    for (const auto& c : cases)
        EXPECT_EQ(TimeAxis::pointsForSpan(c.span, c.rate), c.expected) << c.span << " s";
}

} // namespace
