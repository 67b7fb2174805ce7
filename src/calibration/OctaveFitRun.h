#pragma once

#include "calibration/OctaveFitEngine.h"

#include <QObject>
#include <QString>

class QProcess;

namespace kx {

class Clock;
class Timer;

// The Octave fit of OctaveFitEngine without blocking: start() launches the program and
// returns; finished() comes once, from the event loop, with C and F or with why there are
// none. A program that has not answered when the time-out has passed on the clock, or a run
// that is cancelled or destroyed, is killed; its process is reaped when the event loop sees it
// end, so no result arrives afterwards and no zombie stays behind.
class OctaveFitRun final : public QObject {
    Q_OBJECT
public:
    OctaveFitRun(QString program, Clock& clock, QObject* parent = nullptr,
                 int timeoutMs = OctaveFitEngine::DefaultTimeoutMs);
    ~OctaveFitRun() override;

    const QString& program() const { return m_program; }
    void setProgram(QString program) { m_program = std::move(program); }

    // A run already under way is cancelled first.
    void start(const Eigen::MatrixXd& L, const Eigen::MatrixXd& S);
    bool isRunning() const { return m_process != nullptr; }
    // Ends the run without a finished().
    void cancel();

Q_SIGNALS:
    void finished(const std::optional<kx::FitProducts>& products, const QString& error);

private:
    void processFinished();
    void processFailedToStart();
    void timedOut();
    // Lets go of the process: killed if still running, deleted once it has ended.
    void abandonProcess();

    QString m_program;
    Timer* m_deadline;
    int m_timeoutMs;
    QProcess* m_process = nullptr; // the run under way, or none
    Eigen::Index m_rows = 0;       // of S
    Eigen::Index m_columns = 0;
};

} // namespace kx
