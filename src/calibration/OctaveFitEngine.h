#pragma once

#include "calibration/FitEngine.h"

#include <QString>

namespace kx {

// The fit delegated to GNU Octave, run as a child process: the workspace is cleared, L and S
// are put into it, the fit is run with the command texts "C=(L*S')/(S*S');" and "F=C*S;", and
// C and F are read back in full precision. Each compute() starts its own process and waits at
// most the time-out for it; a process that takes longer is killed.
class OctaveFitEngine final : public FitEngine {
public:
    explicit OctaveFitEngine(QString program = QStringLiteral("octave-cli"), int timeoutMs = 30000);

    // Whether the program can be found; when not, the dialog says "Unable to start Matlab"
    // and uses the built-in fit.
    bool isAvailable() const;

    std::optional<FitProducts> compute(const Eigen::MatrixXd& L, const Eigen::MatrixXd& S,
                                       QString& error) override;

    // The text sent to the engine's standard input for L and S.
    static QByteArray script(const Eigen::MatrixXd& L, const Eigen::MatrixXd& S);

private:
    QString m_program;
    int m_timeoutMs;
};

} // namespace kx
