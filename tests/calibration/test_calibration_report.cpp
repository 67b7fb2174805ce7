#include "../support/PrintQString.h"
#include "CalibrationSimBench.h"
#include "calibration/BuiltInFitEngine.h"
#include "calibration/CalFileReader.h"
#include "calibration/CalFileWriter.h"
#include "calibration/CalibrationReport.h"
#include "calibration/CalibrationReportPdf.h"
#include "calibration/LinearityScaling.h"
#include "calibration/PlateCommit.h"
#include "support/DateFormat.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace kx::test {
namespace {

QDateTime at(int hour, int minute) {
    return QDateTime(QDate(2026, 6, 1), QTime(hour, minute));
}

QString shown(int hour, int minute) {
    return formatShortDate(QDate(2026, 6, 1)) + QStringLiteral(" %1:%2:00")
                                                    .arg(hour, 2, 10, QChar(u'0'))
                                                    .arg(minute, 2, 10, QChar(u'0'));
}

// A calibration whose every printed number is chosen here: four points (data at 1, 2 and 4),
// the first weight of the linearity check loaded and unloaded, and a fit made up for the points
// with data, point 2 flagged.
Calibration knownCalibration() {
    Calibration c;
    CalibrationRecord& r = c.record;
    r.plateXLeft = -0.4064f;
    r.plateXRight = 0.4064f;
    r.plateYTop = 0.5588f;
    r.plateYBottom = -0.2032f;
    const std::array<QDateTime, 4> zeros{at(8, 0), at(8, 10), at(8, 20), at(7, 50)};
    const std::array<QDateTime, 4> data{at(8, 5), at(8, 15), {}, at(8, 40)};
    for (std::size_t i = 0; i < 4; ++i) {
        CalPoint p;
        p.x = 0.1 * double(i);
        p.y = 0.2;
        p.expectedLoad = {-245.0, -49.0, 24.5 * double(i)};
        p.zeroDone = true;
        p.zeroDate = OleDate::fromDateTime(zeros[i]);
        p.dataDone = data[i].isValid();
        p.dataDate = OleDate::fromDateTime(data[i]);
        p.dataMean = {0.1 - 0.01 * double(i), 0.08 + 0.01 * double(i * i), 0.06};
        r.points.push_back(p);
    }
    for (const float load : {245.f, 490.f, 735.f, 980.f, 980.f, 735.f, 490.f, 245.f})
        r.steps.push_back({false, {}, 0, {}, {}, load});
    // Fz = 1000 × the sum of the means: 245.0 N loaded, 245.2 N unloaded.
    r.steps[0] = {true, OleDate::fromDateTime(at(9, 5)), 0, {0.1, 0.1, 0.045}, {}, 245.f};
    r.steps[7] = {true, OleDate::fromDateTime(at(9, 10)), 0, {0.1, 0.1, 0.0452}, {}, 245.f};
    r.scaleValue = 1.25f;
    r.environment = {9.796878, 22.5f, 41.f, 1013.2, 5.210406};

    FitResult fit;
    fit.points = {0, 1, 3};
    fit.matrix = {
        {{-1000.f, -1000.f, -1000.f}, {-400.5f, 250.25f, 600.125f}, {-800.75f, 799.5f, 1.5f}}};
    fit.errors = {{0, 0.0123, -0.0004567, 0.0001234},
                  {1, -0.0456, 0.00089, -0.00111},
                  {3, 0.0071, 0.0000004, -0.0000016}};
    fit.diagnostics.conditionNumber = 12.3;
    fit.diagnostics.residualRms = {0.0321, 0.00456, 0.00789};
    fit.diagnostics.uncertainty = {
        {{0.0234, 0.0456, 0.0789}, {0.1111, 0.2222, 0.3333}, {0.0004, 0.0016, 0.0051}}};
    fit.diagnostics.degreesOfFreedom = 7;
    fit.diagnostics.coverageFactor = 2.3646;
    fit.diagnostics.flagged = {false, true, false};
    QString refused;
    fit.problem = MatrixFit::pose(r.points, refused).value();
    c.fit = fit;
    c.operatorNow = QStringLiteral("JD7");
    c.operatorOnFile = QStringLiteral("AB");
    return c;
}

ReportFacts knownFacts() {
    return {QStringLiteral("30417"), QStringLiteral("2.3"), QStringLiteral("30417_1.cal"), 1024.f,
            0.002f};
}

const ReportSection& section(const CalibrationReport& report, const QString& heading) {
    for (const ReportPage& page : report.pages)
        for (const ReportSection& s : page.sections)
            if (s.heading == heading)
                return s;
    throw std::runtime_error("no section " + heading.toStdString());
}

using Fields = std::vector<ReportField>;

TEST(CalibrationReport, StatesEveryFactOfAKnownCalibrationAndLeavesOutWhatIsNotKnown) {
    // value() throws, and so fails the test, when no report is made.
    const CalibrationReport report =
        CalibrationReport::build(knownCalibration(), knownFacts()).value();
    EXPECT_EQ(report.title, "Force Platform Calibration Certificate");
    EXPECT_EQ(report.pages.size(), 2u);

    // The first zero is point 4's, the last data the linearity unload's.
    EXPECT_EQ(section(report, "Force Platform").fields,
              (Fields{{"Serial Number", "30417"},
                      {"Firmware Version", "2.3"},
                      {"Operator", "JD7"},
                      {"First Zero", shown(7, 50)},
                      {"Last Data Acquisition", shown(9, 10)},
                      {"Load [N]", "245.000"},
                      {"Calibration File", "30417_1.cal"}}));
    EXPECT_EQ(section(report, "Environmental Conditions").fields,
              (Fields{{"T (°C)", "22.5"},
                      {"RHumidity (%)", "41"},
                      {"Pressure (hPa)", "1013.2"},
                      {"Pressure Correction", "5.210406"},
                      {"Gravity (m/s²)", "9.796878"}}));

    const ReportSection& fitted =
        section(report, "Fitted Matrix (each element ± its expanded uncertainty, about 95 %)");
    EXPECT_EQ(fitted.table,
              (ReportTable{{"", "ch 1", "ch 2", "ch 3"},
                           {{"Fz", "-1000.000 ±0.023", "-1000.000 ±0.046", "-1000.000 ±0.079"},
                            {"Mx", "-400.500 ±0.111", "250.250 ±0.222", "600.125 ±0.333"},
                            {"My", "-800.750 ±0.000", "799.500 ±0.002", "1.500 ±0.005"}}}));
    EXPECT_TRUE(fitted.notes.contains("N or Nm per V read by converter @ 1V Bridge Excit."));
    EXPECT_TRUE(fitted.notes.contains("Point spread: good (condition number 12)."));
    EXPECT_TRUE(fitted.notes.contains("Scatter left: Fz 0.032 N, Mx 0.0046 N·m, My 0.0079 N·m."));
    EXPECT_FALSE(fitted.notes.join(u' ').contains("tips")) << "each element states its own";
    EXPECT_TRUE(fitted.notes.join(u' ').contains("k = 2.36 (Student's t on 7 degrees"));

    // Scaled by 1.25, the uncertainties with it; not in the plate before OK.
    const ReportSection& scaled =
        section(report, "Scaled Matrix (each element ± its expanded uncertainty, about 95 %)");
    EXPECT_EQ(scaled.notes.back(),
              "Not yet written to the plate: OK in the calibration dialog writes it.");
    ASSERT_TRUE(scaled.table);
    EXPECT_EQ(scaled.table->rows[0],
              QStringList({"Fz", "-1250.000 ±0.029", "-1250.000 ±0.057", "-1250.000 ±0.099"}));
    EXPECT_EQ(scaled.table->rows[1][3], "750.156 ±0.417");

    EXPECT_TRUE(
        section(report, "Points and Centre-of-Pressure Errors (plate top to scale)").picture);
    EXPECT_EQ(section(report, "Errors").table,
              (ReportTable{{"Point", "Fz [N]", "X [m]", "Y [m]"},
                           {{"1", "0.012", "-0.000457", "0.000123"},
                            {"2", "-0.046", "0.000890", "-0.001110"},
                            {"4", "0.007", "0.000000", "-0.000002"}}}));

    // Only the first weight was loaded and unloaded.
    const ReportSection& scaling = section(report, "Calibration Scaling");
    EXPECT_EQ(scaling.table, (ReportTable{{"Fz [N]", "Load [N]", "Unload [N]", "Scale"},
                                          {{"245.000", "245.000", "245.200", "1.0004"},
                                           {"490.000", "", "", ""},
                                           {"735.000", "", "", ""},
                                           {"980.000", "", "", ""}}}));
    // Ratios 1.0 and 245.2 / 245: 2 / 2.000816 is 0.99959.
    EXPECT_EQ(scaling.fields, (Fields{{"Scaling Value", "1.2500"}, {"Suggested", "0.9996"}}));

    EXPECT_EQ(section(report, "Acceptance Limits").fields,
              (Fields{{"Max Zero StdDev (converter codes)", "1024"},
                      {"Max Data StdDev (normalized V)", "0.002"}}));

    // The picture: the plate's extents, each point's state and its arrow, no current point.
    EXPECT_EQ(report.plate.current, -1);
    ASSERT_EQ(report.plate.marks.size(), 4u);
    EXPECT_DOUBLE_EQ(report.plate.right, double(0.4064f));
    EXPECT_FALSE(report.plate.marks[2].data);
    EXPECT_FALSE(report.plate.marks[2].copError);
    ASSERT_TRUE(report.plate.marks[3].copError);
    EXPECT_DOUBLE_EQ(report.plate.marks[3].copError->y(), -0.0000016);
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(report.plate.marks[i].flagged, i == 1) << "the fit's second point is point 2";

    // Facts nobody knows are left out rather than printed blank; the operator on file stands in
    // for a current one not given.
    Calibration c = knownCalibration();
    c.operatorNow.clear();
    ReportFacts facts = knownFacts();
    facts.firmware.clear();
    facts.calFileName.clear();
    EXPECT_EQ(section(CalibrationReport::build(c, facts).value(), "Force Platform").fields,
              (Fields{{"Serial Number", "30417"},
                      {"Operator", "AB"},
                      {"First Zero", shown(7, 50)},
                      {"Last Data Acquisition", shown(9, 10)},
                      {"Load [N]", "245.000"}}));

    c.fit.reset();
    EXPECT_FALSE(CalibrationReport::build(c, facts)) << "no matrix, no certificate";
}

// The report says what is true when it is made: whether the plate holds the scaled matrix,
// that no linearity check was made, and it states no matrix that is no longer the fit of the
// calibration's points.
TEST(CalibrationReport, SaysWhatHasBeenDoneAndRefusesAFitItsPointsNoLongerGive) {
    Calibration c = knownCalibration();
    for (LinearityStep& step : c.record.steps)
        step.done = false;
    ReportFacts facts = knownFacts();
    // The plate holds what OK writes: each cell as the text the matrix boxes show.
    const CalMatrix written =
        committedCells(LinearityScaling::scaled(c.fit->matrix, c.record.scaleValue));
    CalMatrix oneCellOff = written;
    oneCellOff[2][1] = std::nextafter(oneCellOff[2][1], 0.0f);
    const std::pair<std::optional<CalMatrix>, const char*> held[] = {
        {written, "The plate holds this matrix."},
        {oneCellOff, "Not yet written to the plate: OK in the calibration dialog writes it."},
        {std::nullopt, "Not yet written to the plate: OK in the calibration dialog writes it."}};
    for (const auto& [plate, said] : held) {
        facts.plateMatrix = plate;
        const CalibrationReport report = CalibrationReport::build(c, facts).value();
        EXPECT_EQ(
            section(report, "Scaled Matrix (each element ± its expanded uncertainty, about 95 %)")
                .notes.back(),
            said);
    }
    const CalibrationReport report = CalibrationReport::build(c, facts).value();
    const ReportSection& scaling = section(report, "Calibration Scaling");
    EXPECT_FALSE(scaling.table);
    EXPECT_EQ(scaling.fields,
              (Fields{{"Linearity Check", "not performed"}, {"Scaling Value", "1.2500"}}));

    const auto stale = [](void (*change)(Calibration&)) {
        Calibration changed = knownCalibration();
        change(changed);
        return !CalibrationReport::build(changed, knownFacts()) &&
               !PlateDrawing::of(changed, 0.025).marks[0].copError;
    };
    EXPECT_TRUE(stale([](Calibration& k) { k.record.points[3].dataDone = false; }))
        << "data cleared by a new zero";
    EXPECT_TRUE(stale([](Calibration& k) { k.record.points[2].dataDone = true; }))
        << "data at another point";
    EXPECT_TRUE(stale([](Calibration& k) { k.record.points[1].dataMean[2] += 1e-7; }))
        << "data taken again";
    EXPECT_TRUE(stale([](Calibration& k) { k.record.points[0].expectedLoad[0] = -250; }))
        << "another load";
    EXPECT_FALSE(stale([](Calibration& k) { k.record.points[2].zeroDone = false; }))
        << "a zero at a point without data changes no fit";
}

// A full calibration on the simulated plate, saved and opened again: the file keeps everything
// the report states, so the report is the same once the matrix is computed again.
TEST(CalibrationReport, ACalibrationReopenedFromItsFileGivesTheSameReport) {
    CalibrationSimBench bench(11, true);
    bench.walkThePoints();
    bench.runLinearity(0, 0);
    BuiltInFitEngine engine;
    Calibration& made = bench.calibration;
    made.fit = MatrixFit::compute(made.record.points, engine).result;
    made.record.scaleValue = 1.0012f;
    made.record.environment = knownCalibration().record.environment;
    made.operatorNow = QStringLiteral("JD7");

    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("30177_1.cal"));
    ASSERT_TRUE(saveCalFile(path, made.record));
    CalFileReader reader(CalEnvironment{}, {});
    std::optional<CalibrationRecord> record = reader.readFile(path);
    ASSERT_TRUE(record) << reader.errorString().toStdString();
    Calibration opened = Calibration::fromSettings(bench.settings);
    opened.record = std::move(*record);
    opened.fit = MatrixFit::compute(opened.record.points, engine).result;
    opened.operatorNow = QStringLiteral("JD7");

    const std::optional<CalibrationReport> before = CalibrationReport::build(made, knownFacts());
    const std::optional<CalibrationReport> after = CalibrationReport::build(opened, knownFacts());
    ASSERT_TRUE(before && after);
    EXPECT_EQ(*after, *before);
    EXPECT_EQ(section(*after, "Errors").table->rows.size(), 10u);
    EXPECT_EQ(section(*after, "Environmental Conditions").fields[0].value, "22.5");
}

// The cells of a row on one line, in their order.
bool hasRow(const QString& text, const QStringList& cells) {
    QStringList quoted;
    for (const QString& cell : cells)
        if (!cell.isEmpty())
            quoted << QRegularExpression::escape(cell);
    return text.contains(QRegularExpression(quoted.join(QStringLiteral("\\s+"))));
}

// Read back as text, the file holds every heading, field and table row of the report; a file
// that cannot be written leaves nothing behind, not even its temporary.
// The text of a written report, as pdftotext reads it.
QString pdfText(const QString& path) {
    QProcess pdftotext;
    pdftotext.start(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), path, "-"});
    EXPECT_TRUE(pdftotext.waitForFinished(60000) && pdftotext.exitCode() == 0)
        << "pdftotext (poppler-utils) reads the file";
    return QString::fromUtf8(pdftotext.readAllStandardOutput());
}

TEST(CalibrationReportPdf, HoldsTheReportsTextOnTwoPagesOrNothingAtAll) {
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("30417_1.pdf"));
    for (const bool linearityChecked : {true, false}) {
        Calibration calibration = knownCalibration();
        for (LinearityStep& step : calibration.record.steps)
            step.done = step.done && linearityChecked;
        // value() throws, and so fails the test, when no report is made.
        const CalibrationReport report =
            CalibrationReport::build(calibration, knownFacts()).value();
        ASSERT_TRUE(writeReportPdf(report, path));
        const QString text = pdfText(path);
        EXPECT_EQ(text.count(u'\f'), 2) << "two pages";
        EXPECT_TRUE(text.contains("Page 2 of 2"));
        for (const ReportPage& page : report.pages) {
            for (const ReportSection& s : page.sections) {
                EXPECT_TRUE(text.contains(s.heading)) << s.heading.toStdString();
                for (const ReportField& field : s.fields)
                    EXPECT_TRUE(hasRow(text, {field.label, field.value}))
                        << field.label.toStdString() << " " << field.value.toStdString();
                if (!s.table)
                    continue;
                for (const QStringList& row : s.table->rows)
                    EXPECT_TRUE(hasRow(text, row)) << row.join(u'|').toStdString();
            }
        }
        EXPECT_TRUE(text.contains("Not yet written to the plate"));
        EXPECT_FALSE(text.contains("Matrix, written to the plate"));
        EXPECT_EQ(text.contains("not performed"), !linearityChecked);
    }

    ASSERT_TRUE(QFile::remove(path));
    EXPECT_FALSE(writeReportPdf(CalibrationReport::build(knownCalibration(), knownFacts()).value(),
                                folder.filePath(QStringLiteral("missing/30417_1.pdf"))));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries),
              QStringList());
}

} // namespace
} // namespace kx::test
