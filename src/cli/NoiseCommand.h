#pragma once

#include "cli/PlateCommand.h"
#include "device/PlateTypes.h"
#include "noise/NoisePlan.h"
#include "noise/NoiseResultFile.h"
#include "noise/NoiseResults.h"
#include "noise/NoiseSequence.h"

#include <optional>

namespace kx {
class Timer;
} // namespace kx

namespace kx::cli {

// `kxplate noise SERIAL [--profile FILE] [-o FILE]`: the unattended noise test with the plan of
// the shared profile (or of FILE), run as the noise dialog runs it: the same waits, tests and
// result file, rewritten after every test. Each finished test's line goes to standard output,
// the countdown and the test's progress to standard error.
//
// The plate gets back the sampling frequency and excitation it had however the run ends: done,
// Ctrl+C or SIGTERM, or a time-out the dialog stops for. The plan is not written back to the
// profile.
class NoiseCommand final : public PlateCommand {
    Q_OBJECT
public:
    struct Options {
        QString serial;
        QString profile; // empty: the shared profile
        QString output;  // empty: the first free <serial>_Noise_<n>.TXT in the documents folder
    };

    static constexpr int TimerMs = 1000;

    NoiseCommand(Console& console, Clock& clock, PlateDriver& driver, Options options,
                 QObject* parent = nullptr);

    const QString& resultPath() const { return m_file.path(); }

private:
    bool prepare() override;
    void run(PlateDevice& plate) override;
    // Ends the run: the measurement stopped, the file complete, the plate restored.
    void end(int exitCode) override;

    void prepareTest();
    void waitTick();
    void startTest();
    void ZeroDone(const ChannelValues& r1, const ChannelValues& r2, const ChannelValues& r3);
    void saveResults();
    QString aboutTest() const;

    Options m_options;
    NoisePlan m_plan;
    NoiseResults m_results{0, 0, 0};
    NoiseSequence m_sequence{0, 0};
    NoiseResultFile m_file;
    Timer* m_timer;
    quint32 m_waitStart = 0;
    qint32 m_samples = 0;
    std::optional<float> m_savedFrequency;
    std::optional<float> m_savedExcitation;
    bool m_running = false;
    bool m_measuring = false;
};

} // namespace kx::cli
