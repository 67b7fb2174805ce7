#pragma once

#include <QtGlobal>
#include <array>
#include <cmath>

namespace kx {

// Deterministic pseudo-random numbers for the simulated plates: xoshiro256** seeded through
// splitmix64, normal deviates by the polar method. The same seed gives the same sequence on
// every run; nothing allocates, so it may run once per sample.
class NoiseGenerator {
public:
    explicit NoiseGenerator(quint64 seed);

    quint64 next() {
        const quint64 result = rotl(m_s[1] * 5, 7) * 9;
        const quint64 t = m_s[1] << 17;
        m_s[2] ^= m_s[0];
        m_s[3] ^= m_s[1];
        m_s[1] ^= m_s[2];
        m_s[0] ^= m_s[3];
        m_s[2] ^= t;
        m_s[3] = rotl(m_s[3], 45);
        return result;
    }

    // Uniform in [0, 1), from the top 53 bits.
    double uniform() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }

    // Standard normal (mean 0, deviation 1). The polar method yields two per round.
    double normal() {
        if (m_hasSpare) {
            m_hasSpare = false;
            return m_spare;
        }
        double u = 0;
        double v = 0;
        double s = 0;
        do {
            u = 2 * uniform() - 1;
            v = 2 * uniform() - 1;
            s = u * u + v * v;
        } while (s >= 1 || s == 0);
        const double factor = std::sqrt(-2 * std::log(s) / s);
        m_spare = v * factor;
        m_hasSpare = true;
        return u * factor;
    }

private:
    static quint64 rotl(quint64 x, int k) { return (x << k) | (x >> (64 - k)); }

    std::array<quint64, 4> m_s{};
    double m_spare = 0;
    bool m_hasSpare = false;
};

} // namespace kx
