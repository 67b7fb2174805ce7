#include "SimBench.h"

#include <QElapsedTimer>
#include <cmath>
#include <gtest/gtest.h>
#include <set>

using kx::ChannelValues;
using kx::Float3;
using kx::PlateDevice;
using kx::Which;
using kx::test::ForcesRecorder;
using kx::test::SimBench;

namespace {

struct ZeroResult {
    QList<qint32> progress;
    int done = 0;
    qint32 samples = 0;
    ChannelValues average;
    ChannelValues deviation;
    ChannelValues range;
};

void recordZero(PlateDevice& plate, QObject& context, ZeroResult& result) {
    QObject::connect(&plate, &PlateDevice::ZeroProgress, &context,
                     [&result](qint32 n) { result.progress << n; });
    QObject::connect(&plate, &PlateDevice::ZeroDone, &context,
                     [&result](qint32 n, const ChannelValues& a, const ChannelValues& d,
                               const ChannelValues& r) {
                         ++result.done;
                         result.samples = n;
                         result.average = a;
                         result.deviation = d;
                         result.range = r;
                     });
}

struct Block {
    int done = 0;
    qint32 count = 0;
    QList<Float3> forces;
    QList<Float3> volts;
};

void recordBlocks(PlateDevice& plate, QObject& context, Block& block) {
    QObject::connect(&plate, &PlateDevice::TestDone, &context,
                     [&block](qint32 n, const QList<Float3>& f, const QList<Float3>& v) {
                         ++block.done;
                         block.count = n;
                         block.forces = f;
                         block.volts = v;
                     });
}

} // namespace

TEST(SimAcquisition, EachSampleArrivesAtTheTickOfItsDueTime) {
    SimBench bench;
    kx::SimPlate& plate = bench.plate("11093");
    plate.SetSampleFrequency(Which::Current, 64.0f);
    ForcesRecorder recorder(plate, bench.clock);
    const quint32 start = bench.clock.tickCount();
    plate.StartAcquisition(true, false, true, false, true);
    bench.clock.advance(1000);

    ASSERT_EQ(recorder.samples.size(), 64u);
    for (qint32 k = 1; k <= 64; ++k) {
        const auto& s = recorder.samples[size_t(k - 1)];
        EXPECT_EQ(s.number, k);
        EXPECT_EQ(quint32(s.tick - start), quint32(std::floor(k * 1000.0 / 64.0))) << k;
    }
}

TEST(SimAcquisition, StreamingRestartsNumberingAndStopsQuietly) {
    SimBench bench;
    kx::SimPlate& plate = bench.plate("20418"); // 100 Hz
    ForcesRecorder recorder(plate, bench.clock);
    plate.StartAcquisition(true, false, true, false, true);
    bench.clock.advance(55);
    ASSERT_EQ(recorder.samples.size(), 5u);

    plate.StartAcquisition(true, false, true, false, true); // replaces the running one
    bench.clock.advance(20);
    ASSERT_EQ(recorder.samples.size(), 7u);
    EXPECT_EQ(recorder.samples[5].number, 1);
    EXPECT_EQ(recorder.samples[6].number, 2);

    plate.StopAcquisition();
    bench.clock.advance(1000);
    EXPECT_EQ(recorder.samples.size(), 7u);
}

TEST(SimAcquisition, CaptureRenumbersAndDeliversItsSamplesAfterStopCapture) {
    SimBench bench;
    kx::SimPlate& plate = bench.plate("20418");
    ForcesRecorder recorder(plate, bench.clock);
    QObject context;
    Block block;
    recordBlocks(plate, context, block);

    plate.StartAcquisition(true, false, true, false, true);
    bench.clock.advance(100);
    plate.StartCapture(true);
    bench.clock.advance(250);
    plate.StopCapture();
    EXPECT_EQ(block.done, 0); // delivered as an event, after the call
    bench.clock.settle();

    ASSERT_EQ(block.done, 1);
    EXPECT_EQ(block.count, 25);
    ASSERT_EQ(recorder.samples.size(), 35u);
    EXPECT_EQ(recorder.samples[10].number, 1);
    for (int i = 0; i < 25; ++i) {
        EXPECT_EQ(block.forces[i], recorder.samples[size_t(10 + i)].forces);
        EXPECT_EQ(block.volts[i], recorder.samples[size_t(10 + i)].volts);
    }
    bench.clock.advance(100);
    EXPECT_EQ(recorder.samples.size(), 45u); // streaming goes on
    plate.StopCapture();                     // no capture running: nothing more
    bench.clock.settle();
    EXPECT_EQ(block.done, 1);
}

TEST(SimAcquisition, ZeroReportsProgressThenStatisticsOfTheRawCodes) {
    SimBench bench;
    kx::SimPlate& plate = bench.plate("20418");
    QObject context;
    ZeroResult zero;
    recordZero(plate, context, zero);
    plate.CalibrateSelf();
    plate.StartZero(200, true, 30, 50);
    bench.clock.advance(1999);
    EXPECT_EQ(zero.done, 0);
    bench.clock.advance(1);

    ASSERT_EQ(zero.done, 1);
    EXPECT_EQ(zero.samples, 200);
    EXPECT_EQ(zero.progress, (QList<qint32>{20, 40, 60, 80, 100, 120, 140, 160, 180, 200}));
    ASSERT_EQ(zero.average.size(), 4);
    const auto resting = [&] {
        kx::SignalChain chain(plate.truth(), 1);
        return chain.restingCodes(5.0, plate.Temperature());
    }();
    for (int c = 0; c < 4; ++c) {
        // Noise of 120 codes at 100 Hz and 5 V; the standard error of 200 samples is ~8.5.
        EXPECT_NEAR(zero.average[c], resting[size_t(c)], 40.0) << c;
        EXPECT_NEAR(zero.deviation[c], 120.0, 18.0) << c;
        EXPECT_GT(zero.range[c], 4 * zero.deviation[c]) << c;
        EXPECT_LT(zero.range[c], 8 * zero.deviation[c]) << c;
    }
}

TEST(SimAcquisition, ZeroNoiseGrowsWithTheSamplingFrequency) {
    SimBench bench;
    kx::SimPlate& plate = bench.plate("20418");
    QObject context;
    ZeroResult zero;
    recordZero(plate, context, zero);
    const struct {
        float hertz;
        double sigma;
    } cases[] = {{25.0f, 60.0}, {100.0f, 120.0}, {400.0f, 240.0}};
    for (const auto& c : cases) {
        plate.SetSampleFrequency(Which::Current, c.hertz);
        plate.StartZero(2000, true, 30, 0);
        bench.clock.advance(qint64(2000 * 1000 / c.hertz));
        ASSERT_EQ(zero.samples, 2000);
        for (int channel = 0; channel < 4; ++channel)
            EXPECT_NEAR(zero.deviation[channel], c.sigma, 0.06 * c.sigma) << c.hertz;
    }
}

TEST(SimAcquisition, ZeroCodesFollowTheFirmwareFormat) {
    SimBench bench;
    QObject context;
    ZeroResult older;
    ZeroResult current;
    recordZero(bench.plate("11093"), context, older);
    recordZero(bench.plate("20418"), context, current);
    bench.plate("11093").StartZero(10, true);
    bench.plate("20418").StartZero(10, true);
    bench.clock.advance(1000);
    for (int c = 0; c < 4; ++c) {
        // Offset-binary around mid-scale on firmware 1.x, signed around 0 on firmware 2.x.
        EXPECT_NEAR(older.average[c], 8388608.0, 300000.0);
        EXPECT_NEAR(current.average[c], 0.0, 300000.0);
    }
}

TEST(SimAcquisition, ResolutionQuantisesTheCodes) {
    SimBench bench;
    kx::SimPlate& plate = bench.plate("20418");
    QObject context;
    ZeroResult zero;
    recordZero(plate, context, zero);
    plate.SetResolution(6);
    EXPECT_EQ(plate.Resolution(), 6);
    plate.StartZero(100, true);
    bench.clock.advance(1000);
    // Steps of 2^18 codes swallow a noise of 120 codes: every reading is the same code.
    for (int c = 0; c < 4; ++c) {
        EXPECT_EQ(zero.deviation[c], 0.0);
        EXPECT_EQ(std::fmod(zero.average[c], 262144.0), 0.0);
    }
}

TEST(SimAcquisition, TestBlockDeliversThatManySamples) {
    SimBench bench;
    kx::SimPlate& plate = bench.plate("11093"); // 64 Hz
    QObject context;
    Block block;
    recordBlocks(plate, context, block);
    plate.StartTest(13, true, true, false, 30, true);
    bench.clock.advance(202);
    EXPECT_EQ(block.done, 0);
    bench.clock.advance(1);
    ASSERT_EQ(block.done, 1);
    EXPECT_EQ(block.count, 13);
    EXPECT_EQ(block.forces.size(), 13);
    EXPECT_EQ(block.volts.size(), 13);
}

TEST(SimAcquisition, HandlersMayStartTheNextAcquisition) {
    SimBench bench;
    kx::SimPlate& plate = bench.plate("20418");
    ForcesRecorder recorder(plate, bench.clock);
    QObject context;
    // As the scale does: a zero, and the display switched on from its completion.
    QObject::connect(&plate, &PlateDevice::ZeroDone, &context,
                     [&] { plate.StartAcquisition(true, false, true, false, true); });
    plate.StartZero(5, true, 30, 50);
    bench.clock.advance(100);
    ASSERT_EQ(recorder.samples.size(), 5u);
    EXPECT_EQ(recorder.samples.front().number, 1);
    EXPECT_EQ(recorder.samples.front().tick, 1000u + 50u + 10u);
}

TEST(SimAcquisition, SixtySecondsAtOneKilohertzRunInWellUnderASecond) {
    SimBench bench;
    kx::SimPlate& plate = bench.plate("20418");
    plate.SetSampleFrequency(Which::Current, 1000.0f);
    qint64 count = 0;
    double sumFz = 0;
    QObject context;
    QObject::connect(&plate, &PlateDevice::ForcesIn, &context,
                     [&](qint32 n, const Float3& f, const Float3&) {
                         count = n;
                         sumFz += f[0];
                     });
    QElapsedTimer wall;
    wall.start();
    plate.StartAcquisition(true, false, true, false, true);
    bench.clock.advance(60000);
    EXPECT_EQ(count, 60000);
    EXPECT_LT(wall.elapsed(), 500);
    EXPECT_NEAR(sumFz / double(count), 0.0, 1.0); // the factory zero holds
}

TEST(SimAcquisition, SameSeedSameSamples) {
    const auto run = [] {
        SimBench bench;
        kx::SimPlate& plate = bench.plate("20418");
        plate.loads().placePerson(70, 0.05, 0.2, kx::PlateLoads::Stance::Swaying, plate.now());
        ForcesRecorder recorder(plate, bench.clock);
        plate.StartAcquisition(true, false, true, false, true);
        bench.clock.advance(3000);
        return recorder.samples;
    };
    const auto first = run();
    const auto second = run();
    ASSERT_EQ(first.size(), 300u);
    ASSERT_EQ(second.size(), first.size());
    for (size_t i = 0; i < first.size(); ++i) {
        EXPECT_EQ(first[i].forces, second[i].forces);
        EXPECT_EQ(first[i].volts, second[i].volts);
    }

    kx::Scenario reseeded = kx::Scenario::defaults();
    reseeded.plates[0].seed += 1;
    SimBench other(reseeded);
    ForcesRecorder recorder(other.plate("20418"), other.clock);
    other.plate("20418").StartAcquisition(true, false, true, false, true);
    other.clock.advance(100);
    ASSERT_FALSE(recorder.samples.empty());
    EXPECT_NE(recorder.samples[0].volts, first[0].volts);
}

TEST(SimAcquisition, EncoderAnswersAfterTheRequestAndKeepsCounting) {
    SimBench bench;
    kx::SimPlate& plate = bench.plate("20418");
    QList<qint32> values;
    QObject context;
    QObject::connect(&plate, &PlateDevice::EncoderIn, &context, [&](qint32 v) { values << v; });
    plate.RequestEncoder();
    EXPECT_TRUE(values.isEmpty());
    bench.clock.settle();
    bench.clock.advance(1000);
    plate.RequestEncoder();
    bench.clock.settle();
    ASSERT_EQ(values.size(), 2);
    EXPECT_EQ(values[1] - values[0], 256);
}

TEST(SimAcquisition, BatchedPacingHandsOverOverdueSamplesTogether) {
    kx::ManualClock clock(1000);
    kx::SimDriver driver(clock, kx::SimDriver::Pacing::Batched);
    kx::Scenario::defaults().applyTo(driver);
    driver.OpenDevices(kx::PlateVendorId, kx::PlateProductId1, kx::PlateProductId2);
    clock.settle();
    PlateDevice& fast = *driver.Item(1);
    PlateDevice& slow = *driver.Item(2);
    fast.SetSampleFrequency(Which::Current, 1000.0f);
    slow.SetSampleFrequency(Which::Current, 9.0f);
    ForcesRecorder fastSamples(fast, clock);
    ForcesRecorder slowSamples(slow, clock);
    fast.StartAcquisition(true, false, true, false, true);
    slow.StartAcquisition(true, false, true, false, true);
    clock.advance(1000);

    // Every sample comes no earlier than its due time and less than a batch later; the fast
    // plate's arrive in bunches, 50 wake-ups for 1000 samples.
    const auto check = [](const ForcesRecorder& recorder, double hertz, size_t count) {
        EXPECT_EQ(recorder.samples.size(), count);
        std::set<quint32> ticks;
        for (size_t i = 0; i < recorder.samples.size(); ++i) {
            const auto& s = recorder.samples[i];
            const auto due = quint32(std::floor(double(i + 1) * 1000.0 / hertz));
            EXPECT_EQ(s.number, qint32(i + 1));
            EXPECT_GE(s.tick - 1000, due) << i;
            EXPECT_LT(s.tick - 1000, due + quint32(kx::SimDriver::BatchMs)) << i;
            ticks.insert(s.tick);
        }
        return ticks.size();
    };
    EXPECT_EQ(check(fastSamples, 1000.0, 1000), 50u);
    check(slowSamples, 9.0, 9);
}
