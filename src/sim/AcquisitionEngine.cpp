#include "sim/AcquisitionEngine.h"

#include "sim/SamplePacer.h"
#include "support/Clock.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kx {

AcquisitionEngine::AcquisitionEngine(Clock& clock, SamplePacer& pacer, quint32 origin,
                                     Source source, QObject* parent)
    : QObject(parent)
    , m_clock(clock)
    , m_origin(origin)
    , m_source(std::move(source))
    , m_pacer(pacer) {
    m_pacer.add(this);
}

AcquisitionEngine::~AcquisitionEngine() {
    m_pacer.remove(this);
}

void AcquisitionEngine::startStreaming(double hertz) {
    start(Mode::Streaming, 0, hertz);
}

void AcquisitionEngine::startZero(qint32 samples, double hertz) {
    start(Mode::Zero, samples, hertz);
}

void AcquisitionEngine::startTest(qint32 samples, double hertz) {
    start(Mode::Test, samples, hertz);
}

void AcquisitionEngine::start(Mode mode, qint32 samples, double hertz) {
    stop();
    m_mode = mode;
    m_start = m_clock.tickCount();
    m_startSeconds = quint32(m_start - m_origin) / 1000.0;
    m_hertz = hertz;
    m_taken = 0;
    m_number = 0;
    m_clipping = false;
    // A request for no samples still converts one: the converter always completes a cycle.
    m_wanted = std::max(samples, 1);
    m_progressStep = std::max(m_wanted / 10, 1);
    m_statistics = ChannelStatistics();
    m_forces.clear();
    m_volts.clear();
    if (mode == Mode::Test) {
        // Enough for a few minutes at full rate; an absurd request grows as it goes.
        m_forces.reserve(std::min(m_wanted, 1 << 18));
        m_volts.reserve(std::min(m_wanted, 1 << 18));
    }
    m_pacer.reschedule();
}

void AcquisitionEngine::stop() {
    ++m_run;
    stopCapture();
    m_mode = Mode::Idle;
    m_pacer.reschedule();
}

void AcquisitionEngine::startCapture() {
    if (m_mode != Mode::Streaming)
        return;
    m_capturing = true;
    m_number = 0;
    m_forces.clear();
    m_volts.clear();
}

void AcquisitionEngine::stopCapture() {
    if (!m_capturing)
        return;
    m_capturing = false;
    m_clock.singleShot(0, this, [this, forces = std::move(m_forces), volts = std::move(m_volts)] {
        Q_EMIT testDone(qint32(forces.size()), forces, volts);
    });
    m_forces = {};
    m_volts = {};
}

qint64 AcquisitionEngine::dueOffset(qint64 sample) const {
    return static_cast<qint64>(std::floor(double(sample) * 1000.0 / m_hertz));
}

qint64 AcquisitionEngine::msUntilNextSample(quint32 now) const {
    return std::max<qint64>(dueOffset(m_taken + 1) - quint32(now - m_start), 0);
}

void AcquisitionEngine::takeDueSamples() {
    const quint64 run = m_run;
    const qint64 elapsed = quint32(m_clock.tickCount() - m_start);
    while (dueOffset(m_taken + 1) <= elapsed) {
        ++m_taken;
        const PlateSample sample = m_source(m_startSeconds + double(m_taken) / m_hertz);
        // Neither stops the stream: the reaction is the listener's. Clipping is told as a
        // signal goes beyond range, an overrun each time the buffer has filled again.
        if (sample.clipped && !std::exchange(m_clipping, true)) {
            Q_EMIT clipped();
            if (m_run != run)
                return;
        }
        m_clipping = sample.clipped;
        if (m_hertz > MaxSustainedRate && m_taken % BufferSamples == 0) {
            Q_EMIT overrun();
            if (m_run != run)
                return;
        }
        deliver(sample);
        if (m_run != run)
            return;
        if (m_sampleHook) {
            m_sampleHook(m_taken);
            if (m_run != run)
                return;
        }
    }
}

void AcquisitionEngine::deliver(const PlateSample& sample) {
    switch (m_mode) {
    case Mode::Idle:
        return;
    case Mode::Streaming:
        if (m_capturing) {
            m_forces.append(sample.forces);
            m_volts.append(sample.volts);
        }
        Q_EMIT forcesIn(++m_number, sample.forces, sample.volts);
        return;
    case Mode::Zero: {
        m_statistics.add(sample.codes);
        const qint32 count = m_statistics.count();
        if (count % m_progressStep == 0 || count == m_wanted) {
            const quint64 run = m_run;
            Q_EMIT zeroProgress(count);
            if (m_run != run)
                return;
        }
        if (count == m_wanted) {
            const ChannelStatistics result = m_statistics;
            stop();
            Q_EMIT zeroDone(count, result.average(), result.deviation(), result.range());
        }
        return;
    }
    case Mode::Test:
        m_forces.append(sample.forces);
        m_volts.append(sample.volts);
        if (m_forces.size() == m_wanted) {
            const QList<Float3> forces = std::move(m_forces);
            const QList<Float3> volts = std::move(m_volts);
            stop();
            Q_EMIT testDone(m_wanted, forces, volts);
        }
        return;
    }
}

} // namespace kx
