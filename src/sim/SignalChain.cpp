#include "sim/SignalChain.h"

#include <algorithm>
#include <cmath>

namespace kx {

namespace {

// How much of the frequency transient each channel shows, and with which sign.
constexpr std::array<double, 4> FrequencyTransientShare{1.0, -0.8, 0.6, 0.3};
// After this many time constants a transient is below a thousandth of a code.
constexpr double SettledAfter = 40.0;

// start → end with time constant tau, `since` seconds after the start.
double relax(double start, double end, double since, double tau) {
    if (since >= SettledAfter * tau || tau <= 0)
        return end;
    return end + (start - end) * std::exp(-std::max(since, 0.0) / tau);
}

} // namespace

SignalChain::SignalChain(const PlateTruth& truth, quint64 noiseSeed)
    : m_truth(truth)
    , m_cells(truth.imperfections)
    , m_noise(truth.noiseCodes, truth.imperfections, noiseSeed)
    , m_calibratedAt(truth.ambientTemperature) {}

void SignalChain::setSampleFrequency(double hertz) {
    m_noise.setSampleFrequency(hertz);
}

void SignalChain::sampleFrequencyChanged(double seconds) {
    m_frequencyChangedAt = seconds;
}

void SignalChain::excitationChanged(double volts, double seconds) {
    m_heatingFrom = gaugeHeating(seconds);
    m_heatingTo = m_truth.imperfections.selfHeating * volts * volts;
    m_heatingSince = seconds;
}

void SignalChain::powerOn(double volts, double seconds) {
    excitationChanged(volts, seconds);
    m_heatingFrom = 0;
}

void SignalChain::setResolution(int bits) {
    m_shift = 24 - std::clamp(bits, 1, 24);
}

double SignalChain::gaugeHeating(double seconds) const {
    return relax(m_heatingFrom, m_heatingTo, seconds - m_heatingSince,
                 m_truth.imperfections.excitationSettling);
}

void SignalChain::passLoad(const Wrench& load, double seconds) {
    m_cells.pass(multiply(m_truth.sensitivity, Vector3{load.fz, load.mx, load.my}), seconds);
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

ConverterCodes SignalChain::convert(const Wrench& load, double excitation, double temperature,
                                    double seconds) {
    const std::array<double, 4> resting =
        restingCodes(excitation, temperature + gaugeHeating(seconds));
    const Vector3 bridge =
        m_cells.respond(multiply(m_truth.sensitivity, Vector3{load.fz, load.mx, load.my}), seconds);
    const std::array<double, 4> noise = m_noise.next(seconds, excitation);
    const double transient =
        relax(m_truth.imperfections.frequencyTransientCodes, 0.0, seconds - m_frequencyChangedAt,
              m_truth.imperfections.frequencySettling);
    ConverterCodes out;
    for (int c = 0; c < 4; ++c) {
        const double signal = c < 3 ? bridge[c] * excitation / CodeVolts : 0.0;
        const double value =
            resting[c] + signal + noise[c] + transient * FrequencyTransientShare[c];
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
