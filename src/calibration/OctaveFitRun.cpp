#include "calibration/OctaveFitRun.h"

#include "resources/StringTable.h"
#include "support/Clock.h"

#include <QProcess>
#include <utility>

namespace kx {

namespace c = strings::calibrate;

OctaveFitRun::OctaveFitRun(QString program, Clock& clock, QObject* parent, int timeoutMs)
    : QObject(parent)
    , m_program(std::move(program))
    // The outside program runs in real time, however fast the clock.
    , m_deadline(clock.createWallTimer(this))
    , m_timeoutMs(timeoutMs) {
    connect(m_deadline, &Timer::timeout, this, &OctaveFitRun::timedOut);
}

OctaveFitRun::~OctaveFitRun() {
    abandonProcess();
}

void OctaveFitRun::start(const Eigen::MatrixXd& L, const Eigen::MatrixXd& S) {
    abandonProcess();
    m_rows = S.rows();
    m_columns = S.cols();
    m_process = new QProcess(this);
    connect(m_process, &QProcess::started, this,
            [process = m_process, script = OctaveFitEngine::script(L, S)] {
                process->write(script);
                process->closeWriteChannel();
            });
    connect(m_process, &QProcess::finished, this, &OctaveFitRun::processFinished);
    // Queued: a program that cannot be started is reported from within start() itself.
    connect(
        m_process, &QProcess::errorOccurred, this,
        [this, process = m_process](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart && process == m_process)
                processFailedToStart();
        },
        Qt::QueuedConnection);
    m_deadline->start(m_timeoutMs);
    m_process->start(m_program, OctaveFitEngine::arguments());
}

void OctaveFitRun::cancel() {
    abandonProcess();
}

void OctaveFitRun::processFinished() {
    QProcess* process = std::exchange(m_process, nullptr);
    m_deadline->stop();
    QString error;
    const std::optional<FitProducts> products =
        OctaveFitEngine::answer(*process, m_rows, m_columns, error);
    process->deleteLater();
    Q_EMIT finished(products, error);
}

void OctaveFitRun::processFailedToStart() {
    const QString reason = m_process->errorString();
    abandonProcess();
    Q_EMIT finished(std::nullopt, strings::text(c::EngineNotStarted).arg(m_program, reason));
}

void OctaveFitRun::timedOut() {
    abandonProcess();
    Q_EMIT finished(std::nullopt,
                    strings::text(c::EngineTimedOut).arg(m_program).arg(m_timeoutMs / 1000));
}

void OctaveFitRun::abandonProcess() {
    m_deadline->stop();
    QProcess* process = std::exchange(m_process, nullptr);
    if (!process)
        return;
    disconnect(process, nullptr, this, nullptr);
    if (process->state() == QProcess::NotRunning) {
        process->deleteLater();
        return;
    }
    // Killed without waiting: the process object outlives the run until the event loop has
    // seen the child end and reaped it.
    process->setParent(nullptr);
    connect(process, &QProcess::finished, process, &QObject::deleteLater);
    connect(process, &QProcess::errorOccurred, process, &QObject::deleteLater);
    process->kill();
}

} // namespace kx
