#include "calibration/CalibrationReport.h"

#include "calibration/Calibration.h"
#include "calibration/CalibrationTexts.h"
#include "calibration/FitSummary.h"
#include "calibration/LinearityScaling.h"
#include "calibration/PlateCommit.h"
#include "resources/StringTable.h"
#include "support/NumberFormat.h"

#include <algorithm>
#include <cmath>

namespace kx {

namespace {
namespace c = strings::calibrate;
using Uncertainties = FitDiagnostics::Elements;

// A caption as a label or heading: without its mnemonic marker and trailing colon.
QString caption(int id) {
    QString text = strings::text(id).remove(u'&').trimmed();
    if (text.endsWith(u':'))
        text.chop(1);
    return text;
}

// Fields without a value are left out: the report states only what is known.
void add(std::vector<ReportField>& fields, int label, const QString& value) {
    if (!value.isEmpty())
        fields.push_back({caption(label), value});
}

QStringList heads(int first, int count) {
    QStringList texts;
    for (int i = 0; i < count; ++i)
        texts << strings::text(first + i);
    return texts;
}

// Rows Fz, Mx, My by the bridge channels; each element "0.000" and, when known, its expanded
// uncertainty times `uncertaintyFactor`.
ReportTable matrixTable(const CalMatrix& matrix, const std::optional<Uncertainties>& uncertainty,
                        double uncertaintyFactor) {
    static constexpr std::array<const char*, 3> Rows{"Fz", "Mx", "My"};
    ReportTable table;
    table.header = QStringList{QString()} + heads(c::DataCh, 3);
    for (std::size_t row = 0; row < 3; ++row) {
        QStringList cells{QLatin1String(Rows[row])};
        for (std::size_t column = 0; column < 3; ++column) {
            QString cell = formatNumber(matrix[row][column], u"0.000");
            if (uncertainty)
                cell += u' ' + strings::text(c::ReportElementUncertainty)
                                   .arg(formatNumber(
                                       (*uncertainty)[row][column] * uncertaintyFactor, u"0.000"));
            cells << cell;
        }
        table.rows.push_back(cells);
    }
    return table;
}

// The first zero and the last data acquisition of the points and the linearity check.
std::pair<std::optional<OleDate>, std::optional<OleDate>>
firstZeroLastData(const CalibrationRecord& record) {
    std::optional<OleDate> first;
    std::optional<OleDate> last;
    const auto zero = [&](bool done, const OleDate& date) {
        if (done && (!first || date.days < first->days))
            first = date;
    };
    const auto data = [&](bool done, const OleDate& date) {
        if (done && (!last || date.days > last->days))
            last = date;
    };
    for (const CalPoint& point : record.points) {
        zero(point.zeroDone, point.zeroDate);
        data(point.dataDone, point.dataDate);
    }
    zero(record.scalingZero.done, record.scalingZero.date);
    for (const LinearityStep& step : record.steps)
        data(step.done, step.date);
    return {first, last};
}

QString dateOrNothing(const std::optional<OleDate>& date) {
    return date ? dateTimeText(*date) : QString();
}

ReportSection plateSection(const Calibration& calibration, const FitResult& fit,
                           const ReportFacts& facts) {
    const CalibrationRecord& record = calibration.record;
    ReportSection section{.heading = caption(c::ReportPlate)};
    auto& fields = section.fields;
    add(fields, c::ReportSerial, facts.serial);
    add(fields, c::ReportFirmware, facts.firmware);
    add(fields, c::OperatorFrame,
        calibration.operatorNow.isEmpty() ? calibration.operatorOnFile : calibration.operatorNow);
    const auto [firstZero, lastData] = firstZeroLastData(record);
    add(fields, c::ReportFirstZero, dateOrNothing(firstZero));
    add(fields, c::ReportLastData, dateOrNothing(lastData));
    // The load the points' expected loads were made with: Fz = −W at every point.
    const CalPoint& used = record.points[std::size_t(fit.points.front())];
    add(fields, c::LinearityColumnLoad, formatNumber(-used.expectedLoad[0], u"0.000"));
    add(fields, c::FileFrame, facts.calFileName);
    return section;
}

ReportSection conditionsSection(const CalEnvironment& environment) {
    ReportSection section{.heading = caption(c::ConditionsFrame)};
    auto& fields = section.fields;
    add(fields, c::CTemp, formatGeneral(environment.temperature));
    add(fields, c::CRH, formatGeneral(environment.humidity));
    add(fields, c::CPres, formatGeneral(environment.pressure));
    add(fields, c::ReportPressureCorrection, formatGeneral(environment.pressureCorrection));
    add(fields, c::ReportGravity, formatGeneral(environment.gravity));
    return section;
}

ReportSection scalingSection(const CalibrationRecord& record, const CalMatrix& matrix) {
    ReportSection section{.heading = caption(c::ScalingFrame)};
    const bool performed = std::any_of(record.steps.begin(), record.steps.end(),
                                       [](const LinearityStep& step) { return step.done; });
    if (performed)
        section.table = ReportTable{heads(c::LinearityColumnFz, 4),
                                    LinearityScaling::gridRows(matrix, record.steps)};
    else
        add(section.fields, c::ReportLinearity, strings::text(c::ReportNotPerformed));
    add(section.fields, c::ScalingValueFrame, formatNumber(record.scaleValue, u"0.0000"));
    // Without a step the suggestion is no finding, only the rule's starting value.
    if (performed)
        add(section.fields, c::ScaleSuggested,
            formatNumber(LinearityScaling::suggestedValue(matrix, record.steps), u"0.0000"));
    return section;
}

} // namespace

std::optional<CalibrationReport> CalibrationReport::build(const Calibration& calibration,
                                                          const ReportFacts& facts) {
    if (!calibration.fit || calibration.fit->points.empty() ||
        !MatrixFit::matches(*calibration.fit, calibration.record.points))
        return std::nullopt;
    const FitResult& fit = *calibration.fit;
    const CalibrationRecord& record = calibration.record;
    const CalMatrix scaled = LinearityScaling::scaled(fit.matrix, record.scaleValue);
    const auto& uncertainty = fit.diagnostics.uncertainty;

    CalibrationReport report;
    report.title = strings::text(c::ReportTitle);
    report.pageNumbers = strings::text(c::ReportPageNumbers);
    report.plate = PlateDrawing::of(calibration, record.pointRadius);
    report.plate.current = -1;

    ReportSection fitted{.heading = caption(c::ReportFittedMatrix),
                         .table = matrixTable(fit.matrix, uncertainty, 1.0)};
    fitted.notes << strings::text(c::MatrixCaption)
                 << FitSummary::text(fit, FitSummary::Uncertainty::ShownApart).split(u'\n');
    ReportSection scaledSection{
        .heading = caption(c::ReportScaledMatrix),
        .table = matrixTable(scaled, uncertainty, std::abs(double(record.scaleValue))),
        .notes = {strings::text(c::ScaledMatrixCaption),
                  strings::text(facts.plateMatrix == committedCells(scaled)
                                    ? c::ReportScaledHeld
                                    : c::ReportScaledNotWritten)}};
    report.pages.push_back(
        {{plateSection(calibration, fit, facts), conditionsSection(record.environment), fitted,
          scaledSection, scalingSection(record, fit.matrix)}});

    ReportSection picture{.heading = caption(c::ReportPicture), .picture = true};
    ReportSection errors{.heading = caption(c::ErrorsFrame),
                         .table = ReportTable{heads(c::ErrorsColumnPoint, 4), {}}};
    for (const FitErrorRow& row : fit.errors)
        errors.table->rows.push_back(errorRowTexts(row));
    ReportSection limits{.heading = caption(c::ReportLimits)};
    add(limits.fields, c::ReportMaxZeroStdDev, formatGeneral(facts.maxZeroStdDev));
    add(limits.fields, c::ReportMaxDataStdDev, formatGeneral(facts.maxDataStdDev));
    report.pages.push_back({{picture, errors, limits}});
    return report;
}

} // namespace kx
