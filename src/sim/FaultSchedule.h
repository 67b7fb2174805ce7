#pragma once

#include "sim/PlateFault.h"

#include <QObject>
#include <functional>
#include <vector>

namespace kx {

class Clock;

// Faults of one plate that fall due later: at a tick count, or when an acquisition takes its
// Nth sample (each acquisition counts from its own start; one already past N leaves the fault
// to the next one that gets there). Each fault fires once, through the handler.
class FaultSchedule {
public:
    using Handler = std::function<void(PlateFault)>;

    // The context guards the clock's single shots: none fires once it is destroyed.
    FaultSchedule(Clock& clock, QObject* context, Handler handler);

    void atTick(quint32 tick, PlateFault fault);
    void afterSamples(qint64 samples, PlateFault fault);
    // Forgets every fault not yet fired.
    void clear();

    // Called with the running acquisition's sample count after each sample.
    void sampleTaken(qint64 samples) {
        if (!m_bySamples.empty())
            fireSampleFaults(samples);
    }

private:
    struct Pending {
        qint64 samples;
        PlateFault fault;
    };
    void fireSampleFaults(qint64 samples);

    Clock& m_clock;
    QObject* m_context;
    Handler m_handler;
    std::vector<Pending> m_bySamples;
    quint64 m_generation = 0;
};

} // namespace kx
