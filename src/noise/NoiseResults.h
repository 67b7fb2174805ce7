#pragma once

#include "device/PlateTypes.h"

#include <array>
#include <vector>

namespace kx {

// The three statistics of every channel's zero at every frequency and excitation of a noise
// run, in the order the plate's zero-done event gives them: R1 the average, R2 the deviation,
// R3 the range, all in converter codes. Entries not yet measured are 0. Each test also keeps
// why it is suspect, since nobody watches the plate during a night's run.
class NoiseResults {
public:
    enum Statistic { R1, R2, R3 };
    // Why a test's figures may not be the plate's own noise; several may hold at once.
    enum Suspicion : quint8 {
        NotSuspect = 0,
        Overrun = 1,   // the converter's buffer overran during the test
        Clipping = 2,  // the signals clipped during the test
        LoadChange = 4 // the deviation shows something touched the plate (LoadChanges.h)
    };

    NoiseResults(qsizetype channels, qsizetype frequencies, qsizetype excitations);

    void clear();
    // One test's outcome; channels the event does not report stay 0.
    void store(qsizetype frequency, qsizetype excitation, const ChannelValues& r1,
               const ChannelValues& r2, const ChannelValues& r3);
    // Adds to what is known against a test; a mark is never taken back.
    void mark(qsizetype frequency, qsizetype excitation, quint8 suspicions) {
        m_marks[test(frequency, excitation)] |= suspicions;
    }
    quint8 marks(qsizetype frequency, qsizetype excitation) const {
        return m_marks[test(frequency, excitation)];
    }

    double value(Statistic statistic, qsizetype channel, qsizetype frequency,
                 qsizetype excitation) const {
        return m_values[cell(channel, frequency, excitation)][statistic];
    }
    bool measured(qsizetype frequency, qsizetype excitation) const {
        return m_measured[test(frequency, excitation)];
    }
    bool empty() const;
    qsizetype measuredCount() const;
    qsizetype suspectCount() const;

    qsizetype channels() const { return m_channels; }
    qsizetype frequencies() const { return m_frequencies; }
    qsizetype excitations() const { return m_excitations; }

private:
    // Tests in run order: the frequencies are the inner loop.
    std::size_t test(qsizetype frequency, qsizetype excitation) const {
        return static_cast<std::size_t>(excitation * m_frequencies + frequency);
    }
    std::size_t cell(qsizetype channel, qsizetype frequency, qsizetype excitation) const {
        return static_cast<std::size_t>((channel * m_frequencies + frequency) * m_excitations +
                                        excitation);
    }

    qsizetype m_channels;
    qsizetype m_frequencies;
    qsizetype m_excitations;
    std::vector<std::array<double, 3>> m_values;
    std::vector<bool> m_measured;
    std::vector<quint8> m_marks;
};

} // namespace kx
