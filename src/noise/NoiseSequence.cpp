#include "noise/NoiseSequence.h"

#include "noise/NoisePlan.h"
#include "resources/StringTable.h"
#include "support/NumberFormat.h"
#include "support/Rounding.h"

namespace kx {

NoiseSequence::NoiseSequence(qsizetype frequencies, qsizetype excitations)
    : m_frequencies(frequencies)
    , m_excitations(excitations) {}

bool NoiseSequence::advance() {
    if (++m_frequency < m_frequencies)
        return true;
    m_frequency = 0;
    return ++m_excitation < m_excitations;
}

NoiseSequence::Wait NoiseSequence::waitInForce() const {
    if (m_frequency == 0)
        return m_excitation == 0 ? Wait::Initial : Wait::Excitation;
    return Wait::Frequency;
}

float NoiseSequence::waitSeconds(const NoisePlan& plan) const {
    switch (waitInForce()) {
    case Wait::Initial:
        return plan.initialDelay;
    case Wait::Excitation:
        return plan.excitationSettling;
    case Wait::Frequency:
        break;
    }
    return plan.frequencySettling;
}

bool NoiseSequence::waitIsOver(quint32 elapsedMs, float waitSeconds) {
    return static_cast<qint64>(elapsedMs) > qint64{roundHalfEven(waitSeconds)} * 1000;
}

QString NoiseSequence::countdownText(quint32 elapsedMs, float waitSeconds) const {
    static const NumberFormat seconds(u" 0 s ");
    const double remaining =
        static_cast<double>(waitSeconds) - static_cast<double>(elapsedMs) / 1000.0;
    const bool first = waitInForce() == Wait::Initial;
    namespace s = strings::noise;
    return strings::text(s::Waiting) + seconds.format(remaining) +
           strings::text(first ? s::ToStartTests : s::ToStartTest);
}

} // namespace kx
