#include "../support/PrintQString.h"
#include "calibration/AcquisitionPlan.h"
#include "calibration/Calibration.h"
#include "calibration/PointTable.h"

#include <cmath>
#include <gtest/gtest.h>

namespace kx {
namespace {

const QDateTime Noon(QDate(2026, 3, 2), QTime(12, 0));

class PointTableTest : public ::testing::Test {
protected:
    // Three points on the X axis, 0.2 m apart; the first is current.
    void SetUp() override {
        for (const double x : {0.0, 0.2, 0.4}) {
            CalPoint p;
            p.x = x;
            c.record.points.push_back(p);
        }
    }
    CalPoint& point(int i) { return c.record.points[std::size_t(i)]; }

    Calibration c;
    PointTable table{c};
};

ZeroReading zeroWithDeviation(double deviation) {
    return ZeroReading::fromZeroDone({100.4, -200.5, 300.5, 7}, {deviation, deviation, deviation});
}

DataReading dataWithDeviation(double deviation) {
    DataReading r;
    r.mean = {0.08, 0.07, 0.09};
    r.stdDev = {deviation, deviation, deviation};
    return r;
}

TEST_F(PointTableTest, NextWrapsFromTheLastPointToTheFirst) {
    for (const int expected : {1, 2, 0, 1}) {
        table.next();
        EXPECT_EQ(c.currentPoint, expected);
    }
}

TEST_F(PointTableTest, HitTestFindsTheFirstMarkHoldingTheClickRimIncluded) {
    // With a radius of 0.125 m marks 0 and 1 overlap: the lower number wins. The rim distances
    // are binary fractions, so that they equal the radius exactly.
    struct Case {
        double x, y;
        std::optional<int> hit;
    } cases[] = {
        {0.0, 0.0, 0},
        {0.125, 0.0, 0},
        {0.0, -0.125, 0},
        {0.1, 0.0, 0},
        {0.25, 0.0, 1},
        {0.4, 0.125, 2},
        {0.4, 0.1251, std::nullopt},
        {0.3, 0.3, std::nullopt},
    };
    for (const Case& k : cases)
        EXPECT_EQ(table.hitTest(k.x, k.y, 0.125), k.hit) << k.x << ", " << k.y;
}

// A click leaving a point without data drops its zero; Next and points with data keep it.
TEST_F(PointTableTest, ClickLeavingAPointWithoutDataDropsItsZero) {
    point(0).zeroDone = true;
    table.next();
    EXPECT_TRUE(point(0).zeroDone);
    point(1).zeroDone = true;
    EXPECT_TRUE(table.click(0.0, 0, 0.025));
    EXPECT_EQ(c.currentPoint, 0);
    EXPECT_FALSE(point(1).zeroDone);

    point(0).dataDone = true;
    EXPECT_TRUE(table.click(0.4, 0, 0.025));
    EXPECT_TRUE(point(0).zeroDone);

    // A click on the current point or on no point changes nothing.
    point(2).zeroDone = true;
    EXPECT_FALSE(table.click(0.4, 0.01, 0.025));
    EXPECT_FALSE(table.click(0.3, 0.3, 0.025));
    EXPECT_EQ(c.currentPoint, 2);
    EXPECT_TRUE(point(2).zeroDone);
}

TEST(PointTable, AcceptedUpToTheLimitInSinglePrecision) {
    struct Case {
        double deviation;
        float limit;
        bool accepted;
    } cases[] = {
        {1024.0, 1024.0f, true},
        {1024.0001, 1024.0f, false},
        // 0.002 as a double is not 0.002f, but compared as singles they are equal.
        {0.002, 0.002f, true},
        {0.0020001, 0.002f, false},
    };
    for (const Case& k : cases) {
        EXPECT_EQ(zeroWithDeviation(k.deviation).acceptedBy(k.limit), k.accepted) << k.deviation;
        EXPECT_EQ(dataWithDeviation(k.deviation).acceptedBy(k.limit), k.accepted) << k.deviation;
    }
}

// Accepted results are stored with date and temperature, a new zero clears the data, and
// rejected ones leave the point as it was.
TEST_F(PointTableTest, CompletionsStoreAcceptedResultsOnly) {
    point(0).dataDone = true;
    ASSERT_EQ(table.completeZero(zeroWithDeviation(10), 1024, Noon, 23.5f),
              AcquisitionOutcome::Accepted);
    EXPECT_TRUE(point(0).zeroDone);
    EXPECT_FALSE(point(0).dataDone);
    EXPECT_EQ(point(0).zeroAverage, (std::array<double, 4>{100.4, -200.5, 300.5, 7}));
    EXPECT_EQ(point(0).zeroTemperature, 23.5f);
    EXPECT_EQ(point(0).zeroDate.toDateTime(), Noon);
    EXPECT_FALSE(c.unsavedChanges);

    ASSERT_EQ(table.completeData(dataWithDeviation(0.001), 0.002f, Noon, 21.25f),
              AcquisitionOutcome::Accepted);
    EXPECT_TRUE(c.unsavedChanges);
    EXPECT_TRUE(point(0).dataDone);
    EXPECT_EQ(point(0).dataTemperature, 21.25f);
    EXPECT_EQ(point(0).dataMean, (std::array<double, 3>{0.08, 0.07, 0.09}));

    c.unsavedChanges = false;
    const CalPoint before = point(0);
    EXPECT_EQ(table.completeZero(zeroWithDeviation(2000), 1024, Noon.addSecs(60), 22),
              AcquisitionOutcome::Rejected);
    EXPECT_EQ(table.completeData(dataWithDeviation(0.003), 0.002f, Noon.addSecs(60), 22),
              AcquisitionOutcome::Rejected);
    EXPECT_EQ(point(0), before);
    EXPECT_FALSE(c.unsavedChanges);
}

TEST(AcquisitionStatistics, MissingZeroChannelsAreZeroAndTheDeviceZeroRoundsHalfToEven) {
    const ZeroReading r = ZeroReading::fromZeroDone({11.0}, {3.0});
    EXPECT_EQ(r.average, (std::array<double, 4>{11, 0, 0, 0}));
    EXPECT_EQ(r.stdDev, (std::array<double, 4>{3, 0, 0, 0}));
    EXPECT_EQ(PointTable::deviceZero(r.average), (std::array<qint32, 3>{11, 0, 0}));
    EXPECT_EQ(PointTable::deviceZero({2.5, -1.5, 3.5, 0}), (std::array<qint32, 3>{2, -2, 4}));
    EXPECT_EQ(PointTable::deviceZero({1e12, -1e12, 0.49, 0}),
              (std::array<qint32, 3>{2147483647, -2147483647 - 1, 0}));
}

TEST(AcquisitionStatistics, DataMeanAndSampleDeviation) {
    // Channel 0: 1, 2, 3, 4 -> mean 2.5, deviation sqrt(5/3). Channel 1 constant. Channel 2
    // a large offset with a small spread, where the sums must be in double.
    const QList<Float3> volts{{1, 5, 1000.25f}, {2, 5, 1000.5f}, {3, 5, 1000.25f}, {4, 5, 1000.5f}};
    const DataReading r = DataReading::fromSamples(4, volts);
    EXPECT_DOUBLE_EQ(r.mean[0], 2.5);
    EXPECT_NEAR(r.stdDev[0], 1.2909944487358056, 1e-12);
    EXPECT_DOUBLE_EQ(r.mean[1], 5);
    EXPECT_EQ(r.stdDev[1], 0);
    EXPECT_DOUBLE_EQ(r.mean[2], 1000.375);
    EXPECT_NEAR(r.stdDev[2], 0.14433756729740643, 1e-9);

    // A count beyond the samples is bounded by them; one sample or none never passes.
    const QList<Float3> two{{1, 1, 1}, {3, 3, 3}};
    EXPECT_DOUBLE_EQ(DataReading::fromSamples(1000, two).mean[0], 2.0);
    EXPECT_FALSE(DataReading::fromSamples(1, two).acceptedBy(1e30f));
    EXPECT_FALSE(DataReading::fromSamples(0, {}).acceptedBy(1e30f));
}

TEST(AcquisitionPlan, SamplesFromDurationAndFrequency) {
    struct Case {
        const char* text;
        float hertz;
        const char* shown;
        qint32 samples;
    } cases[] = {
        {"2", 100, "2", 200},        {" 2.5 ", 64, " 2.5 ", 160}, {"0.125", 100, "0.125", 12},
        {"0.135", 100, "0.135", 14}, {"", 100, "1", 100},         {"-3", 100, "1", 100},
        {"0", 100, "1", 100},        {"abc", 100, "1", 100},      {"nan", 100, "1", 100},
        {"0.001", 100, "0.001", 1},
    };
    for (const Case& k : cases) {
        const AcquisitionPlan plan = AcquisitionPlan::from(QString::fromLatin1(k.text), k.hertz);
        EXPECT_EQ(plan.durationText, QString::fromLatin1(k.shown)) << k.text;
        EXPECT_EQ(plan.samples, k.samples) << k.text;
    }
}

TEST(AcquisitionPlan, ExcitationFollowsEarlierDataOnlyWhenItDiffersAsShown) {
    EXPECT_EQ(compatibleExcitation(std::nullopt, 5.0f), std::nullopt);
    EXPECT_EQ(compatibleExcitation(5.0f, 5.0002f), std::nullopt);
    EXPECT_EQ(compatibleExcitation(5.0f, 2.5f), 5.0f);
}

} // namespace
} // namespace kx
