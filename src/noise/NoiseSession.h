#pragma once

#include "device/PlateTypes.h"
#include "noise/NoisePlan.h"
#include "noise/NoiseResultFile.h"
#include "noise/NoiseResults.h"
#include "noise/NoiseRunLog.h"
#include "noise/NoiseSequence.h"

#include <QObject>
#include <QPointer>
#include <functional>

namespace kx {

class Clock;
class IniFile;
class PlateDevice;
class Prompt;
class Timer;
struct Question;

// One opening of the noise test, whatever shows it: the plan, the plate, the run through every
// frequency and excitation with its waits, the results with their suspect marks, the result
// file, its picture and the run's log with their failed saves, and the watchdog. It decides
// what each command may do while idle, waiting or measuring, and it asks the user (through the
// prompt) before anything would end a run or leave results unsaved.
//
// A run survives a night unattended: every finished test is saved at once; a failed save is
// retried after the next test, when the run ends and before leaving, and leaving with results
// that still cannot be saved asks for another place; a test that hears nothing from the plate
// ends like a read time-out; tests disturbed by an overrun, clipping or a load on the plate
// are marked. Device events that arrive when the session is not waiting for them change
// nothing.
class NoiseSession : public QObject {
    Q_OBJECT
public:
    enum class State { Idle, Waiting, Measuring };
    // Why a run ends before its last test.
    enum class Ending {
        Stopped,  // by the user
        TimedOut, // the plate timed out or failed a call, or the watchdog found it silent
        Removed   // the plate was unplugged: it is not called again
    };
    // The answers of stopQuestion() and unsavedQuestion().
    enum StopAnswer { StopRun, KeepRunning };
    enum UnsavedAnswer { SaveElsewhere, Discard, GoBack };

    // A test that hears nothing from the plate for twice its duration and this much more is
    // taken for a silent plate.
    static constexpr int WatchdogGraceMs = 30000;

    NoiseSession(Clock& clock, Prompt& prompt, QObject* parent = nullptr);

    // Reads the plan and, with a plate, chooses the result file in `documentsFolder` and keeps
    // the plate's frequency and excitation to restore after runs. False when there is no
    // plate to run on.
    bool open(PlateDevice* plate, const IniFile& profile, const QString& documentsFolder);
    // Results in `path` from now on instead of the name open() chose, with the picture and the
    // log beside them; a run checks its folder as it would the documents folder.
    void chooseResultFile(const QString& path);
    // The plan as the plate took it, back into the profile; nothing for a session never opened.
    void savePlan(const IniFile& profile) const;
    // Draws the results as a PNG picture, saved beside the result file when a run ends.
    void setPicture(std::function<QByteArray()> png) { m_picture = std::move(png); }

    // Starts a run (cmdAcquire). When the results folder cannot be made or written, says where
    // and why and asks whether to start anyway. False when no run started.
    bool start();
    // Ends the run, if one is going: stops the plate's acquisition, saves what is not saved,
    // saves the picture, restores the plate's frequency and excitation (not after a removal).
    void stop(Ending ending);
    // Whether the user may leave now; `confirmed` is OK (save and exit), otherwise Cancel, Esc
    // or close. A run in progress ends only after the user says so (not asked when the plate
    // is gone); results whose save failed are saved again, then OK asks for another place and
    // the others ask whether to save elsewhere, discard them or go back.
    bool mayLeave(bool confirmed, bool plateGone);

    State state() const { return m_state; }
    bool running() const { return m_state != State::Idle; }
    bool measuring() const { return m_state == State::Measuring; }
    const NoisePlan& plan() const { return m_plan; }
    const NoiseResults& results() const { return m_results; }
    const NoiseSequence& sequence() const { return m_sequence; }
    QString resultPath() const { return m_resultFile.path(); }
    QString logPath() const { return m_log.file().path(); }
    QString picturePath() const { return m_pictureFile.path(); }

    // The status bar's two panels: where the run stands, and the files that are not saved.
    const QString& status() const { return m_status; }
    QString fileStatus() const;
    // The run as a whole ("test 7 of 100, starts in 0:04:59, ends about 17:40"); empty when
    // idle.
    QString progressText() const;
    // Samples so far of the test being measured, and its length.
    qint32 progress() const { return m_progress; }
    qint32 progressMaximum() const { return m_samples; }

    // The list line of a finished test, by its place in run order.
    QString listLine(qsizetype test) const;
    // "Stop the noise test? 12 of 100 tests are done and saved."
    Question stopQuestion() const;
    Question unsavedQuestion() const;

    // Timer1: the once-a-second countdown of the waits.
    Timer* waitTimer() const { return m_waitTimer; }

Q_SIGNALS:
    // The state, a status, the files' state or the present test changed.
    void changed();
    // A zero-progress report of the test being measured.
    void progressed();
    // A run started: its list is empty.
    void runStarted();
    // A run ended, after its last test or stopped, once its files are saved and the plate has
    // its settings back (or could not take them).
    void runEnded();
    // A test finished: its line (by run order) is new.
    void testStored(qsizetype test);
    // A finished test turned out suspect: its line changed.
    void testMarked(qsizetype test);
    // The watchdog found the plate silent; the holder reports it as a read time-out, whose
    // reaction stops the run.
    void silent();

private:
    void prepareTest();
    void waitTick();
    void startTest();
    void zeroProgress(qint32 samples);
    void zeroDone(const ChannelValues& r1, const ChannelValues& r2, const ChannelValues& r3);
    void plateFault(NoiseResults::Suspicion suspicion);
    void watchdogExpired();
    void finish();
    void restorePlate();
    bool folderUsable(QString& why) const;
    void saveResults();
    void saveBesideResults();
    bool saveElsewhere();
    void logFailure(const NoiseResultFile& file, int text);
    void log(const QString& entry);
    QString testName(qsizetype frequency, qsizetype excitation) const;
    qsizetype testIndex(qsizetype frequency, qsizetype excitation) const;
    void setState(State state, const QString& status);
    // Runs plate calls at the device-handler boundary: a failure shows the library's message.
    bool callPlate(const std::function<void()>& calls);
    qsizetype testCount() const { return m_plan.frequencyCount() * m_plan.excitationCount(); }

    Clock& m_clock;
    Prompt& m_prompt;
    QPointer<PlateDevice> m_plate;
    Timer* m_waitTimer;
    Timer* m_watchdog;
    std::function<QByteArray()> m_picture;

    NoisePlan m_plan;
    NoiseResults m_results{0, 0, 0};
    NoiseSequence m_sequence{0, 0};
    NoiseResultFile m_resultFile;
    NoiseResultFile m_pictureFile;
    NoiseRunLog m_log;
    QString m_folder;
    QString m_serial;
    float m_savedFrequency = 0;
    float m_savedExcitation = 0;
    bool m_opened = false; // a session closed before it opened must not overwrite the plan

    State m_state = State::Idle;
    QString m_status;
    quint32 m_phaseStart = 0; // the tick the present wait or test began
    qint32 m_samples = 0;
    qint32 m_progress = 0;
    quint8 m_faults = NoiseResults::NotSuspect; // reported during the present test
    bool m_silent = false;                      // the watchdog ended the present test
};

} // namespace kx
