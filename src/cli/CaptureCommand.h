#pragma once

#include "cli/PlateCommand.h"
#include "device/PlateTypes.h"
#include "measure/SignalSet.h"

#include <optional>

namespace kx {
class CaptureJournal;
class Timer;
} // namespace kx

namespace kx::cli {

// `kxplate capture SERIAL --seconds N [--frequency HZ] [--signals SET] -o FILE`: the plate's
// samples for N seconds, captured as the signals display captures them (its settings give the
// converter resolution and the loaded-plate threshold) and written in its capture-file format.
// Standard error shows the progress with the latest values of the chosen signal set.
//
// However the capture ends (its time is up, Ctrl+C or SIGTERM, a fault the signals display
// stops for), the rows captured so far are saved, and the plate gets back the resolution and
// sampling frequency it had. A file that cannot be written is saved in the documents folder
// instead, so that a capture is never lost. The rows go to a capture journal in the folder of
// unsaved captures as they come, as in the signals display: a capture whose process is killed
// is offered back when the control panel next starts.
class CaptureCommand final : public PlateCommand {
    Q_OBJECT
public:
    struct Options {
        QString serial;
        double seconds = 0;
        std::optional<float> frequency; // Hz; the plate's own when not given
        std::optional<DisplayType> signalSet;
        QString output;
    };

    // The plate owes the block it recorded just after StopCapture returns; a plate that has not
    // handed it over within this time never will.
    static constexpr int BlockWaitMs = 2000;
    static constexpr int ProgressMs = 1000;

    CaptureCommand(Console& console, Clock& clock, PlateDriver& driver, Options options,
                   QObject* parent = nullptr);

    bool waitsOnDisk() const override { return m_waitingOnDisk; }

private:
    bool prepare() override;
    void run(PlateDevice& plate) override;
    // Ends the recording; the rows are saved once its block is in, or after the wait.
    void end(int exitCode) override;

    void ForcesIn(qint32 sampleNumber, const Float3& forces, const Float3& volts);
    void TestDone(qint32 count, const QList<Float3>& forces, const QList<Float3>& volts);
    void showProgress();
    void save();
    void writeFile();
    // The plate's settings put back, then the end; a failure to put them back is a device
    // error.
    void finishCapture(int exitCode);

    Options m_options;
    DisplayType m_signalSet = DisplayType::Forces;
    float m_minFz = -2.5f;
    float m_rate = 0; // Hz, read back once the capture starts
    std::optional<int> m_savedResolution;
    std::optional<float> m_savedFrequency;
    CaptureJournal* m_journal;
    Timer* m_progress;
    quint32 m_startTick = 0;
    qint32 m_samples = 0;
    Float3 m_forces{};
    Float3 m_volts{};
    bool m_capturing = false;
    bool m_ending = false;
    bool m_waitingOnDisk = false;
    int m_exitCode = 0;
};

} // namespace kx::cli
