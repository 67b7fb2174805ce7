#include "sim/SignalChain.h"

#include <algorithm>
#include <cmath>

namespace kx {

SignalChain::SignalChain(const PlateTruth& truth, quint64 noiseSeed)
    : m_truth(truth)
    , m_noise(noiseSeed)
    , m_calibratedAt(truth.ambientTemperature) {}

void SignalChain::setSampleFrequency(double hertz) {
    m_noiseScale = std::sqrt(std::max(hertz, 0.0) / 100.0);
}

void SignalChain::setResolution(int bits) {
    m_shift = 24 - std::clamp(bits, 1, 24);
}

std::array<double, 4> SignalChain::restingCodes(double excitation, double temperature) const {
    std::array<double, 4> codes{};
    for (int c = 0; c < 4; ++c) {
        const double bridge =
            m_truth.bridgeImbalance[c] + m_truth.bridgeDrift[c] * (temperature - 25.0);
        codes[c] = m_truth.converterOffset[c] +
                   m_truth.converterDrift[c] * (temperature - m_calibratedAt) +
                   bridge * excitation / CodeVolts;
    }
    return codes;
}

ConverterCodes SignalChain::convert(const Wrench& load, double excitation, double temperature) {
    const std::array<double, 4> resting = restingCodes(excitation, temperature);
    const Vector3 bridge = multiply(m_truth.sensitivity, Vector3{load.fz, load.mx, load.my});
    // Mostly converter noise; the bridges and amplifier add a little with the excitation.
    const double sigma = m_truth.noiseCodes * m_noiseScale * (0.8 + 0.04 * std::abs(excitation));
    ConverterCodes out;
    for (int c = 0; c < 4; ++c) {
        const double signal = c < 3 ? bridge[c] * excitation / CodeVolts : 0.0;
        const double value = resting[c] + signal + sigma * m_noise.normal();
        const double clamped = std::clamp(value, MinCode - 0.5, MaxCode + 0.5);
        out.clipped = out.clipped || clamped != value;
        // Rounded half away from zero without a library call: this runs four times a sample.
        const auto code = static_cast<qint32>(clamped + (clamped < 0 ? -0.5 : 0.5));
        // Masking the low bits truncates towards minus infinity, as the converter does.
        out.codes[c] = std::clamp(code, MinCode, MaxCode) & -(qint32(1) << m_shift);
    }
    return out;
}

} // namespace kx
