#include "sim/SamplePacer.h"

#include "sim/AcquisitionEngine.h"
#include "support/Clock.h"

#include <algorithm>
#include <limits>

namespace kx {

SamplePacer::SamplePacer(Clock& clock, int batchMs, QObject* parent)
    : QObject(parent)
    , m_clock(clock)
    , m_timer(clock.createTimer(this))
    , m_batchMs(batchMs) {
    connect(m_timer, &Timer::timeout, this, &SamplePacer::wake);
}

void SamplePacer::add(AcquisitionEngine* engine) {
    m_engines.push_back(engine);
}

void SamplePacer::remove(AcquisitionEngine* engine) {
    std::erase(m_engines, engine);
}

void SamplePacer::wake() {
    m_waking = true;
    // By index: a handler may start or stop acquisitions, never add or remove engines.
    for (size_t i = 0; i < m_engines.size(); ++i)
        if (m_engines[i]->isRunning())
            m_engines[i]->takeDueSamples();
    m_waking = false;
    reschedule();
}

void SamplePacer::reschedule() {
    if (m_waking)
        return; // the wake-up reschedules when it ends
    const quint32 now = m_clock.tickCount();
    qint64 delay = std::numeric_limits<qint64>::max();
    for (const AcquisitionEngine* engine : m_engines)
        if (engine->isRunning())
            delay = std::min(delay, engine->msUntilNextSample(now));
    if (delay == std::numeric_limits<qint64>::max()) {
        m_timer->stop();
        return;
    }
    const int interval = int(std::max<qint64>({delay, 1, m_batchMs}));
    // A repeating timer never waits longer than its interval, so one that already runs with
    // this interval is early at worst; restarting it would cost more than a sample.
    if (interval != m_timer->interval() || !m_timer->isEnabled())
        m_timer->start(interval);
}

} // namespace kx
