// The simulated plates out of the box: a good plate on a good rig, and the same samples at
// any speed of time.
#include "SimBench.h"
#include "sim/MatrixErrors.h"
#include "support/ScaledClock.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace kx::test {
namespace {

constexpr double Newtons = 25 * DefaultSiteGravity;

Matrix3 scaledRow(Matrix3 m, std::size_t row, double factor) {
    for (double& cell : m[row])
        cell *= factor;
    return m;
}

// Root mean square of |coordinate| over an interval, for a load spread evenly over it.
double rmsOver(double from, double to) {
    return std::sqrt((to * to * to - from * from * from) / (3 * (to - from)));
}

TEST(MatrixErrors, WhatAStoredMatrixGetsWrongOverTheTop) {
    const Matrix3 truth = SimBench().plate("20418").truth().trueMatrix;
    const PlateTop top;

    const std::optional<MatrixErrors> exact = MatrixErrors::overTop(truth, truth, Newtons);
    ASSERT_TRUE(exact);
    EXPECT_NEAR(exact->copWorst, 0, 1e-12);
    EXPECT_NEAR(exact->fzWorst, 0, 1e-9);

    // Mx a thousandth high: CoPy = Mx / Fz reads a thousandth of y too far from the origin.
    const std::optional<MatrixErrors> mx =
        MatrixErrors::overTop(truth, scaledRow(truth, 1, 1.001), Newtons);
    ASSERT_TRUE(mx);
    EXPECT_NEAR(mx->copRms, 0.001 * rmsOver(top.bottom, top.top), 3e-6) << "a 1 cm grid";
    EXPECT_NEAR(mx->copWorst, 0.001 * top.top, 1e-9);
    EXPECT_NEAR(mx->fzWorst, 0, 1e-9);

    // Fz two thousandths high: every load weighs that much more, and the centre of pressure
    // is pulled towards the origin by 0.002 / 1.002 of its distance.
    const std::optional<MatrixErrors> fz =
        MatrixErrors::overTop(truth, scaledRow(truth, 0, 1.002), Newtons);
    ASSERT_TRUE(fz);
    EXPECT_NEAR(fz->fzRms, 0.002 * Newtons, 1e-9);
    EXPECT_NEAR(fz->fzWorst, 0.002 * Newtons, 1e-9);
    EXPECT_NEAR(fz->copWorst, std::hypot(top.left, top.top) * 0.002 / 1.002, 1e-9);

    EXPECT_FALSE(MatrixErrors::overTop(truth, Matrix3{}, Newtons)) << "an uncalibrated plate";
    EXPECT_FALSE(MatrixErrors::overTop(truth, scaledRow(truth, 0, -1), Newtons)) << "lifts";
}

// Well within a plate's stated tolerance, yet far enough off that a calibration on site shows.
TEST(SimDefaults, TheFactoryMatrixIsOneToTwoMillimetresOffOverTheTop) {
    Scenario plates = Scenario::defaults();
    for (const quint64 seed : {1ull, 7ull, 65535ull}) {
        SimPlateConfig other = plates.plates[0];
        other.serial = QString::number(seed);
        other.seed = seed;
        plates.plates.append(other);
    }
    SimBench bench(plates);
    for (SimPlate* plate : bench.driver.plates()) {
        const std::optional<MatrixErrors> factory =
            MatrixErrors::overTop(plate->truth().trueMatrix, plate->storedMatrix(), Newtons);
        ASSERT_TRUE(factory) << plate->serial().toStdString();
        EXPECT_GE(factory->copRms, 0.001) << plate->serial().toStdString();
        EXPECT_LE(factory->copRms, 0.002) << plate->serial().toStdString();
    }
}

// Everything a streaming plate sends over a minute in which a weight is put on, a zero taken
// and the frequency changed, on a clock at `speed`, sped up to ×1000 half-way when asked.
std::vector<ForcesRecorder::Sample> minuteOfSamples(double speed, bool speedUpHalfWay = false) {
    ManualClock wall;
    ScaledClock clock(wall, speed);
    SimDriver driver(clock, SimDriver::Pacing::Batched);
    Scenario::defaults().applyTo(driver);
    driver.OpenDevices(PlateVendorId, PlateProductId1, PlateProductId2);
    SimPlate& plate = *driver.plate(QStringLiteral("20418"));
    ForcesRecorder forces(plate, clock);
    QObject actions;
    const auto at = [&](int ms, std::function<void()> action) {
        clock.singleShot(ms, &actions, std::move(action));
    };
    at(10, [&] { plate.StartAcquisition(true, true, true, true, true); });
    at(5000, [&] { plate.placeWeight(25, 0.1, 0.2); });
    at(20000, [&] { plate.StartZero(500, true); });
    at(30000, [&] {
        plate.SetSampleFrequency(Which::Current, 1000);
        plate.StartAcquisition(true, true, true, true, true);
    });
    if (speedUpHalfWay)
        at(30000, [&] { clock.setSpeed(1000); });
    wall.advance(qint64(61000 / speed) + 100); // past the minute at any speed
    const quint32 start = forces.samples.front().tick;
    std::erase_if(forces.samples, [start](const ForcesRecorder::Sample& s) {
        return quint32(s.tick - start) > 60000;
    });
    return forces.samples;
}

bool sameSamples(const std::vector<ForcesRecorder::Sample>& a,
                 const std::vector<ForcesRecorder::Sample>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& x, const auto& y) {
        return x.number == y.number && x.forces == y.forces && x.volts == y.volts &&
               x.tick == y.tick;
    });
}

TEST(SimAtSpeed, TheSameSamplesArriveAtTheSameTimesAtEverySpeed) {
    const std::vector<ForcesRecorder::Sample> realTime = minuteOfSamples(1);
    ASSERT_GT(realTime.size(), 20u * 100 + 30u * 1000 - 100);
    EXPECT_TRUE(sameSamples(realTime, minuteOfSamples(1000)));
    EXPECT_TRUE(sameSamples(realTime, minuteOfSamples(10, true)));
}

} // namespace
} // namespace kx::test
