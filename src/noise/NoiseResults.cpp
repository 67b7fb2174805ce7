#include "noise/NoiseResults.h"

#include <algorithm>

namespace kx {

NoiseResults::NoiseResults(qsizetype channels, qsizetype frequencies, qsizetype excitations)
    : m_channels(channels)
    , m_frequencies(frequencies)
    , m_excitations(excitations)
    , m_values(static_cast<std::size_t>(channels * frequencies * excitations))
    , m_measured(static_cast<std::size_t>(frequencies * excitations))
    , m_marks(m_measured.size()) {}

void NoiseResults::clear() {
    std::ranges::fill(m_values, std::array<double, 3>{});
    std::fill(m_measured.begin(), m_measured.end(), false);
    std::ranges::fill(m_marks, NotSuspect);
}

void NoiseResults::store(qsizetype frequency, qsizetype excitation, const ChannelValues& r1,
                         const ChannelValues& r2, const ChannelValues& r3) {
    for (qsizetype c = 0; c < m_channels; ++c) {
        const auto at = [c](const ChannelValues& values) {
            return c < values.size() ? values[c] : 0.0;
        };
        m_values[cell(c, frequency, excitation)] = {at(r1), at(r2), at(r3)};
    }
    m_measured[test(frequency, excitation)] = true;
}

bool NoiseResults::empty() const {
    return measuredCount() == 0;
}

qsizetype NoiseResults::measuredCount() const {
    return std::ranges::count(m_measured, true);
}

qsizetype NoiseResults::suspectCount() const {
    return std::ranges::count_if(m_marks, [](quint8 marks) { return marks != NotSuspect; });
}

} // namespace kx
