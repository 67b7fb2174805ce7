#pragma once

#include "SimBench.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>

namespace kx::test {

// A zero of `samples` at the plate's current frequency, taken now.
inline ZeroStatistics takeZero(SimBench& bench, SimPlate& plate, qint32 samples) {
    ZeroRecorder zero(plate);
    plate.CalibrateSelf();
    plate.StartZero(samples, true);
    bench.clock.advance(qint64(samples * 1000.0 / plate.SampleFrequency(Which::Current)) + 10);
    EXPECT_EQ(zero.done, 1);
    return zero.last;
}

// Takes a zero on the unloaded plate and writes its averages as the current zero values, as
// the zero dialogs do.
inline void zeroPlate(SimBench& bench, SimPlate& plate) {
    const ZeroStatistics zero = takeZero(bench, plate, 200);
    for (int c = 0; c < 3; ++c)
        plate.SetZeroValue(c, Which::Current, qint32(std::lround(zero.average[c])));
}

// Mean volts and forces of a test block of `samples` taken now, and the deviation of the
// volts.
struct Means {
    std::array<double, 3> volts{};
    std::array<double, 3> forces{};
    std::array<double, 3> voltsDeviation{};

    double copX() const { return -forces[2] / forces[0]; }
    double copY() const { return forces[1] / forces[0]; }
};

inline Means measure(SimBench& bench, SimPlate& plate, int samples) {
    BlockRecorder block(plate);
    plate.CalibrateSelf(); // as the dialogs do before every acquisition
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
            m.forces[size_t(c)] += block.forces[i][c] / double(samples);
        }
        m.volts[size_t(c)] = sum / samples;
        m.voltsDeviation[size_t(c)] =
            std::sqrt(std::abs(sumSq - sum * sum / samples) / (samples - 1));
    }
    return m;
}

// A bench of one plate with serial 1 and these imperfections.
inline Scenario onePlate(const SimImperfections& imperfections, double noiseCodes = 120) {
    Scenario scenario;
    SimPlateConfig plate;
    plate.serial = QStringLiteral("1");
    plate.seed = 20418;
    plate.noiseCodes = noiseCodes;
    plate.imperfections = imperfections;
    scenario.plates = {plate};
    return scenario;
}

// A plate that reads its loads through its hidden true matrix, zeroed while unloaded.
struct ZeroedPlate {
    explicit ZeroedPlate(const Scenario& scenario, const char* serial = "1")
        : bench(scenario)
        , plate(bench.plate(serial)) {
        for (int r = 0; r < 3; ++r)
            for (int c = 0; c < 3; ++c)
                plate.SetMatrixElement(r, c, float(plate.truth().trueMatrix[size_t(r)][size_t(c)]));
        zeroPlate(bench, plate);
    }

    // Empties the plate, puts `kg` at (x, y) and measures once it has settled.
    Means load(double kg, double x, double y, int samples) {
        plate.loads().removeAll(plate.now());
        bench.clock.advance(300);
        plate.loads().placeWeight(kg, x, y, plate.now());
        bench.clock.advance(300);
        return measure(bench, plate, samples);
    }

    SimBench bench;
    SimPlate& plate;
};

} // namespace kx::test
