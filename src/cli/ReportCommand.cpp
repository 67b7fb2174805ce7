#include "cli/ReportCommand.h"

#include "calibration/CalFileReader.h"
#include "calibration/Calibration.h"
#include "calibration/CalibrationReport.h"
#include "calibration/CalibrationReportPdf.h"
#include "calibration/CalibrationSettings.h"
#include "calibration/LinearityScaling.h"
#include "cli/CalFileFit.h"
#include "cli/Console.h"
#include "cli/ExitCode.h"
#include "resources/StringTable.h"
#include "support/IniFile.h"

#include <QDir>
#include <QFileInfo>

namespace kx::cli {

ReportCommand::ReportCommand(Console& console, QString file, QString output, QString operatorCode,
                             QObject* parent)
    : Command(console, parent)
    , m_file(std::move(file))
    , m_output(std::move(output))
    , m_operator(std::move(operatorCode)) {}

void ReportCommand::start() {
    const QString name = QDir::toNativeSeparators(m_file);
    const QString output = QDir::toNativeSeparators(m_output);
    const QFileInfo target(m_output);
    if (target.isDir() || !target.absoluteDir().exists()) {
        fail(FileError, output + QStringLiteral(": no such folder to write the report in"));
        return;
    }
    const CalibrationSettings settings = CalibrationSettings::load(IniFile::sharedProfile());
    Calibration calibration = Calibration::fromSettings(settings);
    CalFileReader reader(calibration.record.environment, settings.LinearityLoads);
    std::optional<CalibrationRecord> record = reader.readFile(m_file);
    if (!record) {
        fail(FileError, name + QStringLiteral(": ") + oneLine(reader.errorString()));
        return;
    }
    calibration.record = std::move(*record);
    calibration.operatorNow = m_operator;
    const QString baseName = QFileInfo(m_file).completeBaseName();
    calibration.serialOnFile = baseName.left(baseName.lastIndexOf(u'_'));

    CalFileFit fit = fitCalibration(calibration.record, FitEngineChoice::BuiltIn);
    if (!fit.outcome.result) {
        fail(FileError, name + QStringLiteral(": ") + oneLine(fit.outcome.error));
        return;
    }
    calibration.matrix = fit.outcome.result->matrix;
    calibration.fit = std::move(fit.outcome.result);
    calibration.scaledMatrix =
        LinearityScaling::scaled(calibration.matrix, calibration.record.scaleValue);

    const ReportFacts facts{.serial = calibration.serialOnFile,
                            .firmware = {},
                            .calFileName = QFileInfo(m_file).fileName(),
                            .maxZeroStdDev = settings.MaxZeroStdDev,
                            .maxDataStdDev = settings.MaxDataStdDev};
    const std::optional<CalibrationReport> report = CalibrationReport::build(calibration, facts);
    if (!report) {
        fail(FileError, name + QStringLiteral(": no matrix to certify"));
        return;
    }
    if (!writeReportPdf(*report, m_output)) {
        fail(FileError, oneLine(strings::text(strings::calibrate::ReportNotWritten).arg(output)));
        return;
    }
    console().progress(name + QStringLiteral(": report written in ") + output);
    finish(Success);
}

} // namespace kx::cli
