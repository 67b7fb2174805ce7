#pragma once

#include "calibration/FitEngine.h"

#include <QString>
#include <QStringList>

class QProcess;

namespace kx {

// The fit delegated to GNU Octave, run as a child process: the workspace is cleared, L and S
// are put into it, the fit is run with the command texts "C=(L*S')/(S*S');" and "F=C*S;", and
// C and F are read back in full precision. Each compute() starts its own process and blocks
// until it ends, at most the time-out; a process that takes longer is killed. A window runs
// the same engine through OctaveFitRun, which does not block.
class OctaveFitEngine final : public FitEngine {
public:
    // Octave's own start takes about a second; a fit that has not answered after 30 s never
    // will.
    static constexpr int DefaultTimeoutMs = 30000;

    explicit OctaveFitEngine(QString program = QStringLiteral("octave-cli"),
                             int timeoutMs = DefaultTimeoutMs);

    // Whether the program can be found; when not, the dialog says "Unable to start Matlab"
    // and uses the built-in fit.
    bool isAvailable() const;

    std::optional<FitProducts> compute(const Eigen::MatrixXd& L, const Eigen::MatrixXd& S,
                                       QString& error) override;

    // The text sent to the engine's standard input for L and S.
    static QByteArray script(const Eigen::MatrixXd& L, const Eigen::MatrixXd& S);
    // How the program is started: no banner, no start-up files, no history.
    static QStringList arguments();
    // C (3 × m) and F (3 × n) from a process that has ended; nothing, with the reason in
    // `error`, when it failed or did not give them whole.
    static std::optional<FitProducts> answer(QProcess& ended, Eigen::Index m, Eigen::Index n,
                                             QString& error);

private:
    QString m_program;
    int m_timeoutMs;
};

} // namespace kx
