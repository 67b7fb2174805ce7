#include "sim/ConverterNoise.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kx {

namespace {

constexpr double TwoPi = 2 * std::numbers::pi;
constexpr double Sqrt3 = std::numbers::sqrt3;
// The corners of the three processes that make up the 1/f part, a decade apart: together
// they give a 1/f density from about 0.01 Hz to a few hertz, where the flat part takes over.
constexpr std::array<double, 3> PoleHertz{0.02, 0.2, 2.0};
// The rate at which the plate's noise setting holds.
constexpr double ReferenceHertz = 100.0;

// The converter's sinc³ decimation filter at `hertz` for a sampling frequency `sampling`.
double sincCubed(double hertz, double sampling) {
    const double x = std::numbers::pi * hertz / sampling;
    const double sinc = x == 0 ? 1.0 : std::sin(x) / x;
    return std::abs(sinc * sinc * sinc);
}

} // namespace

ConverterNoise::ConverterNoise(double noiseCodes, const SimImperfections& imperfections,
                               quint64 seed)
    : m_random(seed)
    , m_noiseCodes(noiseCodes)
    , m_level(imperfections.channelNoise)
    , m_humFrequency(imperfections.humFrequency) {
    // A one-sided density n² = noise² / (f_ref / 2), and 1/f poles a decade apart each
    // holding n²·corner·ln 10 sum to n²·corner / f.
    const double density = noiseCodes * noiseCodes / (ReferenceHertz / 2);
    m_flickerCodes =
        std::sqrt(density * std::max(imperfections.flickerCorner, 0.0) * std::numbers::ln10);
    for (int c = 0; c < 4; ++c)
        m_humCodes[c] = c < 3 ? imperfections.humCodes * m_level[c] : 0.0;
    for (auto& channel : m_state)
        for (double& x : channel)
            x = m_random.normal(); // start from the stationary distribution
    setSampleFrequency(ReferenceHertz);
}

void ConverterNoise::setSampleFrequency(double hertz) {
    const double rate = std::max(hertz, 1e-3);
    m_whiteScale = std::sqrt(rate / ReferenceHertz);
    m_humGain = sincCubed(m_humFrequency, rate);
    for (int k = 0; k < Poles; ++k) {
        m_decay[k] = std::exp(-TwoPi * PoleHertz[k] / rate);
        m_innovation[k] = std::sqrt(1 - m_decay[k] * m_decay[k]);
    }
}

std::array<double, 4> ConverterNoise::next(double seconds, double excitation) {
    const double bridgeShare = 0.8 + 0.04 * std::abs(excitation);
    const double hum = m_humGain * std::sin(TwoPi * m_humFrequency * seconds);
    std::array<double, 4> out{};
    for (int c = 0; c < 4; ++c) {
        double flicker = 0;
        if (m_flickerCodes > 0) {
            for (int k = 0; k < Poles; ++k) {
                // Each state sums many innovations, so a uniform one of unit variance makes it
                // Gaussian enough at a fraction of the cost of a normal deviate.
                double& x = m_state[c][k];
                x = m_decay[k] * x + m_innovation[k] * Sqrt3 * (2 * m_random.uniform() - 1);
                flicker += x;
            }
        }
        out[c] = bridgeShare * m_level[c] *
                     (m_noiseCodes * m_whiteScale * m_random.normal() + m_flickerCodes * flicker) +
                 m_humCodes[c] * hum;
    }
    return out;
}

} // namespace kx
