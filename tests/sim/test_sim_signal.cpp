#include "PlateMeasure.h"
#include "SimBench.h"
#include "sim/ConverterModel.h"
#include "sim/NoiseGenerator.h"
#include "sim/SignalChain.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

using kx::ConverterModel;
using kx::Float3;
using kx::Matrix3;
using kx::PlateDevice;
using kx::SimPlate;
using kx::Which;
using kx::test::ForcesRecorder;
using kx::test::measure;
using kx::test::SimBench;
using kx::test::zeroPlate;
using kx::test::ZeroRecorder;

namespace {

// The calibration's least squares, C = (L·Sᵀ)·(S·Sᵀ)⁻¹, with the inverse by cofactors,
// independent of the library's own algebra.
Matrix3 fit(const std::vector<std::array<double, 3>>& loads,
            const std::vector<std::array<double, 3>>& signals) {
    Matrix3 q{};
    Matrix3 p{};
    for (size_t k = 0; k < loads.size(); ++k)
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j) {
                q[i][j] += signals[k][i] * signals[k][j];
                p[i][j] += loads[k][i] * signals[k][j];
            }
    const auto cofactor = [&](int i, int j) {
        const int r0 = (i + 1) % 3, r1 = (i + 2) % 3, c0 = (j + 1) % 3, c1 = (j + 2) % 3;
        return q[r0][c0] * q[r1][c1] - q[r0][c1] * q[r1][c0];
    };
    const double det =
        q[0][0] * cofactor(0, 0) + q[0][1] * cofactor(0, 1) + q[0][2] * cofactor(0, 2);
    Matrix3 c{};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            for (int k = 0; k < 3; ++k)
                c[i][j] += p[i][k] * cofactor(j, k) / det; // inverse[k][j] = cofactor(j, k) / det
    return c;
}

} // namespace

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
    kx::NoiseGenerator random(42);
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

// Each sample arrives at the tick of its due time; a new start restarts the numbering.
TEST(SimAcquisition, StreamingIsPacedRestartsNumberingAndStopsQuietly) {
    SimBench bench;
    SimPlate& plate = bench.plate("11093");
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
    SimPlate& plate = bench.plate("20418"); // 100 Hz
    ForcesRecorder recorder(plate, bench.clock);
    kx::test::BlockRecorder block(plate);
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
}

// A real library hands back what it recorded when the stream ends under a capture.
TEST(SimAcquisition, StoppingTheStreamDuringACaptureDeliversTheBlock) {
    using Stop = void (SimPlate::*)();
    const struct {
        const char* name;
        Stop stop;
    } cases[] = {{"StopAcquisition", &SimPlate::StopAcquisition},
                 {"AbortAcquisition", &SimPlate::AbortAcquisition}};
    for (const auto& c : cases) {
        SimBench bench;
        SimPlate& plate = bench.plate("20418"); // 100 Hz
        kx::test::BlockRecorder block(plate);
        plate.StartAcquisition(true, false, true, false, true);
        plate.StartCapture(true);
        bench.clock.advance(300);
        (plate.*c.stop)();
        bench.clock.settle();
        EXPECT_EQ(block.done, 1) << c.name;
        EXPECT_EQ(block.count, 30) << c.name;
        plate.StopCapture(); // nothing left to hand over
        bench.clock.settle();
        EXPECT_EQ(block.done, 1) << c.name;
    }
}

// Codes are offset-binary around mid-scale on firmware 1.x, signed around 0 on firmware 2.x.
TEST(SimAcquisition, ZeroReportsProgressThenStatisticsOfTheRawCodes) {
    SimBench bench(kx::test::idealPlates());
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

TEST(SimAcquisition, SixtySecondsAtOneKilohertzDeliverEverySampleAndHoldTheZero) {
    SimBench bench;
    SimPlate& plate = bench.plate("20418");
    plate.SetSampleFrequency(Which::Current, 1000.0f);
    qint64 count = 0;
    double sumFz = 0;
    QObject context;
    QObject::connect(&plate, &PlateDevice::ForcesIn, &context,
                     [&](qint32 n, const Float3& f, const Float3&) {
                         count = n;
                         sumFz += f[0];
                     });
    plate.StartAcquisition(true, false, true, false, true);
    bench.clock.advance(60000);
    EXPECT_EQ(count, 60000);
    EXPECT_NEAR(sumFz / double(count), 0.0, 1.0); // the factory zero holds
}

TEST(SimAcquisition, SameSeedSameSamples) {
    const auto run = [](const kx::Scenario& scenario) {
        SimBench bench(scenario);
        SimPlate& plate = bench.plate("20418");
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

TEST(SimPhysics, ASingleLoadPushesDownAtItsPosition) {
    SimBench bench(kx::test::idealPlates());
    SimPlate& plate = bench.plate("20418");
    kx::test::storeTrueMatrix(plate);
    zeroPlate(bench, plate);
    const double g = plate.loads().gravity();
    const struct { double kg, x, y; } cases[] = {{25, 0, 0}, {50, -0.35, -0.15}, {10, 0.2, 0.5}};
    for (const auto& c : cases) {
        plate.loads().removeAll(plate.now());
        bench.clock.advance(1000);
        plate.loads().placeWeight(c.kg, c.x, c.y, plate.now());
        bench.clock.advance(1000);
        const auto m = measure(bench, plate, 100);
        const double fz = m.forces[0];
        EXPECT_NEAR(fz, -c.kg * g, 0.01 * c.kg * g + 0.5) << c.kg;
        EXPECT_NEAR(m.forces[1], fz * c.y, 0.5) << c.kg; // Mx = Fz·y
        EXPECT_NEAR(m.forces[2], -fz * c.x, 0.5);        // My = -Fz·x
        EXPECT_NEAR(-m.forces[2] / fz, c.x, 0.002);      // centre of pressure
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

TEST(SimPhysics, CalibrationOverAGridRecoversTheHiddenMatrix) {
    SimBench bench;
    SimPlate& plate = bench.plate("11093");
    const double w = 25 * plate.loads().gravity();
    std::vector<std::array<double, 3>> loads;
    std::vector<std::array<double, 3>> signals;
    for (double x : {-0.3, 0.0, 0.3}) {
        for (double y : {-0.1, 0.2, 0.45}) {
            plate.loads().removeAll(plate.now());
            bench.clock.advance(1000);
            zeroPlate(bench, plate);
            plate.loads().placeWeight(25, x, y, plate.now());
            bench.clock.advance(1000);
            const auto m = measure(bench, plate, 128); // 2 s at 64 Hz
            for (double d : m.voltsDeviation)
                EXPECT_LE(d, 0.002);
            loads.push_back({-w, -w * y, w * x});
            signals.push_back(m.volts);
        }
    }
    const Matrix3 fitted = fit(loads, signals);
    const Matrix3& truth = plate.truth().trueMatrix;
    // The weight lands a millimetre or two off each point: the moment rows are only as good
    // as the placement over the 0.6 m the grid spans, with three standard deviations' room.
    const double placement = 3 * plate.truth().imperfections.placementScatter / 0.6;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(fitted[r][c], truth[r][c],
                        (0.002 + (r > 0 ? placement : 0.0)) * std::abs(truth[0][c]))
                << r << "," << c;
}
