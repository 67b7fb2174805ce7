#include "cli/FitCommand.h"

#include "calibration/CalFileReader.h"
#include "calibration/FitSummary.h"
#include "cli/Console.h"
#include "cli/ExitCode.h"
#include "cli/JsonOutput.h"
#include "cli/TextOutput.h"
#include "resources/StringTable.h"
#include "support/NumberFormat.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonObject>

namespace kx::cli {

namespace {

namespace c = strings::calibrate;
constexpr const char* RowNames[] = {"Fz", "Mx", "My"};

bool isFlagged(const FitDiagnostics& d, std::size_t k) {
    return k < d.flagged.size() && d.flagged[k];
}

double element(const FitResult& fit, std::size_t row, std::size_t column) {
    const auto m = static_cast<std::size_t>(fit.m);
    return column < m ? fit.C[row * m + column] : 0.0;
}

QString text(const FitResult& fit) {
    const auto& uncertainty = fit.diagnostics.uncertainty;
    std::vector<QStringList> matrix{
        {QString(), QStringLiteral("V1"), QStringLiteral("V2"), QStringLiteral("V3")}};
    for (std::size_t row = 0; row < 3; ++row) {
        QStringList cells{QLatin1String(RowNames[row])};
        for (std::size_t column = 0; column < 3; ++column) {
            QString cell = formatNumber(fit.matrix[row][column], u"0.000");
            if (uncertainty)
                cell += u' ' + strings::text(c::ElementUncertainty)
                                   .arg(formatNumber((*uncertainty)[row][column], u"0.000"));
            cells << cell;
        }
        matrix.push_back(cells);
    }
    std::vector<QStringList> errors{
        {strings::text(c::ErrorsColumnPoint), strings::text(c::ErrorsColumnFz),
         strings::text(c::ErrorsColumnX), strings::text(c::ErrorsColumnY)}};
    for (std::size_t k = 0; k < fit.errors.size(); ++k) {
        const FitErrorRow& e = fit.errors[k];
        errors.push_back(
            {QString::number(e.point + 1), formatNumber(e.fz, u"0.000"),
             formatNumber(e.x, u"0.000000"), formatNumber(e.y, u"0.000000"),
             isFlagged(fit.diagnostics, k) ? QStringLiteral("does not fit") : QString()});
    }
    return caption(c::MatrixFrame) + QStringLiteral(" (") + strings::text(c::MatrixCaption) +
           QStringLiteral(")\n") + textTable(matrix) + u'\n' + caption(c::ErrorsFrame) + u'\n' +
           textTable(errors) + u'\n' + FitSummary::text(fit, FitSummary::Uncertainty::ShownApart) +
           u'\n';
}

QJsonArray rows3(const std::function<double(std::size_t, std::size_t)>& value) {
    QJsonArray rows;
    for (std::size_t row = 0; row < 3; ++row)
        rows.append(QJsonArray{value(row, 0), value(row, 1), value(row, 2)});
    return rows;
}

QJsonObject json(const QString& file, const FitResult& fit, bool octave) {
    const FitDiagnostics& d = fit.diagnostics;
    QJsonArray points;
    QJsonArray errors;
    QJsonArray flagged;
    for (std::size_t k = 0; k < fit.errors.size(); ++k) {
        const FitErrorRow& e = fit.errors[k];
        points.append(e.point + 1);
        const double residual =
            k < d.standardisedResidual.size() ? d.standardisedResidual[k] : qQNaN();
        errors.append(QJsonObject{{QStringLiteral("point"), e.point + 1},
                                  {QStringLiteral("fz"), e.fz},
                                  {QStringLiteral("x"), e.x},
                                  {QStringLiteral("y"), e.y},
                                  {QStringLiteral("studentisedResidual"), residual},
                                  {QStringLiteral("flagged"), isFlagged(d, k)}});
        if (isFlagged(d, k))
            flagged.append(e.point + 1);
    }
    QJsonValue uncertainty;
    if (d.uncertainty)
        uncertainty =
            rows3([&](std::size_t r, std::size_t col) { return (*d.uncertainty)[r][col]; });
    return {
        {QStringLiteral("file"), QDir::toNativeSeparators(file)},
        {QStringLiteral("engine"), octave && fit.engineError.isEmpty() ? QStringLiteral("octave")
                                                                       : QStringLiteral("builtin")},
        {QStringLiteral("channels"), fit.m},
        {QStringLiteral("points"), points},
        {QStringLiteral("matrix"),
         rows3([&](std::size_t r, std::size_t col) { return element(fit, r, col); })},
        {QStringLiteral("uncertainty"), uncertainty},
        {QStringLiteral("conditionNumber"), d.conditionNumber},
        {QStringLiteral("residualRms"),
         QJsonArray{d.residualRms[0], d.residualRms[1], d.residualRms[2]}},
        {QStringLiteral("errors"), errors},
        {QStringLiteral("flagged"), flagged},
        {QStringLiteral("summary"),
         QJsonArray::fromStringList(
             FitSummary::text(fit, FitSummary::Uncertainty::ShownApart).split(u'\n'))},
    };
}

} // namespace

FitCommand::FitCommand(Console& console, QString file, FitEngineChoice engine, bool json,
                       QObject* parent)
    : Command(console, parent)
    , m_file(std::move(file))
    , m_engine(engine)
    , m_json(json) {}

void FitCommand::start() {
    const QString name = QDir::toNativeSeparators(m_file);
    // The fit needs only the points: the environment and linearity defaults of a short file
    // play no part.
    CalFileReader reader(CalEnvironment{}, {});
    const std::optional<CalibrationRecord> record = reader.readFile(m_file);
    if (!record) {
        fail(FileError, name + QStringLiteral(": ") + oneLine(reader.errorString()));
        return;
    }
    const CalFileFit fit = fitCalibration(*record, m_engine);
    if (!fit.outcome.result) {
        fail(FileError, name + QStringLiteral(": ") + oneLine(fit.outcome.error));
        return;
    }
    if (!fit.engineNote.isEmpty())
        console().error(name + QStringLiteral(": ") + fit.engineNote);
    const FitResult& result = *fit.outcome.result;
    console().print(m_json ? jsonText(json(m_file, result, m_engine == FitEngineChoice::Octave))
                           : text(result));
    finish(Success);
}

} // namespace kx::cli
