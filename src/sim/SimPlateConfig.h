#pragma once

#include "sim/ConverterModel.h"
#include "sim/Matrix3.h"
#include "sim/SimImperfections.h"

#include <QString>
#include <QtGlobal>
#include <optional>

namespace kx {

// The site's gravity unless a scenario sets another: the calibration's default, so that a
// calibration out of the box recovers a plate's matrix.
constexpr double DefaultSiteGravity = 9.796878; // m/s²

// What a scenario (or the default set-up) says about one simulated plate. Everything not
// given here is drawn from the seed: the hidden sensitivity, offsets, drifts and the values
// stored in the plate at the factory.
struct SimPlateConfig {
    QString serial;
    quint8 firmwareMajor = 2;
    quint8 firmwareMinor = 0;
    quint64 seed = 1;
    // RMS converter noise in codes at 100 Hz and 5 V excitation; it grows with the square
    // root of the sampling frequency.
    double noiseCodes = 120;
    // The hidden true matrix, (Fz, Mx, My) = matrix × normalised bridge volts, in N or N·m per
    // volt at 1 V excitation; drawn from the seed when absent.
    std::optional<Matrix3> trueMatrix;
    double gageVoltage = 5.0;       // power-on default, V
    double sampleFrequency = 100.0; // power-on default, Hz
    // The converter's modulator clock; a slow one reaches sampling rates below 9 Hz.
    double modulatorRate = ConverterModel::StandardModulatorRate; // Hz
    double ambientTemperature = 22.0;
    // A calibrated plate leaves the factory with a matrix close to the true one, zero values
    // close to its offsets and a calibration record; an uncalibrated one holds zeros.
    bool calibrated = true;
    bool plugged = true;
    SimImperfections imperfections;

    // A seed of the plate's own for a serial number: the number itself when it is one (the
    // default plates' seeds), else a hash of it; plates with different serial numbers get
    // different seeds.
    static quint64 seedFor(const QString& serial);
};

} // namespace kx
