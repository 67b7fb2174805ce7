#pragma once

#include "sim/SimPlateConfig.h"

namespace kx::test {

// The local gravity of the calibration profile's defaults: 25 kg on the simulated plate then
// weighs exactly the profile's calibration load.
inline constexpr double ProfileGravity = 9.796878;
inline constexpr double CalibrationKilograms = 25.0;

// The plate every calibration test runs on: uncalibrated, its hidden matrix drawn from a fixed
// seed, ideal apart from white converter noise so that the fit must recover it closely.
inline SimPlateConfig calibrationPlateConfig() {
    SimPlateConfig config;
    config.serial = QStringLiteral("30417");
    config.seed = 7;
    config.calibrated = false;
    config.imperfections = SimImperfections::none();
    return config;
}

} // namespace kx::test
