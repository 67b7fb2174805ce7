#pragma once

#include <QString>
#include <QtGlobal>

namespace kx {

struct NoisePlan;

// Where a noise run stands: the frequency and excitation of the present test, with the
// frequencies as the inner loop, and which settling wait comes before it.
class NoiseSequence {
public:
    enum class Wait { Initial, Excitation, Frequency };

    NoiseSequence(qsizetype frequencies, qsizetype excitations);

    void restart() { m_frequency = m_excitation = 0; }
    // After a finished test: the next one, or false when that was the last.
    bool advance();

    qsizetype frequencyIndex() const { return m_frequency; }
    qsizetype excitationIndex() const { return m_excitation; }
    // The initial delay before the very first test, the excitation settling time before the
    // first frequency of every later excitation, the frequency settling time otherwise.
    Wait waitInForce() const;
    float waitSeconds(const NoisePlan& plan) const;

    // True once `elapsedMs` exceeds the wait, counted in whole seconds (ties to even).
    static bool waitIsOver(quint32 elapsedMs, float waitSeconds);
    // "Waiting 3542 s to start tests": the seconds still to wait, before the first test
    // "to start tests", later "to start test".
    QString countdownText(quint32 elapsedMs, float waitSeconds) const;

private:
    qsizetype m_frequencies;
    qsizetype m_excitations;
    qsizetype m_frequency = 0;
    qsizetype m_excitation = 0;
};

} // namespace kx
