#pragma once

#include "calibration/Calibration.h"
#include "calibration/CalibrationRecovery.h"
#include "calibration/CalibrationReport.h"
#include "calibration/CalibrationSettings.h"
#include "device/PlateTypes.h"

#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <optional>

namespace kx {

class Clock;
class OctaveFitRun;
class PlateDevice;
class Prompt;
class Timer;
struct FitOutcome;
struct FitProducts;

// What the boxes of the calibration dialog hold that the session works with: the typed texts,
// and the excitation and duration as the session last showed them.
struct CalibrationForm {
    QString operatorCode; // as typed; trimmed where used
    QString temperature;
    QString humidity;
    QString pressure;
    QString duration = QStringLiteral("1"); // s
    QString excitation;                     // the plate's bridge excitation, "0.000" V
    QString excitationNote; // why the excitation was set for earlier data; empty when it was not
    QString scale;          // the scaling value in force, "0.0000"
};

// One calibration of one plate, from the dialog's load to its close, without widgets: the
// record and the fit, the acquisition running, what no file keeps yet, and what each command
// may do now. The dialog is its view: it forwards the controls' commands and shows what the
// session announces. Messages and questions go to the user through the prompt; device calls
// go through the plate boundary, whose failures the prompt tells.
//
// What the session guarantees:
// - A fit matches the points or does not count: OK and Report refuse a stale or absent fit (OK
//   offers to close without writing a matrix). A calibration opened or restored is fitted at
//   once.
// - No acquisition on a missing zero: Get Data needs the point's accepted zero, a linearity
//   step the scaling zero.
// - The plate holds all nine new cells or keeps its old matrix (PlateCommit).
// - Nothing collected is lost: every change to the record is kept safe at once in the plate's
//   recovery file, removed only when a file keeps the work or the technician discards it;
//   leaving or opening another file with work at risk asks first; the next session of the same
//   plate offers the work back.
// - A calibration of another plate says so when opened, and OK asks before writing it.
class CalibrationSession : public QObject {
    Q_OBJECT
public:
    enum class Activity { Idle, Zero, Data, Fitting };

    CalibrationSession(Clock& clock, Prompt& prompt, QObject* parent = nullptr);
    ~CalibrationSession() override;

    // The dialog's load: the settings, a fresh calibration, then the plate (none: "No Plate")
    // with its excitation, frequency and operator on file, and the offer of work kept for it.
    void begin(const CalibrationSettings& settings, PlateDevice* plate);
    // The dialog's close: stops what runs on the plate unless it is gone, ends a fit under
    // way. Work at risk stays in the recovery file.
    void end(bool plateRemoved);
    // The outside fit engine's program.
    void setFitProgram(const QString& program);

    const Calibration& calibration() const { return m_calibration; }
    CalibrationSettings& settings() { return m_settings; }
    const CalibrationForm& form() const { return m_form; }
    const QString& openFile() const { return m_openFile; }
    const QString& status() const { return m_status; }
    Activity activity() const { return m_activity; }
    bool isDisplaying() const { return m_displaying; }
    bool hasPlate() const { return !m_plate.isNull(); }
    float sampleFrequency() const { return m_frequency; } // Hz, as last read from the plate
    // The record holds work that no file keeps.
    bool hasWorkAtRisk() const;
    // "7 of 10 points taken, 3 of 8 linearity steps taken".
    QString workSummary() const;
    // The kilograms of each linearity step, as its button names it.
    QString stepCaption(int step) const;

    // The boxes, as typed.
    void setOperatorCode(const QString& text);
    enum class Condition { Temperature, Humidity, Pressure };
    void setCondition(Condition condition, const QString& text);
    void setDuration(const QString& text);
    // The excitation box confirmed: clamped to (0, 5] V, written to the plate and read back.
    // Text that is not a number is refused with a beep; the box shows the plate's value again.
    void setExcitation(const QString& text);

    // Commands
    void next();
    void click(QPointF plate);
    void takeZero();
    void takeScalingZero();
    void takeData();
    void takeStep(int step);
    void computeMatrix();
    // The scaling box confirmed with Scale; false when its text was refused.
    bool applyScale(const QString& text);
    bool save();
    void open();
    void startDisplay();
    void stopDisplay();
    // OK: true when the dialog is to close. After a commit the plate holds committedTexts().
    bool commit();
    // The scaled matrix row by row as the main window's matrix boxes are to show it.
    QStringList committedTexts() const;
    // Cancel, Esc, the title bar's close: true when the dialog may close.
    bool mayLeave();
    // A device fault ended the acquisition or the display: back to idle. A fit carries on.
    void abortAcquisition();

    // The certificate of the calibration with the conditions as typed, and the folder to offer;
    // nothing (after a message) while the fit is absent or stale or the conditions are not
    // given.
    struct ReportRequest {
        CalibrationReport report;
        QString suggestedName; // the calibration file's base name
    };
    std::optional<ReportRequest> prepareReport();
    void reportWritten(const QString& path);

Q_SIGNALS:
    void statusChanged(const QString& text);
    // The record, the fit, the current point or what may run changed: show them again.
    void changed();
    // The session set a box (opened or restored a calibration, fixed the duration, set the
    // excitation): show the form again.
    void formChanged();
    void currentPointChanged(int point);
    // An acquisition started: clear the charts; the progress runs from 0 to `samples`.
    void acquisitionStarted(qint32 samples);
    void progressed(qint32 samples);
    // `completed`: the plate delivered; otherwise a fault or a stop ended it.
    void acquisitionEnded(bool completed);
    void displayChanged(bool on);
    // An Octave fit runs (busy) or has ended.
    void fitRunning(bool running);

private:
    struct Acquisition {
        bool scaling = false;
        int step = -1;        // the linearity step of a data acquisition
        float excitation = 0; // V, as the plate had it at the start
        quint32 startTick = 0;
    };
    // An Octave fit under way and what it was posed from.
    struct PendingFit;
    enum class KeepChoice { Saved, Discarded, Stay };

    void attach(PlateDevice* plate);
    void offerKeptWork();
    void restore(KeptWork work);
    void replaceCalibration(Calibration calibration, const QString& openFile,
                            const CalibrationRecord& saved);
    // Save, Discard (asked once more) or Go Back, for work no file keeps.
    KeepChoice askToKeepWork(int question);
    bool confirmDiscard(const QString& text, int keepChoice);

    bool plateCall(const std::function<void()>& call);
    void setStatus(int text);
    void setStatusText(const QString& text);
    // The points changed; the current one too when it is no longer `before`.
    void announcePoint(int before);
    void stopRunning();
    bool prepareAcquisition(qint32& samples);
    void startZero(bool scaling);
    void startData(int step);
    bool zeroIsTaken(int step);
    void writeDeviceZero(const std::array<double, 4>& average);
    void finishAcquisition();
    void onZeroDone(const ChannelValues& average, const ChannelValues& deviation);
    void onTestDone(qint32 count, const QList<Float3>& volts);
    void playCompletionSound();
    float plateTemperature();

    // The built-in fit, without a word: a calibration opened or restored is fitted at once.
    void fitNow();
    void adoptFit(FitResult fit, std::vector<double> inputs);
    void octaveFinished(const std::optional<FitProducts>& products, const QString& error);
    void acceptFit(FitOutcome outcome, std::vector<double> inputs);

    bool operatorGiven();
    bool conditionsGiven();
    void readConditions(CalEnvironment& environment) const;
    // The calibration came from a file of another plate, or of one its name does not give.
    bool isOtherPlates() const;
    QString plateOnFile() const;

    // After every change to the record: keep the work safe, or drop what was kept once a file
    // holds it.
    void recordChanged();
    void discardKeptWork();

    Clock& m_clock;
    Prompt& m_prompt;
    QPointer<PlateDevice> m_plate;
    bool m_plateGone = false;
    QString m_serial;        // the attached plate's
    QString m_plateOperator; // the operator of the plate's last calibration
    CalibrationSettings m_settings;
    Calibration m_calibration;
    CalibrationRecord m_savedRecord; // what the open file (or a fresh calibration) holds
    CalibrationForm m_form;
    QString m_openFile;
    QString m_status;
    Activity m_activity = Activity::Idle;
    Acquisition m_running;
    bool m_displaying = false;
    float m_frequency = 0;
    Timer* m_progress = nullptr;
    OctaveFitRun* m_octave = nullptr;
    std::unique_ptr<PendingFit> m_pendingFit;
    std::optional<CalibrationRecovery> m_recovery;
    std::optional<CalibrationRecord> m_kept; // what the recovery file holds
    bool m_keepingFailed = false;            // told once until a write succeeds again
};

} // namespace kx
