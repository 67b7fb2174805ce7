#pragma once

#include "sim/ConverterNoise.h"
#include "sim/LoadCells.h"
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

// The bridges and the converter of one plate: loads through the hidden sensitivity and the
// load cells, scaled by the excitation, plus offsets, temperature drift, the settling after
// a change of excitation or sampling frequency, and noise; then clipped to the converter's
// range and quantised to its resolution. One code is 10 V / 2^24 at the converter input.
// Times are seconds on the driver's timeline.
class SignalChain {
public:
    static constexpr double CodeVolts = 10.0 / 16777216.0;
    static constexpr qint32 MinCode = -8388608;
    static constexpr qint32 MaxCode = 8388607;

    SignalChain(const PlateTruth& truth, quint64 noiseSeed);

    // The noise bandwidth follows the sampling frequency of the running acquisition.
    void setSampleFrequency(double hertz);
    // The converter was set to another sampling frequency at `seconds`: its zero settles.
    void sampleFrequencyChanged(double seconds);
    // The bridges were switched to `volts` at `seconds`: the gauges warm or cool towards
    // their new temperature. At power-on they start at the plate's temperature.
    void excitationChanged(double volts, double seconds);
    void powerOn(double volts, double seconds);
    // 1 to 24 bits: codes are truncated to multiples of 2^(24 - bits).
    void setResolution(int bits);
    // A converter offset calibration removes the converter's drift at this temperature.
    void calibrateConverter(double temperature) { m_calibratedAt = temperature; }

    // One conversion at `seconds`. `excitation` is the bridge excitation in volts (negative:
    // reversed polarity, 0: bridges unpowered); `temperature` the plate's.
    ConverterCodes convert(const Wrench& load, double excitation, double temperature,
                           double seconds);

    // The plate held `load` for a moment at `seconds`, between samples.
    void passLoad(const Wrench& load, double seconds);

    // The noiseless codes of the unloaded plate with its gauges at `temperature`.
    std::array<double, 4> restingCodes(double excitation, double temperature) const;

    // How far the gauges are above the plate's temperature at `seconds`, °C.
    double gaugeHeating(double seconds) const;

private:
    const PlateTruth& m_truth;
    LoadCells m_cells;
    ConverterNoise m_noise;
    int m_shift = 0;
    double m_calibratedAt;
    double m_heatingFrom = 0;
    double m_heatingTo = 0;
    double m_heatingSince = 0;
    double m_frequencyChangedAt = -1e300;
};

} // namespace kx
