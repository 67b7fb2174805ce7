#include "measure/ChartScale.h"
#include "measure/TraceBuffer.h"

#include <cmath>
#include <gtest/gtest.h>

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

TEST_P(ScaleFits, LimitsAroundTheDataAtLeastMinSpanApart) {
    const ScaleCase c = GetParam();
    ChartScale scale;
    scale.fit(c.low, c.high, c.minSpan);
    const double span = scale.top() - scale.bottom();
    EXPECT_LE(scale.bottom(), c.low);
    EXPECT_GE(scale.top(), c.high);
    EXPECT_GE(span, c.minSpan * (1 - 1e-9));
    EXPECT_GT(span, 0);
}

// Flat at zero, flat far from zero, wider than MinSpan, CoP in metres, flat without MinSpan.
INSTANTIATE_TEST_SUITE_P(Data, ScaleFits,
                         testing::Values(ScaleCase{0, 0, 0.4}, ScaleCase{-812.3, -812.3, 0.4},
                                         ScaleCase{-812.3, -795.1, 0.4},
                                         ScaleCase{0.0101, 0.0102, 5e-4}, ScaleCase{3, 3, 0}));

TEST(TraceBuffer, KeepsTheNewestPoints) {
    TraceBuffer trace(1000);
    trace.setColumns(300);
    for (int i = 0; i < 1'000'000; ++i)
        trace.add(float(i));
    EXPECT_EQ(trace.point(999'000), 999'000.0f);
    EXPECT_TRUE(std::isnan(trace.point(998'999)));
}

} // namespace
