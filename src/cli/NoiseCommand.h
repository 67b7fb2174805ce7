#pragma once

#include "cli/ConsolePrompt.h"
#include "cli/PlateCommand.h"

#include <memory>

namespace kx {
class NoiseSession;
} // namespace kx

namespace kx::cli {

// `kxplate noise SERIAL [--profile FILE] [-o FILE]`: the unattended noise test with the plan of
// the shared profile (or of FILE), run by the noise dialog's own session: the same waits,
// tests, watchdog, suspect marks, result file (rewritten after every test) and run log beside
// it. Each finished test's line goes to standard output; the countdown, the test's progress
// and the suspect marks to standard error.
//
// The plate gets back the sampling frequency and excitation it had however the run ends: done,
// Ctrl+C or SIGTERM, or a fault the dialog stops for. Results that cannot be saved where they
// belong are saved in a rescue place. The plan is not written back to the profile, and no
// picture is drawn.
class NoiseCommand final : public PlateCommand {
    Q_OBJECT
public:
    struct Options {
        QString serial;
        QString profile; // empty: the shared profile
        QString output;  // empty: the first free <serial>_Noise_<n>.TXT in the documents folder
    };

    NoiseCommand(Console& console, Clock& clock, PlateDriver& driver, Options options,
                 QObject* parent = nullptr);
    ~NoiseCommand() override;

    QString resultPath() const;

private:
    bool prepare() override;
    void run(PlateDevice& plate) override;
    // Ends the run, if one is going, and keeps its results.
    void end(int exitCode) override;
    // The dialog reacts to a time-out only while a test is measured.
    bool reactsNow(DeviceEvent event) const override;

    void showState();
    void showProgress();
    void showTest(qsizetype test);
    void showMarks(qsizetype test);
    // Results that could not be saved at their place go to a rescue place; false, with the
    // line told, when they are not at the place asked for.
    bool keepResults();
    // "plate 20418: test 3 of 4 at 32.000 Hz, 1.000 V"
    QString aboutTest(qsizetype test) const;
    qsizetype presentTest() const;

    Options m_options;
    ConsolePrompt m_prompt;
    std::unique_ptr<NoiseSession> m_session; // goes before the prompt it speaks through
    qsizetype m_announced = -1;              // the test whose wait was told
    QString m_fileStatus;                    // the session's last told
    bool m_ending = false;
};

} // namespace kx::cli
