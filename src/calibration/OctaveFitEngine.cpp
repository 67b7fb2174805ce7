#include "calibration/OctaveFitEngine.h"

#include "resources/StringTable.h"

#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <cmath>

namespace kx {

namespace {

namespace c = strings::calibrate;

constexpr char ResultMarker[] = "KX-FIT-RESULT";
// Enough for a killed process to be reaped.
constexpr int KillWaitMs = 1000;

void appendMatrix(QByteArray& script, const char* name, const Eigen::MatrixXd& m) {
    script += name;
    script += " = [";
    for (Eigen::Index r = 0; r < m.rows(); ++r) {
        if (r > 0)
            script += "; ";
        for (Eigen::Index col = 0; col < m.cols(); ++col) {
            if (col > 0)
                script += ' ';
            script += QByteArray::number(m(r, col), 'g', 17);
        }
    }
    script += "];\n";
}

} // namespace

OctaveFitEngine::OctaveFitEngine(QString program, int timeoutMs)
    : m_program(std::move(program))
    , m_timeoutMs(timeoutMs) {}

bool OctaveFitEngine::isAvailable() const {
    const QFileInfo given(m_program);
    if (given.isAbsolute())
        return given.isExecutable() && given.isFile();
    return !QStandardPaths::findExecutable(m_program).isEmpty();
}

QByteArray OctaveFitEngine::script(const Eigen::MatrixXd& L, const Eigen::MatrixXd& S) {
    QByteArray text = "clear all\n";
    appendMatrix(text, "L", L);
    appendMatrix(text, "S", S);
    text += "C=(L*S')/(S*S');\n";
    text += "F=C*S;\n";
    // Read back column by column, in full precision, after a marker that no banner contains.
    text += "printf('";
    text += ResultMarker;
    text += "\\n');\nprintf('%.17g\\n', C);\nprintf('%.17g\\n', F);\n";
    return text;
}

QStringList OctaveFitEngine::arguments() {
    return {QStringLiteral("--quiet"), QStringLiteral("--no-init-file"),
            QStringLiteral("--no-history")};
}

std::optional<FitProducts> OctaveFitEngine::answer(QProcess& ended, Eigen::Index m, Eigen::Index n,
                                                   QString& error) {
    const QString program = ended.program();
    if (ended.exitStatus() != QProcess::NormalExit || ended.exitCode() != 0) {
        error = strings::text(c::EngineFailed)
                    .arg(program, QString::fromLocal8Bit(ended.readAllStandardError()).trimmed());
        return std::nullopt;
    }
    QList<QByteArray> lines = ended.readAllStandardOutput().split('\n');
    // A CR before each LF, as a Windows build writes its lines, is no part of the marker.
    for (QByteArray& line : lines)
        line = line.trimmed();
    const qsizetype start = lines.indexOf(QByteArray(ResultMarker));
    const qsizetype expected = static_cast<qsizetype>(3 * m + 3 * n);
    if (start < 0 || lines.size() - start - 1 < expected) {
        error = strings::text(c::EngineNoResult).arg(program);
        return std::nullopt;
    }
    std::vector<double> values;
    for (qsizetype i = 0; i < expected; ++i) {
        bool ok = false;
        values.push_back(lines[start + 1 + i].toDouble(&ok));
        if (!ok || !std::isfinite(values.back())) {
            error = strings::text(c::EngineNoResult).arg(program);
            return std::nullopt;
        }
    }
    FitProducts products;
    products.C = Eigen::Map<const Eigen::MatrixXd>(values.data(), 3, m);
    products.F = Eigen::Map<const Eigen::MatrixXd>(values.data() + 3 * m, 3, n);
    products.source = program;
    return products;
}

std::optional<FitProducts> OctaveFitEngine::compute(const Eigen::MatrixXd& L,
                                                    const Eigen::MatrixXd& S, QString& error) {
    QProcess process;
    process.start(m_program, arguments());
    if (!process.waitForStarted(m_timeoutMs)) {
        error = strings::text(c::EngineNotStarted).arg(m_program, process.errorString());
        return std::nullopt;
    }
    process.write(script(L, S));
    process.closeWriteChannel();
    if (!process.waitForFinished(m_timeoutMs)) {
        process.kill();
        process.waitForFinished(KillWaitMs);
        error = strings::text(c::EngineTimedOut).arg(m_program).arg(m_timeoutMs / 1000);
        return std::nullopt;
    }
    return answer(process, S.rows(), S.cols(), error);
}

} // namespace kx
