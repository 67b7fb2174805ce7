#pragma once

#include "sim/Matrix3.h"
#include "sim/SimImperfections.h"

#include <array>

namespace kx {

struct SimPlateConfig;

// The physical properties of one simulated plate, hidden from the program: they are what a
// calibration and a zero measure. Converter channels 1 to 3 carry the bridges; channel 4 is a
// spare input with an offset and noise only.
struct PlateTruth {
    // (Fz, Mx, My) = trueMatrix × (V1, V2, V3), volts normalised to 1 V excitation.
    Matrix3 trueMatrix{};
    // Its inverse: normalised bridge volts per newton or newton-metre.
    Matrix3 sensitivity{};
    std::array<double, 4> converterOffset{}; // codes
    std::array<double, 4> converterDrift{};  // codes per °C, removed by a converter calibration
    std::array<double, 4> bridgeImbalance{}; // normalised volts
    std::array<double, 4> bridgeDrift{};     // normalised volts per °C
    double noiseCodes = 0;                   // RMS at 100 Hz and 5 V
    double ambientTemperature = 22.0;        // °C
    double warmUpRise = 4.0;                 // °C above ambient once warm
    double warmUpTime = 900.0;               // s, time constant
    SimImperfections imperfections;

    // Plate temperature after `seconds` powered on.
    double temperature(double seconds) const;

    // Draws the properties the configuration leaves open from its seed.
    static PlateTruth generate(const SimPlateConfig& config);
};

} // namespace kx
