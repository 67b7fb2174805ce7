#include "sim/PlateTruth.h"

#include "sim/NoiseGenerator.h"
#include "sim/SimPlateConfig.h"

#include <algorithm>
#include <cmath>

namespace kx {

namespace {

// The plate top rests on three load cells; a cell's bridge gives about 1 mV/V per kN, which
// the input amplifier raises to 1 normalised volt per kN. So 25 kg reads about 0.08 V per
// cell, and at 5 V excitation a cell clips above roughly 1 kN (1000 kg on the plate clips).
// The cells stand under a frame well outside the top, so that each carries at least 8 % of
// a load anywhere on the top: the three bridge signals stay positive despite cross-talk.
constexpr double CellSensitivity = 1e-3; // normalised V per N
constexpr std::array<std::array<double, 2>, 3> CellPositions{
    {{-1.2, -0.4}, {1.2, -0.4}, {0.0, 1.55}}};

// With loads W_i at (x_i, y_i): Fz = -ΣW, Mx = Fz·y, My = -Fz·x. A cell at (xc, yc) that
// carries s_c gives V_c = k_c·s_c, and statics give Fz = -Σs, Mx = -Σs·yc, My = Σs·xc.
Matrix3 cellMatrix(const std::array<double, 3>& gain, const std::array<Vector3, 2>& position) {
    Matrix3 m{};
    for (int c = 0; c < 3; ++c) {
        m[0][c] = -1.0 / gain[c];
        m[1][c] = -position[1][c] / gain[c];
        m[2][c] = position[0][c] / gain[c];
    }
    return m;
}

} // namespace

double PlateTruth::temperature(double seconds) const {
    return ambientTemperature + warmUpRise * (1.0 - std::exp(-std::max(seconds, 0.0) / warmUpTime));
}

PlateTruth PlateTruth::generate(const SimPlateConfig& config) {
    NoiseGenerator random(config.seed);
    PlateTruth truth;
    if (config.trueMatrix) {
        truth.trueMatrix = *config.trueMatrix;
    } else {
        std::array<double, 3> gain{};
        std::array<Vector3, 2> position{};
        for (int c = 0; c < 3; ++c) {
            gain[c] = CellSensitivity * (1.0 + 0.03 * random.normal());
            position[0][c] = CellPositions[c][0] + 0.003 * random.normal();
            position[1][c] = CellPositions[c][1] + 0.003 * random.normal();
        }
        // A percent or so of cross-talk between the bridges.
        Matrix3 crossTalk{};
        for (int r = 0; r < 3; ++r)
            for (int c = 0; c < 3; ++c)
                crossTalk[r][c] = (r == c ? 1.0 : 0.0) + 0.01 * random.normal();
        truth.trueMatrix = multiply(cellMatrix(gain, position), crossTalk);
    }
    // A configured matrix has been checked by the reader; a drawn one is never singular.
    truth.sensitivity = inverse(truth.trueMatrix).value_or(Matrix3{});
    for (int c = 0; c < 4; ++c) {
        truth.converterOffset[c] = 15000.0 * random.normal();
        truth.converterDrift[c] = 8.0 * random.normal();
        truth.bridgeImbalance[c] = c < 3 ? 0.01 * random.normal() : 0.0;
        // Of either sign, never so small that the warm-up could not be seen.
        const double drift = random.normal();
        truth.bridgeDrift[c] =
            c < 3 ? std::copysign(config.imperfections.thermalZero * (0.6 + 0.4 * std::abs(drift)),
                                  drift)
                  : 0.0;
    }
    truth.noiseCodes = config.noiseCodes;
    truth.ambientTemperature = config.ambientTemperature;
    truth.warmUpRise = 4.0 + 0.5 * random.normal();
    truth.imperfections = config.imperfections;
    return truth;
}

} // namespace kx
