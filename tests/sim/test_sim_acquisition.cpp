#include "SimBench.h"

#include <QElapsedTimer>
#include <cmath>
#include <gtest/gtest.h>
#include <set>

using kx::Float3;
using kx::PlateDevice;
using kx::Which;
using kx::test::BlockRecorder;
using kx::test::ForcesRecorder;
using kx::test::SimBench;
using kx::test::ZeroRecorder;

// Each sample arrives at the tick of its due time; a new start restarts the numbering.
TEST(SimAcquisition, StreamingIsPacedRestartsNumberingAndStopsQuietly) {
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
    plate.StartAcquisition(true, false, true, false, true); // replaces the running one
    bench.clock.advance(20);
    ASSERT_EQ(recorder.samples.size(), 65u);
    EXPECT_EQ(recorder.samples.back().number, 1);
    plate.StopAcquisition();
    bench.clock.advance(1000);
    EXPECT_EQ(recorder.samples.size(), 65u);
}

TEST(SimAcquisition, CaptureAndTestBlocksDeliverTheirSamplesAsAnEvent) {
    SimBench bench;
    kx::SimPlate& plate = bench.plate("20418"); // 100 Hz
    ForcesRecorder recorder(plate, bench.clock);
    BlockRecorder block(plate);
    plate.StartAcquisition(true, false, true, false, true);
    bench.clock.advance(100);
    plate.StartCapture(true);
    bench.clock.advance(250);
    plate.StopCapture();
    EXPECT_EQ(block.done, 0); // delivered after the call
    bench.clock.settle();
    ASSERT_EQ(block.done, 1);
    EXPECT_EQ(block.count, 25);
    ASSERT_EQ(recorder.samples.size(), 35u);
    EXPECT_EQ(recorder.samples[10].number, 1); // the capture renumbers
    for (int i = 0; i < 25; ++i)
        EXPECT_EQ(block.volts[i], recorder.samples[size_t(10 + i)].volts);
    EXPECT_EQ(block.forces[24], recorder.samples[34].forces);
    bench.clock.advance(100);
    EXPECT_EQ(recorder.samples.size(), 45u); // streaming goes on

    plate.StartTest(13, true, true, false, 30, true);
    bench.clock.advance(129);
    EXPECT_EQ(block.done, 1);
    bench.clock.advance(1);
    ASSERT_EQ(block.done, 2);
    EXPECT_EQ(block.count, 13);
    EXPECT_EQ(block.forces.size() + block.volts.size(), 26);
}

// Codes are offset-binary around mid-scale on firmware 1.x, signed around 0 on firmware 2.x.
TEST(SimAcquisition, ZeroReportsProgressThenStatisticsOfTheRawCodes) {
    SimBench bench;
    kx::SimPlate& plate = bench.plate("20418");
    ZeroRecorder zero(plate);
    ZeroRecorder older(bench.plate("11093"));
    plate.CalibrateSelf();
    plate.StartZero(200, true, 30, 50);
    bench.plate("11093").StartZero(10, true);
    bench.clock.advance(1999);
    EXPECT_EQ(zero.done, 0);
    bench.clock.advance(1);
    ASSERT_EQ(zero.done, 1);
    EXPECT_EQ(zero.samples, 200);
    EXPECT_EQ(zero.progress, (QList<qint32>{20, 40, 60, 80, 100, 120, 140, 160, 180, 200}));
    ASSERT_EQ(zero.average.size(), 4);
    const auto resting = kx::SignalChain(plate.truth(), 1).restingCodes(5.0, plate.Temperature());
    for (int c = 0; c < 4; ++c) {
        // Noise of 120 codes at 100 Hz and 5 V; the standard error of 200 samples is ~8.5.
        EXPECT_NEAR(zero.average[c], resting[size_t(c)], 40.0) << c;
        EXPECT_NEAR(zero.deviation[c], 120.0, 18.0) << c;
        EXPECT_GT(zero.range[c], 4 * zero.deviation[c]) << c;
        EXPECT_LT(zero.range[c], 8 * zero.deviation[c]) << c;
        EXPECT_NEAR(zero.average[c], 0.0, 300000.0);
        EXPECT_NEAR(older.average[c], 8388608.0, 300000.0);
    }
}

TEST(SimAcquisition, ZeroNoiseGrowsWithTheSamplingFrequency) {
    SimBench bench;
    kx::SimPlate& plate = bench.plate("20418");
    ZeroRecorder zero(plate);
    for (const auto& [hertz, sigma] : {std::pair{25.0f, 60.0}, {400.0f, 240.0}}) {
        plate.SetSampleFrequency(Which::Current, hertz);
        plate.StartZero(2000, true, 30, 0);
        bench.clock.advance(qint64(2000 * 1000 / hertz));
        ASSERT_EQ(zero.samples, 2000);
        for (int channel = 0; channel < 4; ++channel)
            EXPECT_NEAR(zero.deviation[channel], sigma, 0.06 * sigma) << hertz;
    }
}

TEST(SimAcquisition, ResolutionQuantisesTheCodes) {
    SimBench bench;
    kx::SimPlate& plate = bench.plate("20418");
    ZeroRecorder zero(plate);
    plate.SetResolution(6);
    plate.StartZero(100, true);
    bench.clock.advance(1000);
    // Steps of 2^18 codes swallow a noise of 120 codes: every reading is the same code.
    for (int c = 0; c < 4; ++c) {
        EXPECT_EQ(zero.deviation[c], 0.0);
        EXPECT_EQ(std::fmod(zero.average[c], 262144.0), 0.0);
    }
}

TEST(SimAcquisition, HandlersMayStartTheNextAcquisition) {
    SimBench bench;
    kx::SimPlate& plate = bench.plate("20418");
    ForcesRecorder recorder(plate, bench.clock);
    // As the scale does: a zero, and the display switched on from its completion.
    QObject::connect(&plate, &PlateDevice::ZeroDone, &recorder.context,
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
    const auto run = [](const kx::Scenario& scenario) {
        SimBench bench(scenario);
        kx::SimPlate& plate = bench.plate("20418");
        plate.loads().placePerson(70, 0.05, 0.2, kx::PlateLoads::Stance::Swaying, plate.now());
        ForcesRecorder recorder(plate, bench.clock);
        plate.StartAcquisition(true, false, true, false, true);
        bench.clock.advance(3000);
        std::vector<Float3> forces;
        for (const auto& s : recorder.samples)
            forces.push_back(s.forces);
        return forces;
    };
    const auto first = run(kx::Scenario::defaults());
    EXPECT_EQ(first.size(), 300u);
    EXPECT_EQ(run(kx::Scenario::defaults()), first);
    kx::Scenario reseeded = kx::Scenario::defaults();
    reseeded.plates[0].seed += 1;
    EXPECT_NE(run(reseeded)[0], first[0]);
}

TEST(SimAcquisition, EncoderAnswersAfterTheRequestAndKeepsCounting) {
    SimBench bench;
    kx::SimPlate& plate = bench.plate("20418");
    QList<qint32> values;
    QObject context;
    QObject::connect(&plate, &PlateDevice::EncoderIn, &context, [&](qint32 v) { values << v; });
    plate.RequestEncoder();
    EXPECT_TRUE(values.isEmpty());
    bench.clock.advance(1000);
    plate.RequestEncoder();
    bench.clock.settle();
    ASSERT_EQ(values.size(), 2);
    EXPECT_EQ(values[1] - values[0], 256);
}

// Every sample comes no earlier than its due time and less than a batch later; the fast plate's
// arrive in bunches, 50 wake-ups for 1000 samples.
TEST(SimAcquisition, BatchedPacingHandsOverOverdueSamplesTogether) {
    kx::ManualClock clock(1000);
    kx::SimDriver driver(clock, kx::SimDriver::Pacing::Batched);
    kx::Scenario::defaults().applyTo(driver);
    driver.OpenDevices(kx::PlateVendorId, kx::PlateProductId1, kx::PlateProductId2);
    clock.settle();
    const auto check = [&](PlateDevice& plate, float hertz, size_t count, size_t wakeUps) {
        plate.SetSampleFrequency(Which::Current, hertz);
        ForcesRecorder recorder(plate, clock);
        plate.StartAcquisition(true, false, true, false, true);
        const quint32 start = clock.tickCount();
        clock.advance(1000);
        plate.StopAcquisition();
        ASSERT_EQ(recorder.samples.size(), count);
        std::set<quint32> ticks;
        for (size_t i = 0; i < count; ++i) {
            const auto& s = recorder.samples[i];
            const auto due = quint32(std::floor(double(i + 1) * 1000.0 / hertz));
            EXPECT_GE(s.tick - start, due) << i;
            EXPECT_LT(s.tick - start, due + quint32(kx::SimDriver::BatchMs)) << i;
            ticks.insert(s.tick);
        }
        EXPECT_EQ(ticks.size(), wakeUps);
    };
    check(*driver.Item(1), 1000.0f, 1000, 50);
    check(*driver.Item(2), 9.0f, 9, 9);
}
