#include "sim/FaultSchedule.h"

#include "support/Clock.h"

#include <algorithm>

namespace kx {

FaultSchedule::FaultSchedule(Clock& clock, QObject* context, Handler handler)
    : m_clock(clock)
    , m_context(context)
    , m_handler(std::move(handler)) {}

void FaultSchedule::atTick(quint32 tick, PlateFault fault) {
    // A tick already passed (by wrapping distance) fires at once.
    const auto delay = static_cast<qint32>(tick - m_clock.tickCount());
    m_clock.singleShot(std::max(delay, 0), m_context, [this, fault, generation = m_generation] {
        if (generation == m_generation)
            m_handler(fault);
    });
}

void FaultSchedule::afterSamples(qint64 samples, PlateFault fault) {
    m_bySamples.push_back(Pending{samples, fault});
}

void FaultSchedule::clear() {
    ++m_generation;
    m_bySamples.clear();
}

void FaultSchedule::fireSampleFaults(qint64 samples) {
    const auto due = std::find_if(m_bySamples.begin(), m_bySamples.end(),
                                  [samples](const Pending& p) { return p.samples == samples; });
    if (due == m_bySamples.end())
        return;
    const PlateFault fault = due->fault;
    m_bySamples.erase(due);
    m_handler(fault);
}

} // namespace kx
