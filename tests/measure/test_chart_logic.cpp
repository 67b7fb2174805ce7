#include "measure/ChartScale.h"
#include "measure/TraceBuffer.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace kx;

namespace {

// Flat at zero, flat far from zero, wider than MinSpan, CoP in metres, flat without MinSpan.
TEST(ChartScale, LimitsAroundTheDataAtLeastMinSpanApart) {
    const struct {
        double low;
        double high;
        double minSpan;
    } cases[] = {{0, 0, 0.4},
                 {-812.3, -812.3, 0.4},
                 {-812.3, -795.1, 0.4},
                 {0.0101, 0.0102, 5e-4},
                 {3, 3, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.low << " .. " << c.high << " min span " << c.minSpan);
        ChartScale scale;
        scale.fit(c.low, c.high, c.minSpan);
        EXPECT_LE(scale.bottom(), c.low);
        EXPECT_GE(scale.top(), c.high);
        EXPECT_GE(scale.top() - scale.bottom(), c.minSpan * (1 - 1e-9));
        EXPECT_GT(scale.top() - scale.bottom(), 0);
    }
}

TEST(TraceBuffer, KeepsTheNewestPoints) {
    TraceBuffer trace(1000);
    trace.setColumns(300);
    for (int i = 0; i < 1'000'000; ++i)
        trace.add(float(i));
    EXPECT_EQ(trace.point(999'000), 999'000.0f);
    EXPECT_TRUE(std::isnan(trace.point(998'999)));
}

} // namespace
