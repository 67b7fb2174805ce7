#include "noise/NoiseResults.h"

#include <algorithm>

namespace kx {

NoiseResults::NoiseResults(qsizetype channels, qsizetype frequencies, qsizetype excitations)
    : m_channels(channels)
    , m_frequencies(frequencies)
    , m_excitations(excitations)
    , m_values(static_cast<std::size_t>(channels * frequencies * excitations))
    , m_measured(static_cast<std::size_t>(frequencies * excitations)) {}

void NoiseResults::clear() {
    std::ranges::fill(m_values, std::array<double, 3>{});
    std::fill(m_measured.begin(), m_measured.end(), false);
}

void NoiseResults::store(qsizetype frequency, qsizetype excitation, const ChannelValues& r1,
                         const ChannelValues& r2, const ChannelValues& r3) {
    for (qsizetype c = 0; c < m_channels; ++c) {
        const auto at = [c](const ChannelValues& values) {
            return c < values.size() ? values[c] : 0.0;
        };
        m_values[cell(c, frequency, excitation)] = {at(r1), at(r2), at(r3)};
    }
    m_measured[static_cast<std::size_t>(excitation * m_frequencies + frequency)] = true;
}

bool NoiseResults::empty() const {
    return std::ranges::none_of(m_measured, [](bool measured) { return measured; });
}

} // namespace kx
