#pragma once

#include "device/PlateTypes.h"

#include <array>
#include <vector>

namespace kx {

// The three statistics of every channel's zero at every frequency and excitation of a noise
// run, in the order the plate's zero-done event gives them: R1 the average, R2 the deviation,
// R3 the range, all in converter codes. Entries not yet measured are 0.
class NoiseResults {
public:
    enum Statistic { R1, R2, R3 };

    NoiseResults(qsizetype channels, qsizetype frequencies, qsizetype excitations);

    void clear();
    // One test's outcome; channels the event does not report stay 0.
    void store(qsizetype frequency, qsizetype excitation, const ChannelValues& r1,
               const ChannelValues& r2, const ChannelValues& r3);

    double value(Statistic statistic, qsizetype channel, qsizetype frequency,
                 qsizetype excitation) const {
        return m_values[cell(channel, frequency, excitation)][statistic];
    }
    bool measured(qsizetype frequency, qsizetype excitation) const {
        return m_measured[static_cast<std::size_t>(excitation * m_frequencies + frequency)];
    }
    bool empty() const;

    qsizetype channels() const { return m_channels; }
    qsizetype frequencies() const { return m_frequencies; }
    qsizetype excitations() const { return m_excitations; }

private:
    std::size_t cell(qsizetype channel, qsizetype frequency, qsizetype excitation) const {
        return static_cast<std::size_t>((channel * m_frequencies + frequency) * m_excitations +
                                        excitation);
    }

    qsizetype m_channels;
    qsizetype m_frequencies;
    qsizetype m_excitations;
    std::vector<std::array<double, 3>> m_values;
    std::vector<bool> m_measured;
};

} // namespace kx
