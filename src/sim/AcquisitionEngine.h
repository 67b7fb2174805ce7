#pragma once

#include "device/PlateTypes.h"
#include "sim/ChannelStatistics.h"
#include "sim/PlateSample.h"

#include <QList>
#include <QObject>
#include <functional>

namespace kx {

class Clock;
class SamplePacer;

// Runs one plate's acquisitions, paced by the clock: sample k of an acquisition started at
// tick t0 is due at t0 + k·1000/f ms and is taken once the tick count reaches it; the pacer
// decides when to look (at each due tick, or in batches). Starting an acquisition replaces
// the running one. Handlers of the signals may stop or start acquisitions.
class AcquisitionEngine : public QObject {
    Q_OBJECT
public:
    // Takes one conversion at a time on the driver's timeline, in seconds.
    using Source = std::function<PlateSample(double seconds)>;
    // Told the number of samples the running acquisition has taken, after each sample.
    using SampleHook = std::function<void(qint64 samples)>;

    // Faster conversions fill the plate's transfer buffer and overrun it.
    static constexpr double MaxSustainedRate = 1000.0;
    static constexpr qint64 BufferSamples = 256;

    AcquisitionEngine(Clock& clock, SamplePacer& pacer, quint32 origin, Source source,
                      QObject* parent = nullptr);
    ~AcquisitionEngine() override;

    void setSampleHook(SampleHook hook) { m_sampleHook = std::move(hook); }

    // One forcesIn per sample, numbered from 1.
    void startStreaming(double hertz);
    // zeroProgress every tenth of the run and at its end, then zeroDone.
    void startZero(qint32 samples, double hertz);
    // testDone with all samples at the end.
    void startTest(qint32 samples, double hertz);
    // While streaming: keep the samples from now on and number them from 1 again;
    // stopCapture hands them over in one testDone, after the call returns.
    void startCapture();
    void stopCapture();
    // Ends the running acquisition; a capture in progress is handed over as by stopCapture,
    // so nothing recorded is lost.
    void stop();

    bool isRunning() const { return m_mode != Mode::Idle; }

    // For the pacer: time until the next sample falls due (0 when overdue), and taking every
    // sample due by now.
    qint64 msUntilNextSample(quint32 now) const;
    void takeDueSamples();

Q_SIGNALS:
    void forcesIn(qint32 sampleNumber, const kx::Float3& forces, const kx::Float3& volts);
    void zeroProgress(qint32 samples);
    void zeroDone(qint32 samples, const kx::ChannelValues& average,
                  const kx::ChannelValues& deviation, const kx::ChannelValues& range);
    void testDone(qint32 count, const QList<kx::Float3>& forces, const QList<kx::Float3>& volts);
    // A signal went beyond the converter's range; the acquisition goes on.
    void clipped();
    // The samples come faster than the link carries them; the acquisition goes on.
    void overrun();

private:
    enum class Mode { Idle, Streaming, Zero, Test };

    void start(Mode mode, qint32 samples, double hertz);
    void deliver(const PlateSample& sample);
    qint64 dueOffset(qint64 sample) const;

    Clock& m_clock;
    quint32 m_origin;
    Source m_source;
    SampleHook m_sampleHook;
    SamplePacer& m_pacer;

    Mode m_mode = Mode::Idle;
    quint64 m_run = 0; // changes whenever an acquisition starts or stops
    quint32 m_start = 0;
    double m_startSeconds = 0;
    double m_hertz = 1;
    qint64 m_taken = 0;
    qint32 m_wanted = 0;
    qint32 m_progressStep = 1;
    qint32 m_number = 0;
    ChannelStatistics m_statistics;
    QList<Float3> m_forces;
    QList<Float3> m_volts;
    bool m_capturing = false;
    bool m_clipping = false; // the last sample was clipped
};

} // namespace kx
