#include "SimBench.h"
#include "sim/SignalChain.h"

#include <cmath>
#include <gtest/gtest.h>

using kx::ChannelValues;
using kx::Float3;
using kx::Matrix3;
using kx::PlateDevice;
using kx::SimPlate;
using kx::Which;
using kx::test::ForcesRecorder;
using kx::test::SimBench;

namespace {

// Takes a zero on the unloaded plate and writes its averages as the current zero values, as
// the zero dialogs do.
void zeroPlate(SimBench& bench, SimPlate& plate) {
    kx::test::ZeroRecorder zero(plate);
    plate.CalibrateSelf();
    plate.StartZero(200, true, 30, 50);
    bench.clock.advance(10000);
    ASSERT_EQ(zero.average.size(), 4);
    for (int c = 0; c < 3; ++c)
        plate.SetZeroValue(c, Which::Current, qint32(std::lround(zero.average[c])));
}

// Mean volts and forces of a test block of `samples`.
struct Means {
    std::array<double, 3> volts{};
    std::array<double, 3> forces{};
    std::array<double, 3> voltsDeviation{};
};

Means measure(SimBench& bench, SimPlate& plate, int samples) {
    kx::test::BlockRecorder block(plate);
    plate.StartTest(samples, true, true, false, 0, true);
    bench.clock.advance(qint64(samples * 1000.0 / plate.SampleFrequency(Which::Current)) + 1);
    Means m;
    EXPECT_EQ(block.volts.size(), samples);
    for (int c = 0; c < 3; ++c) {
        double sum = 0;
        double sumSq = 0;
        for (int i = 0; i < block.volts.size(); ++i) {
            sum += block.volts[i][c];
            sumSq += double(block.volts[i][c]) * block.volts[i][c];
            m.forces[c] += block.forces[i][c] / double(samples);
        }
        m.volts[c] = sum / samples;
        m.voltsDeviation[c] = std::sqrt(std::abs(sumSq - sum * sum / samples) / (samples - 1));
    }
    return m;
}

void storeMatrix(SimPlate& plate, const Matrix3& m) {
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            plate.SetMatrixElement(r, c, float(m[r][c]));
}

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
    SimBench bench;
    SimPlate& plate = bench.plate("20418");
    storeMatrix(plate, plate.truth().trueMatrix);
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

TEST(SimPhysics, FactoryCalibrationReadsNearZeroUnloadedAndNearTheWeightLoaded) {
    SimBench bench;
    for (const char* serial : {"20418", "11093"}) {
        SimPlate& plate = bench.plate(serial);
        const auto unloaded = measure(bench, plate, 200);
        EXPECT_NEAR(unloaded.forces[0], 0.0, 2.0) << serial;
        plate.loads().placeWeight(25, 0.0, 0.2, plate.now());
        bench.clock.advance(500);
        const auto loaded = measure(bench, plate, 200);
        EXPECT_NEAR(loaded.forces[0], -25 * 9.80665, 5.0) << serial;
        // 25 kg reads clearly on every cell, far below the noise limit of a calibration.
        for (int c = 0; c < 3; ++c) {
            EXPECT_GT(loaded.volts[size_t(c)] - unloaded.volts[size_t(c)], 0.03) << serial;
            EXPECT_LT(loaded.voltsDeviation[size_t(c)], 0.0002) << serial;
        }
    }
}

TEST(SimPhysics, ReversedExcitationKeepsTheNormalisedVolts) {
    SimBench bench;
    SimPlate& plate = bench.plate("20418");
    plate.loads().placeWeight(25, 0.1, 0.1, plate.now());
    bench.clock.advance(500);
    std::array<double, 3> loaded[2];
    for (float volts : {5.0f, -5.0f}) {
        plate.SetGageVoltage(Which::Current, volts);
        zeroPlate(bench, plate); // the offsets move with the excitation; zero with the weight on
        plate.loads().removeAll(plate.now());
        bench.clock.advance(500);
        loaded[volts < 0] = measure(bench, plate, 200).volts;
        plate.loads().placeWeight(25, 0.1, 0.1, plate.now());
        bench.clock.advance(500);
    }
    for (int c = 0; c < 3; ++c) {
        EXPECT_LT(loaded[0][size_t(c)], -0.03);
        EXPECT_NEAR(loaded[1][size_t(c)], loaded[0][size_t(c)], 0.0005);
    }
}

TEST(SimPhysics, ClearedMatrixAndZeroStillReportVolts) {
    SimBench bench;
    SimPlate& plate = bench.plate("20418");
    for (int c = 0; c < 3; ++c)
        plate.SetZeroValue(c, Which::Current, 0);
    storeMatrix(plate, Matrix3{});
    const auto m = measure(bench, plate, 50);
    for (int c = 0; c < 3; ++c) {
        EXPECT_EQ(m.forces[size_t(c)], 0.0);
        // Raw offsets in normalised volts: small and not zero.
        EXPECT_LT(std::abs(m.volts[size_t(c)]), 0.2);
        EXPECT_GT(std::abs(m.volts[size_t(c)]), 1e-6);
    }
    // The repair value of the main window and a zero excitation are accepted too.
    for (float volts : {0.01f, 0.0f}) {
        plate.SetGageVoltage(Which::Current, volts);
        EXPECT_EQ(plate.GageVoltage(Which::Current), volts);
        const auto small = measure(bench, plate, 10);
        for (double v : small.volts)
            EXPECT_TRUE(std::isfinite(v));
    }
}

TEST(SimPhysics, ATonneClipsAndStopsTheAcquisition) {
    SimBench bench;
    for (const char* serial : {"20418", "11093"}) {
        SimPlate& plate = bench.plate(serial);
        int clipped = 0;
        ForcesRecorder recorder(plate, bench.clock);
        QObject::connect(&plate, &PlateDevice::DataClipped, &recorder.context, [&] { ++clipped; });
        plate.StartAcquisition(true, false, true, false, true);
        bench.clock.advance(1000);
        plate.loads().placeWeight(1000, 0.0, 0.18, plate.now());
        bench.clock.advance(2000);
        EXPECT_EQ(clipped, 1) << serial;
        const size_t before = recorder.samples.size();
        bench.clock.advance(1000);
        EXPECT_EQ(recorder.samples.size(), before) << serial;
        plate.loads().removeAll(plate.now());
    }
}

TEST(SimPhysics, CalibrationOverAGridRecoversTheHiddenMatrix) {
    SimBench bench;
    SimPlate& plate = bench.plate("11093");
    const double g = plate.loads().gravity();
    const double w = 25 * g;
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
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(fitted[r][c], truth[r][c], 0.002 * std::abs(truth[0][c])) << r << "," << c;
}

TEST(SimPhysics, ZeroDriftsSlowlyAsThePlateWarmsUp) {
    SimBench bench;
    SimPlate& plate = bench.plate("20418");
    plate.SetSampleFrequency(Which::Current, 1000.0f);
    const auto zeroNow = [&] {
        kx::test::ZeroRecorder zero(plate);
        plate.StartZero(60000, true, 30, 500); // a minute: standard error ~0.6 codes
        bench.clock.advance(60000);
        return zero.average;
    };
    const ChannelValues cold = zeroNow();
    bench.clock.advance(3 * 3600 * 1000);
    const ChannelValues warm = zeroNow();
    double largest = 0;
    for (int c = 0; c < 4; ++c) {
        EXPECT_LT(std::abs(warm[c] - cold[c]), 500.0) << c;
        largest = std::max(largest, std::abs(warm[c] - cold[c]));
    }
    EXPECT_GT(largest, 20.0);
}

TEST(SimPhysics, UnpoweredBridgesCarryNoSignal) {
    SimBench bench;
    SimPlate& plate = bench.plate("20418");
    plate.SetPowerOn(0, false);
    const auto empty = measure(bench, plate, 100);
    plate.loads().placeWeight(50, 0.1, 0.1, plate.now());
    bench.clock.advance(500);
    const auto loaded = measure(bench, plate, 100);
    for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(loaded.volts[size_t(c)], empty.volts[size_t(c)], 1e-4);
}
