#include "measure/ChartScale.h"
#include "measure/TraceBuffer.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace kx;

namespace {

// --- ChartScale ---

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

INSTANTIATE_TEST_SUITE_P(Data, ScaleFits,
                         testing::Values(ScaleCase{0, 0, 0.4}, // flat at zero: MinSpan decides
                                         ScaleCase{-812.3, -812.3, 0.4},  // flat far from zero
                                         ScaleCase{-812.3, -795.1, 0.4},  // data wider than MinSpan
                                         ScaleCase{0.0101, 0.0102, 5e-4}, // CoP in metres
                                         ScaleCase{3, 3,
                                                   0}, // flat with no MinSpan still has height
                                         ScaleCase{-1e-4, 2.5e-3, 1e-3}, ScaleCase{-7, 93, 0.001}));

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

// --- TraceBuffer ---

TEST(TraceBuffer, KeepsItsCapacityAndOnlyTheNewestPoints) {
    TraceBuffer trace(1000);
    trace.setColumns(300);
    for (int i = 0; i < 1'000'000; ++i)
        trace.add(float(i));
    EXPECT_EQ(trace.capacity(), 1000);
    EXPECT_EQ(trace.pointCount(), 1'000'000);
    EXPECT_EQ(trace.point(999'999), 999'999.0f);
    EXPECT_EQ(trace.point(999'000), 999'000.0f);
    EXPECT_TRUE(std::isnan(trace.point(998'999)));
    EXPECT_TRUE(std::isnan(trace.point(1'000'000)));
}

TEST(TraceBuffer, BucketsFitTheColumnsAndShowAboutCapacityPoints) {
    struct Case {
        qsizetype capacity;
        int columns;
        int perBucket;
        int buckets;
    };
    for (const Case c : {Case{5000, 250, 20, 250}, Case{5000, 700, 8, 625}, Case{5000, 600, 9, 555},
                         Case{100, 400, 1, 100}, Case{50, 0, 50, 1}}) {
        TraceBuffer trace(c.capacity);
        trace.setColumns(c.columns);
        EXPECT_EQ(trace.pointsPerBucket(), c.perBucket) << c.capacity << "/" << c.columns;
        EXPECT_EQ(trace.bucketCount(), c.buckets) << c.capacity << "/" << c.columns;
    }
}

TEST(TraceBuffer, ResizingRebuildsTheBucketsFromThePoints) {
    TraceBuffer trace(1000);
    trace.setColumns(1000);
    for (int i = 0; i < 2500; ++i)
        trace.add(i == 2450 ? -5.0f : float(i % 7));
    trace.setColumns(10); // 100 points per bucket
    EXPECT_EQ(trace.bucket(24).min, -5.0f);
    EXPECT_EQ(trace.bucket(24).max, 6.0f);
    EXPECT_EQ(trace.bucket(24).first, float(2400 % 7));
    EXPECT_EQ(trace.bucket(24).last, float(2499 % 7));
}

TEST(TraceBuffer, ScrollingAndSweepingPlaceTheBuckets) {
    TraceBuffer trace(40);
    trace.setColumns(4); // 4 buckets of 10
    EXPECT_EQ(trace.bucketAtSlot(0, true), -1);
    for (int i = 0; i < 25; ++i) // buckets 0, 1 and half of 2
        trace.add(float(i));
    // Scrolling: the newest bucket at the last slot.
    EXPECT_EQ(trace.bucketAtSlot(3, true), 2);
    EXPECT_EQ(trace.bucketAtSlot(0, true), -1);
    // Sweeping: bucket b at slot b mod 4; nothing yet ahead of the first sweep.
    EXPECT_EQ(trace.bucketAtSlot(2, false), 2);
    EXPECT_EQ(trace.bucketAtSlot(3, false), -1);
    for (int i = 25; i < 55; ++i) // into bucket 5
        trace.add(float(i));
    EXPECT_EQ(trace.bucketAtSlot(1, false), 5);
    EXPECT_EQ(trace.bucketAtSlot(2, false), 2); // the last sweep, still on screen
    EXPECT_EQ(trace.bucketAtSlot(0, true), 2);
    EXPECT_EQ(trace.bucketAtSlot(3, true), 5);
}

} // namespace
