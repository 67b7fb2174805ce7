#pragma once

#include "sim/NoiseGenerator.h"
#include "sim/PlateLoads.h"
#include "sim/PlateTruth.h"

#include <QtGlobal>
#include <array>

namespace kx {

// Four converter channels after one conversion, as signed 24-bit codes.
struct ConverterCodes {
    std::array<qint32, 4> codes{};
    bool clipped = false; // some channel went beyond the converter's range
};

// The bridges and the converter of one plate: loads through the hidden sensitivity, scaled by
// the excitation, plus offsets, temperature drift and noise, then clipped to the converter's
// range and quantised to its resolution. One code is 10 V / 2^24 at the converter input.
class SignalChain {
public:
    static constexpr double CodeVolts = 10.0 / 16777216.0;
    static constexpr qint32 MinCode = -8388608;
    static constexpr qint32 MaxCode = 8388607;

    SignalChain(const PlateTruth& truth, quint64 noiseSeed);

    // The noise bandwidth follows the sampling frequency of the running acquisition.
    void setSampleFrequency(double hertz);
    // 1 to 24 bits: codes are truncated to multiples of 2^(24 - bits).
    void setResolution(int bits);
    // A converter offset calibration removes the converter's drift at this temperature.
    void calibrateConverter(double temperature) { m_calibratedAt = temperature; }

    // One conversion. `excitation` is the bridge excitation in volts (negative: reversed
    // polarity, 0: bridges unpowered).
    ConverterCodes convert(const Wrench& load, double excitation, double temperature);

    // The noiseless codes of the unloaded plate.
    std::array<double, 4> restingCodes(double excitation, double temperature) const;

private:
    const PlateTruth& m_truth;
    NoiseGenerator m_noise;
    double m_noiseScale = 1;
    int m_shift = 0;
    double m_calibratedAt;
};

} // namespace kx
