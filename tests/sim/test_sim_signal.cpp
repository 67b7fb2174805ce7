#include "PlateMeasure.h"
#include "SimBench.h"
#include "sim/ConverterModel.h"
#include "sim/NoiseGenerator.h"
#include "sim/SignalChain.h"

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace kx::test {
namespace {

TEST(ConverterModel, FrequenciesOfTheProgramAreMetExactlyAndRatesStayInRange) {
    const std::pair<double, qint16> cases[] = {{9, 8000}, {64, 1125}, {1000, 72}};
    for (const auto& [hertz, decimation] : cases) {
        ConverterModel m(1, 720);
        m.setSampleFrequency(hertz);
        EXPECT_EQ(m.turboRate(), 1) << hertz;
        EXPECT_EQ(m.decimationRate(), decimation) << hertz;
        EXPECT_DOUBLE_EQ(m.cutoffFrequency(), 0.262 * hertz);
    }
    ConverterModel m(1, 720);
    m.setTurboRate(17);
    m.setDecimationRate(19);
    EXPECT_EQ(m.turboRate(), 16);
    EXPECT_EQ(m.decimationRate(), 20);
}

// What the plate reports is single precision: writing back what was read changes nothing.
TEST(ConverterModel, ReadBackIsStableUnderRewriting) {
    NoiseGenerator random(42);
    for (int i = 0; i < 2000; ++i) {
        ConverterModel m(qint16(1 + random.next() % 16), qint16(20 + random.next() % 7981));
        const bool viaCutoff = i % 2 == 1;
        const double wanted = 9.0 + 991.0 * random.uniform();
        if (viaCutoff)
            m.setCutoffFrequency(0.262 * wanted);
        else
            m.setSampleFrequency(wanted);
        // Nearest representable: within one decimation step at the highest turbo rate whose
        // decimation stays in range.
        const double turbo = std::clamp(std::floor(8000 * wanted / 72000.0), 1.0, 16.0);
        EXPECT_NEAR(m.sampleFrequency(), wanted, wanted * wanted / (turbo * 72000.0));

        const ConverterModel first = m;
        if (viaCutoff)
            m.setCutoffFrequency(float(m.cutoffFrequency()));
        else
            m.setSampleFrequency(float(m.sampleFrequency()));
        EXPECT_EQ(m, first) << wanted;
    }
}

// Each sample arrives at the tick of its due time and none is lost at a kilohertz for a
// minute; a new start restarts the numbering, a stop ends the stream.
TEST(SimAcquisition, StreamingIsPacedRestartsNumberingAndStopsQuietly) {
    SimBench bench;
    SimPlate& plate = bench.plate("20418");
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
    plate.SetSampleFrequency(Which::Current, 1000.0f);
    plate.StartAcquisition(true, false, true, false, true); // replaces the running one
    bench.clock.advance(60000);
    ASSERT_EQ(recorder.samples.size(), 64u + 60000u);
    EXPECT_EQ(recorder.samples[64].number, 1);
    EXPECT_EQ(recorder.samples.back().number, 60000);
    double sumFz = 0;
    for (size_t i = 64; i < recorder.samples.size(); ++i)
        sumFz += recorder.samples[i].forces[0];
    EXPECT_NEAR(sumFz / 60000, 0.0, 1.0); // the factory zero holds
    plate.StopAcquisition();
    bench.clock.advance(1000);
    EXPECT_EQ(recorder.samples.size(), 64u + 60000u);
}

// However a capture ends, its samples arrive after the call as a block, renumbered from 1: a
// real library also hands back what it recorded when the stream ends under a capture.
TEST(SimAcquisition, ACaptureDeliversItsBlockHoweverItEnds) {
    using End = void (SimPlate::*)();
    const struct {
        const char* name;
        End end;
        size_t streamedAfter;
    } cases[] = {{"StopCapture", &SimPlate::StopCapture, 10},
                 {"StopAcquisition", &SimPlate::StopAcquisition, 0},
                 {"AbortAcquisition", &SimPlate::AbortAcquisition, 0}};
    for (const auto& c : cases) {
        SimBench bench;
        SimPlate& plate = bench.plate("20418"); // 100 Hz
        ForcesRecorder recorder(plate, bench.clock);
        BlockRecorder block(plate);
        plate.StartAcquisition(true, false, true, false, true);
        bench.clock.advance(100);
        plate.StartCapture(true);
        bench.clock.advance(250);
        (plate.*c.end)();
        EXPECT_EQ(block.done, 0) << c.name;
        bench.clock.settle();
        ASSERT_EQ(block.done, 1) << c.name;
        EXPECT_EQ(block.count, 25) << c.name;
        ASSERT_EQ(recorder.samples.size(), 35u) << c.name;
        EXPECT_EQ(recorder.samples[10].number, 1) << c.name;
        for (int i = 0; i < 25; ++i)
            EXPECT_EQ(block.volts[i], recorder.samples[size_t(10 + i)].volts) << c.name;
        EXPECT_EQ(block.forces[24], recorder.samples[34].forces) << c.name;
        plate.StopCapture(); // nothing left to hand over
        bench.clock.advance(100);
        EXPECT_EQ(block.done, 1) << c.name;
        EXPECT_EQ(recorder.samples.size(), 35 + c.streamedAfter) << c.name;
    }
}

// Codes are offset-binary around mid-scale on firmware 1.x, signed around 0 on firmware 2.x.
TEST(SimAcquisition, ZeroReportsProgressThenStatisticsOfTheRawCodes) {
    SimBench bench(idealPlates());
    SimPlate& plate = bench.plate("20418");
    ZeroRecorder zero(plate);
    ZeroRecorder older(bench.plate("11093"));
    plate.CalibrateSelf();
    plate.StartZero(200, true, 30, 50);
    bench.plate("11093").StartZero(10, true);
    bench.clock.advance(1999);
    EXPECT_EQ(zero.done, 0);
    bench.clock.advance(1);
    ASSERT_EQ(zero.done, 1);
    const ZeroStatistics& z = zero.last;
    EXPECT_EQ(z.samples, 200);
    EXPECT_EQ(zero.progress, (QList<qint32>{20, 40, 60, 80, 100, 120, 140, 160, 180, 200}));
    ASSERT_EQ(z.average.size(), 4);
    const auto resting = SignalChain(plate.truth(), 1).restingCodes(5.0, plate.Temperature());
    for (int c = 0; c < 4; ++c) {
        // Noise of 120 codes at 100 Hz and 5 V; the standard error of 200 samples is ~8.5.
        EXPECT_NEAR(z.average[c], resting[size_t(c)], 40.0) << c;
        EXPECT_NEAR(z.deviation[c], 120.0, 18.0) << c;
        EXPECT_GT(z.range[c], 4 * z.deviation[c]) << c;
        EXPECT_LT(z.range[c], 8 * z.deviation[c]) << c;
        EXPECT_NEAR(z.average[c], 0.0, 300000.0);
        EXPECT_NEAR(older.last.average[c], 8388608.0, 300000.0);
    }
}

TEST(SimAcquisition, HandlersMayStartTheNextAcquisition) {
    SimBench bench;
    SimPlate& plate = bench.plate("20418");
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

TEST(SimAcquisition, SameSeedSameSamples) {
    const auto run = [](const Scenario& scenario) {
        SimBench bench(scenario);
        SimPlate& plate = bench.plate("20418");
        plate.loads().placePerson(70, 0.05, 0.2, PlateLoads::Stance::Swaying, plate.now());
        ForcesRecorder recorder(plate, bench.clock);
        plate.StartAcquisition(true, false, true, false, true);
        bench.clock.advance(3000);
        std::vector<Float3> forces;
        for (const auto& s : recorder.samples)
            forces.push_back(s.forces);
        return forces;
    };
    const auto first = run(Scenario::defaults());
    EXPECT_EQ(first.size(), 300u);
    EXPECT_EQ(run(Scenario::defaults()), first);
    Scenario reseeded = Scenario::defaults();
    reseeded.plates[0].seed += 1;
    EXPECT_NE(run(reseeded)[0], first[0]);
}

TEST(SimPhysics, ForcesAreTheStoredMatrixTimesTheVolts) {
    SimBench bench;
    for (const char* serial : {"20418", "11093"}) {
        SimPlate& plate = bench.plate(serial);
        plate.loads().placeWeight(40, 0.1, 0.3, plate.now());
        ForcesRecorder recorder(plate, bench.clock);
        plate.StartAcquisition(true, false, true, false, true);
        bench.clock.advance(1000);
        plate.StopAcquisition();
        ASSERT_FALSE(recorder.samples.empty());
        for (const auto& s : recorder.samples) {
            for (int r = 0; r < 3; ++r) {
                double expected = 0;
                for (int c = 0; c < 3; ++c)
                    expected += double(plate.MatrixElement(r, c)) * s.volts[size_t(c)];
                EXPECT_NEAR(s.forces[size_t(r)], expected, 1e-3 + 1e-5 * std::abs(expected));
            }
        }
    }
}

// Out of the box the site's gravity is the calibration's default, 9.796878 m/s².
TEST(SimPhysics, ASingleLoadPushesDownAtItsPosition) {
    ZeroedPlate p(idealPlates(), "20418");
    const struct { double kg, x, y; } cases[] = {{25, 0, 0}, {50, -0.35, -0.15}, {10, 0.2, 0.5}};
    for (const auto& c : cases) {
        const Means m = p.load(c.kg, c.x, c.y, 100);
        const double fz = m.forces[0];
        EXPECT_NEAR(fz, -c.kg * 9.796878, 0.02) << c.kg;
        EXPECT_NEAR(m.forces[1], fz * c.y, 0.02) << c.kg;  // Mx = Fz·y
        EXPECT_NEAR(m.forces[2], -fz * c.x, 0.02) << c.kg; // My = -Fz·x
    }
}

TEST(SimPhysics, ATonneClipsOnceAndTheStreamGoesOn) {
    SimBench bench;
    SimPlate& plate = bench.plate("20418");
    int clipped = 0;
    ForcesRecorder recorder(plate, bench.clock);
    QObject::connect(&plate, &PlateDevice::DataClipped, &recorder.context, [&] { ++clipped; });
    plate.StartAcquisition(true, false, true, false, true);
    bench.clock.advance(1000);
    plate.loads().placeWeight(1000, 0.0, 0.18, plate.now());
    bench.clock.advance(2000);
    EXPECT_EQ(clipped, 1) << "told once as the signal goes beyond range";
    const size_t before = recorder.samples.size();
    bench.clock.advance(1000);
    EXPECT_EQ(recorder.samples.size(), before + 100);
    plate.loads().removeAll(plate.now());
    bench.clock.advance(1000);
    plate.loads().placeWeight(1000, 0.0, 0.18, plate.now());
    bench.clock.advance(1000);
    EXPECT_EQ(clipped, 2) << "and again after it came back";
}

// The calibration's least squares, loads = C·signals over the grid, solved by QR: independent
// of the library's own algebra.
TEST(SimPhysics, CalibrationOverAGridRecoversTheHiddenMatrix) {
    SimBench bench;
    SimPlate& plate = bench.plate("11093");
    const double w = 25 * plate.loads().gravity();
    Eigen::Matrix<double, 9, 3> loads;
    Eigen::Matrix<double, 9, 3> signals;
    int row = 0;
    for (double x : {-0.3, 0.0, 0.3}) {
        for (double y : {-0.1, 0.2, 0.45}) {
            plate.loads().removeAll(plate.now());
            bench.clock.advance(1000);
            zeroPlate(bench, plate);
            plate.loads().placeWeight(25, x, y, plate.now());
            bench.clock.advance(1000);
            const Means m = measure(bench, plate, 128); // 2 s at 64 Hz
            for (double d : m.voltsDeviation)
                EXPECT_LE(d, 0.002);
            loads.row(row) << -w, -w * y, w * x;
            signals.row(row++) << m.volts[0], m.volts[1], m.volts[2];
        }
    }
    const Eigen::Matrix3d fitted = signals.colPivHouseholderQr().solve(loads).transpose();
    const Matrix3& truth = plate.truth().trueMatrix;
    // The weight lands a millimetre or two off each point: the moment rows are only as good
    // as the placement over the 0.6 m the grid spans, with three standard deviations' room.
    const double placement = 3 * plate.truth().imperfections.placementScatter / 0.6;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(fitted(r, c), truth[size_t(r)][size_t(c)],
                        (0.002 + (r > 0 ? placement : 0.0)) * std::abs(truth[0][size_t(c)]))
                << r << "," << c;
}

} // namespace
} // namespace kx::test
