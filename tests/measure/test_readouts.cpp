#include "../support/PrintQString.h"
#include "measure/MeterReadout.h"
#include "measure/RefreshThrottle.h"
#include "measure/ZeroStatistics.h"

#include <gtest/gtest.h>
#include <limits>

namespace kx {
namespace {

TEST(RefreshThrottle, DueOnlyWhenMoreThanTheIntervalHasPassedAcrossTheTickCountWrapping) {
    RefreshThrottle throttle;
    const quint32 nearEnd = std::numeric_limits<quint32>::max() - 100;
    EXPECT_TRUE(throttle.due(nearEnd, 200.0)) << "the first refresh";
    EXPECT_FALSE(throttle.due(nearEnd + 200u, 200.0)) << "exactly the interval, wrapped to 99";
    EXPECT_TRUE(throttle.due(nearEnd + 201u, 200.0));
}

TEST(MeterReadout, LinesCarryTheSignAndSixDecimals) {
    EXPECT_EQ(meterLine(2, -0.001234), QStringLiteral("Ch2 -0.001234 VDC"));
    EXPECT_EQ(meterLine(3, -0.0000004), QStringLiteral("Ch3 +0.000000 VDC"));
}

// The meter writes these codes as zero values: mid-scale of the offset-binary codes on
// firmware 1.x, 0 for the signed codes of firmware 2.x and later.
TEST(MeterReadout, ZeroCodesFollowTheFirmware) {
    const std::pair<int, qint32> cases[] = {{0, 8388608}, {1, 8388608}, {2, 0}, {3, 0}};
    for (const auto& [firmware, codes] : cases)
        EXPECT_EQ(meterZeroCodes(firmware), codes) << firmware;
}

TEST(ZeroStatistics, SignalToNoiseDependsOnTheFirmware) {
    struct Case {
        double deviation;
        int firmware;
        int resolution;
        double db;
    };
    for (const Case& c : {Case{1.0, 2, 24, 144.4944}, Case{1.0, 1, 24, 138.4738},
                          Case{0.0, 2, 24, 144.4944}, Case{0.0, 1, 20, 120.4120}})
        EXPECT_NEAR(zeroSnrDb(c.deviation, c.firmware, c.resolution), c.db, 1e-4)
            << c.deviation << " codes, firmware " << c.firmware << ", " << c.resolution << " bits";
}

} // namespace
} // namespace kx
