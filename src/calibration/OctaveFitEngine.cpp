#include "calibration/OctaveFitEngine.h"

#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

namespace kx {

namespace {

constexpr char ResultMarker[] = "KX-FIT-RESULT";

void appendMatrix(QByteArray& script, const char* name, const Eigen::MatrixXd& m) {
    script += name;
    script += " = [";
    for (Eigen::Index r = 0; r < m.rows(); ++r) {
        if (r > 0)
            script += "; ";
        for (Eigen::Index c = 0; c < m.cols(); ++c) {
            if (c > 0)
                script += ' ';
            script += QByteArray::number(m(r, c), 'g', 17);
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

std::optional<FitProducts> OctaveFitEngine::compute(const Eigen::MatrixXd& L,
                                                    const Eigen::MatrixXd& S, QString& error) {
    QProcess process;
    process.start(m_program, {QStringLiteral("--quiet"), QStringLiteral("--no-init-file"),
                              QStringLiteral("--no-history")});
    if (!process.waitForStarted(m_timeoutMs)) {
        error = QStringLiteral("%1 could not be started: %2").arg(m_program, process.errorString());
        return std::nullopt;
    }
    process.write(script(L, S));
    process.closeWriteChannel();
    if (!process.waitForFinished(m_timeoutMs)) {
        process.kill();
        process.waitForFinished(1000);
        error =
            QStringLiteral("%1 did not answer within %2 s").arg(m_program).arg(m_timeoutMs / 1000);
        return std::nullopt;
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        error =
            QStringLiteral("%1 failed: %2")
                .arg(m_program, QString::fromLocal8Bit(process.readAllStandardError()).trimmed());
        return std::nullopt;
    }

    const QList<QByteArray> lines = process.readAllStandardOutput().split('\n');
    const qsizetype start = lines.indexOf(QByteArray(ResultMarker));
    const Eigen::Index m = S.rows();
    const Eigen::Index n = S.cols();
    const qsizetype expected = static_cast<qsizetype>(3 * m + 3 * n);
    if (start < 0 || lines.size() - start - 1 < expected) {
        error = QStringLiteral("%1 gave no complete result").arg(m_program);
        return std::nullopt;
    }
    std::vector<double> values;
    for (qsizetype i = 0; i < expected; ++i) {
        bool ok = false;
        values.push_back(lines[start + 1 + i].trimmed().toDouble(&ok));
        if (!ok) {
            error = QStringLiteral("%1 gave a result that is not a number").arg(m_program);
            return std::nullopt;
        }
    }
    FitProducts products;
    products.C = Eigen::Map<const Eigen::MatrixXd>(values.data(), 3, m);
    products.F = Eigen::Map<const Eigen::MatrixXd>(values.data() + 3 * m, 3, n);
    return products;
}

} // namespace kx
