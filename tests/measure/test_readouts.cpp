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

// The texts the zero dialog and kxplate zero show, channel by channel: whole codes, volts
// against 2^24 codes for 10 V, the noise, and the SNR against the firmware's range.
TEST(ZeroStatistics, ReadoutsOfEachReportedChannel) {
    const ChannelValues average{8388608.4, -838860.8, 1000.6, 7, 99};
    const ChannelValues deviation{1.0, 0.0, 12.34, 2.0, 3.0};
    // The same whatever the plate: whole codes, volts and the noise.
    const QStringList averages{"8388608", "-838861", "1001", "7"};
    const QStringList volts{"5.000", "-0.500", "0.001", "0.000"};
    const QStringList deviations{"1.0", "0.0", "12.3", "2.0"};
    // The SNR: 20 log10(range / deviation), or the converter's full range without noise.
    const struct {
        int firmware;
        int resolution;
        QStringList snr;
    } cases[] = {
        {2, 24, {"144.5", "144.5", "122.7", "138.5"}},
        {1, 20, {"138.5", "120.4", "116.6", "132.5"}},
    };
    for (const auto& c : cases) {
        const QList<ZeroReadout> readouts =
            zeroReadouts(average, deviation, c.firmware, c.resolution, 4);
        ASSERT_EQ(readouts.size(), 4) << "the fifth value is no channel of the dialog";
        for (qsizetype i = 0; i < readouts.size(); ++i) {
            const ZeroReadout& r = readouts[i];
            EXPECT_EQ(r.averageText, averages[i]) << i;
            EXPECT_EQ(r.voltsText, volts[i]) << i;
            EXPECT_EQ(r.deviationText, deviations[i]) << i;
            EXPECT_EQ(r.snrText, c.snr[i]) << "firmware " << c.firmware << ", channel " << i;
            EXPECT_DOUBLE_EQ(r.volts, average[i] * 10 / 16777216.0);
        }
    }
    // Only channels the event gave both values of.
    EXPECT_EQ(zeroReadouts(average, {1.0, 2.0, 3.0}, 2, 24, 4).size(), 3);
}

} // namespace
} // namespace kx
