#pragma once

#include <QObject>
#include <vector>

namespace kx {

class AcquisitionEngine;
class Clock;
class Timer;

// One timer for the acquisitions of all plates of a driver. It wakes when the earliest
// sample of any running acquisition falls due, so under a manual clock every sample is taken
// at the tick of its due time. With a batch interval it wakes at most that often and the
// engines take every overdue sample at once: on the real clock each wake-up of the event loop
// costs far more than a sample, and ten plates at 1000 Hz would otherwise wake it 10000 times
// a second.
class SamplePacer : public QObject {
    Q_OBJECT
public:
    // `batchMs` 0: wake for every due sample.
    SamplePacer(Clock& clock, int batchMs, QObject* parent = nullptr);

    // Engines register for their lifetime; the pacer must outlive them.
    void add(AcquisitionEngine* engine);
    void remove(AcquisitionEngine* engine);
    // An engine started or stopped: the next wake-up may have moved.
    void reschedule();

private:
    void wake();

    Clock& m_clock;
    Timer* m_timer;
    int m_batchMs;
    std::vector<AcquisitionEngine*> m_engines;
    bool m_waking = false;
};

} // namespace kx
