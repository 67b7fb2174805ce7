#pragma once

#include "sim/NoiseGenerator.h"
#include "sim/SimImperfections.h"

#include <QtGlobal>
#include <array>

namespace kx {

// The noise of the four converter channels, in codes: a flat density that sets `noiseCodes`
// RMS at 100 Hz (so it grows with the square root of the sampling frequency), a 1/f part
// below the flicker corner, each channel at its own level, and mains hum on the bridge
// channels as the converter's sinc³ filter passes it. The 1/f part is a sum of three
// first-order processes a decade apart, which keeps it cheap and independent of the rate.
class ConverterNoise {
public:
    ConverterNoise(double noiseCodes, const SimImperfections& imperfections, quint64 seed);

    void setSampleFrequency(double hertz);

    // One sample's noise at `seconds`. The bridges and their amplifier add a little with the
    // excitation (volts).
    std::array<double, 4> next(double seconds, double excitation);

private:
    static constexpr int Poles = 3;

    NoiseGenerator m_random;
    double m_noiseCodes;
    std::array<double, 4> m_level;
    double m_flickerCodes; // RMS of each pole at unit level
    std::array<double, 4> m_humCodes;
    double m_humFrequency;
    double m_whiteScale = 1;
    double m_humGain = 1;
    std::array<double, Poles> m_decay{};
    std::array<double, Poles> m_innovation{};
    std::array<std::array<double, Poles>, 4> m_state{};
};

} // namespace kx
