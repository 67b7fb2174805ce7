#include "calibration/CalFileReader.h"
#include "calibration/CalFileWriter.h"
#include "calibration/CalibrationSession.h"
#include "calibration/CalibrationTexts.h"
#include "calibration/PlateCommit.h"
#include "device/PlateDevice.h"
#include "resources/StringTable.h"
#include "support/Clock.h"
#include "support/Folders.h"
#include "support/NumberFormat.h"
#include "support/NumberInput.h"
#include "support/Prompt.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <algorithm>

// What the session keeps: the work kept safe between runs, the questions that guard it, and
// the calibration files and report.
namespace kx {

namespace {

namespace c = strings::calibrate;

// The plate whose calibration a file holds, from its name "<serial>_<number>.cal"; empty when
// the name does not say.
QString serialOfFileName(const QString& path) {
    static const QRegularExpression pattern(QStringLiteral("^(.+)_\\d+$"));
    const QRegularExpressionMatch match = pattern.match(QFileInfo(path).completeBaseName());
    return match.hasMatch() ? match.captured(1) : QString();
}

QString summaryOf(const CalibrationRecord& record) {
    const auto taken = [](const auto& items, auto done) {
        return std::count_if(items.begin(), items.end(), done);
    };
    return strings::text(c::WorkSummary)
        .arg(taken(record.points, [](const CalPoint& p) { return p.dataDone; }))
        .arg(record.points.size())
        .arg(taken(record.steps, [](const LinearityStep& s) { return s.done; }))
        .arg(record.steps.size());
}

} // namespace

// --- Kept work --------------------------------------------------------------------------

bool CalibrationSession::hasWorkAtRisk() const {
    return m_calibration.record != m_savedRecord;
}

QString CalibrationSession::workSummary() const {
    return summaryOf(m_calibration.record);
}

void CalibrationSession::offerKeptWork() {
    if (!m_recovery->exists())
        return;
    QString why;
    std::optional<KeptWork> work = m_recovery->read(why);
    if (!work) {
        const QString aside = m_recovery->setAside();
        m_prompt.critical(strings::text(c::RecoveryUnreadable)
                              .arg(m_serial, why, QDir::toNativeSeparators(aside)));
        return;
    }
    const QString summary = summaryOf(work->calibration.record);
    const Question offer{
        strings::text(c::RecoveryOffer)
            .arg(m_serial, dateTimeText(OleDate::fromDateTime(work->keptAt)), summary),
        {strings::text(c::ChoiceRestore), strings::text(c::ChoiceDiscard)},
        0,
        0};
    if (m_prompt.ask(offer) == 1 &&
        confirmDiscard(strings::text(c::RecoveryDiscardConfirm).arg(m_serial, summary),
                       c::ChoiceKeep)) {
        m_recovery->remove();
        return;
    }
    restore(std::move(*work));
}

void CalibrationSession::restore(KeptWork work) {
    Calibration restored = std::move(work.calibration);
    restored.operatorOnFile = m_plateOperator;
    m_form.operatorCode = restored.operatorNow;
    m_form.temperature = work.temperature;
    m_form.humidity = work.humidity;
    m_form.pressure = work.pressure;
    m_kept = restored.record;
    // What a file holds of this work is not known: all of it is at risk until it is saved.
    replaceCalibration(std::move(restored), work.openFile, m_savedRecord);
}

void CalibrationSession::replaceCalibration(Calibration calibration, const QString& openFile,
                                            const CalibrationRecord& saved) {
    m_calibration = std::move(calibration);
    m_savedRecord = saved;
    m_openFile = openFile;
    m_form.scale = formatNumber(m_calibration.record.scaleValue, u"0.0000");
    fitNow();
    recordChanged();
    Q_EMIT formChanged();
    Q_EMIT currentPointChanged(m_calibration.currentPoint);
    Q_EMIT changed();
}

CalibrationSession::KeepChoice CalibrationSession::askToKeepWork(int question) {
    const QString summary = workSummary();
    const Question ask{strings::text(question).arg(summary),
                       {strings::text(c::ChoiceSave), strings::text(c::ChoiceDiscard),
                        strings::text(c::ChoiceGoBack)},
                       2,
                       2};
    switch (m_prompt.ask(ask)) {
    case 0:
        return save() ? KeepChoice::Saved : KeepChoice::Stay;
    case 1:
        return confirmDiscard(strings::text(c::DiscardConfirm).arg(summary), c::ChoiceGoBack)
                   ? KeepChoice::Discarded
                   : KeepChoice::Stay;
    default:
        return KeepChoice::Stay;
    }
}

bool CalibrationSession::confirmDiscard(const QString& text, int keepChoice) {
    const Question confirm{
        text, {strings::text(c::ChoiceDiscard), strings::text(keepChoice)}, 1, 1};
    return m_prompt.ask(confirm) == 0;
}

void CalibrationSession::recordChanged() {
    if (!m_recovery)
        return;
    if (!hasWorkAtRisk()) {
        if (m_recovery->exists())
            m_recovery->remove();
        m_kept.reset();
        return;
    }
    if (m_kept && *m_kept == m_calibration.record && m_recovery->exists())
        return;
    const KeptWork work{m_serial,           m_clock.currentDateTime(), m_calibration,  m_openFile,
                        m_form.temperature, m_form.humidity,           m_form.pressure};
    const SaveResult kept = m_recovery->write(work);
    if (!kept) {
        if (!std::exchange(m_keepingFailed, true))
            m_prompt.critical(strings::text(c::RecoveryNotKept)
                                  .arg(QDir::toNativeSeparators(m_recovery->path()), kept.error));
        return;
    }
    m_keepingFailed = false;
    m_kept = m_calibration.record;
}

void CalibrationSession::discardKeptWork() {
    if (m_recovery)
        m_recovery->remove();
    m_kept.reset();
}

bool CalibrationSession::mayLeave() {
    if (!hasWorkAtRisk())
        return true;
    switch (askToKeepWork(c::LeaveQuestion)) {
    case KeepChoice::Saved:
        return true;
    case KeepChoice::Discarded:
        discardKeptWork();
        return true;
    case KeepChoice::Stay:
        return false;
    }
    return false;
}

// --- Save, open, report -----------------------------------------------------------------

bool CalibrationSession::operatorGiven() {
    if (!m_form.operatorCode.trimmed().isEmpty())
        return true;
    m_prompt.critical(strings::text(c::InvalidOperator));
    return false;
}

bool CalibrationSession::conditionsGiven() {
    for (const QString* box : {&m_form.temperature, &m_form.humidity, &m_form.pressure}) {
        if (box->trimmed().isEmpty()) {
            m_prompt.critical(strings::text(c::MissingConditions));
            return false;
        }
        if (!parseNumber(*box)) {
            m_prompt.critical(strings::text(c::InvalidCondition));
            return false;
        }
    }
    return true;
}

void CalibrationSession::readConditions(CalEnvironment& environment) const {
    environment.temperature = static_cast<float>(*parseNumber(m_form.temperature));
    environment.humidity = static_cast<float>(*parseNumber(m_form.humidity));
    environment.pressure = *parseNumber(m_form.pressure);
}

bool CalibrationSession::save() {
    if (!operatorGiven() || !conditionsGiven())
        return false;
    Calibration& c = m_calibration;
    readConditions(c.record.environment);
    QString path = m_openFile;
    if (path.isEmpty()) {
        CreateFolderPath(m_settings.LastFilePath);
        path = nextCalFileName(m_settings.LastFilePath, m_serial);
    }
    if (const SaveResult saved = saveCalFile(path, c.record); !saved) {
        // Everything stays as it was, to be saved again.
        m_prompt.critical(strings::text(c::FileNotSaved).arg(QDir::toNativeSeparators(path)) +
                          QStringLiteral("\n\n") + saved.error);
        return false;
    }
    m_openFile = path;
    m_settings.LastFilePath = FolderOfPath(path);
    c.unsavedChanges = false;
    c.serialOnFile = serialOfFileName(path);
    c.operatorOnFile = c.operatorNow;
    m_savedRecord = c.record;
    recordChanged();
    Q_EMIT changed();
    return true;
}

void CalibrationSession::open() {
    if (m_activity != Activity::Idle)
        return;
    const KeepChoice kept = hasWorkAtRisk() ? askToKeepWork(c::OpenQuestion) : KeepChoice::Saved;
    if (kept == KeepChoice::Stay)
        return;
    FileDialogRequest request;
    request.title = strings::text(c::FileDialogTitle);
    request.filter = strings::text(c::FileDialogFilter);
    request.defaultExtension = strings::text(c::FileDialogExtension);
    request.initialFolder = m_settings.LastFilePath;
    request.fileMustExist = true;
    request.pathMustExist = true;
    const std::optional<QString> path = m_prompt.openFileName(request);
    if (!path)
        return;
    // What an older file does not hold comes from the settings, never from the calibration
    // open before: the profile's gravity and pressure correction, no conditions.
    const Calibration fresh = Calibration::fromSettings(m_settings);
    CalFileReader reader(fresh.record.environment, m_settings.LinearityLoads);
    std::optional<CalibrationRecord> record = reader.readFile(*path);
    if (!record) {
        m_prompt.critical(reader.errorString());
        return;
    }
    if (kept == KeepChoice::Discarded)
        discardKeptWork();
    Calibration opened = fresh;
    opened.record = std::move(*record);
    opened.operatorNow = m_form.operatorCode.trimmed();
    opened.serialOnFile = serialOfFileName(*path);
    opened.operatorOnFile = m_plateOperator;
    const CalEnvironment& environment = opened.record.environment;
    m_form.temperature = formatGeneral(environment.temperature);
    m_form.humidity = formatGeneral(environment.humidity);
    m_form.pressure = formatGeneral(environment.pressure);
    m_settings.LastFilePath = FolderOfPath(*path);
    const CalibrationRecord saved = opened.record;
    replaceCalibration(std::move(opened), *path, saved);
    if (isOtherPlates())
        m_prompt.critical(strings::text(c::OtherPlateOpened).arg(plateOnFile(), m_serial));
}

bool CalibrationSession::isOtherPlates() const {
    return m_plate && !m_openFile.isEmpty() && m_calibration.serialOnFile != m_serial;
}

QString CalibrationSession::plateOnFile() const {
    return m_calibration.serialOnFile.isEmpty() ? strings::text(c::UnknownPlate)
                                                : m_calibration.serialOnFile;
}

std::optional<CalibrationSession::ReportRequest> CalibrationSession::prepareReport() {
    switch (m_calibration.fitState()) {
    case Calibration::FitState::Absent:
        m_prompt.critical(strings::text(c::ReportWithoutFit));
        return std::nullopt;
    case Calibration::FitState::Stale:
        m_prompt.critical(strings::text(c::ReportWithStaleFit));
        return std::nullopt;
    case Calibration::FitState::Current:
        break;
    }
    // The certificate states the conditions as a save would keep them.
    if (!conditionsGiven())
        return std::nullopt;
    Calibration reported = m_calibration;
    readConditions(reported.record.environment);
    ReportFacts facts{.serial = reported.serialOnFile,
                      .firmware = {},
                      .calFileName = QFileInfo(m_openFile).fileName(),
                      .maxZeroStdDev = m_settings.MaxZeroStdDev,
                      .maxDataStdDev = m_settings.MaxDataStdDev};
    if (facts.serial.isEmpty())
        facts.serial = m_serial;
    // Another plate's firmware or matrix would be no fact about this calibration's plate.
    if (m_plate && facts.serial == m_serial) {
        plateCall([&] {
            facts.firmware = QString::number(m_plate->FirmwareMajor()) + u'.' +
                             QString::number(m_plate->FirmwareMinor());
            facts.plateMatrix = readPlateMatrix(*m_plate);
        });
    }
    std::optional<CalibrationReport> report = CalibrationReport::build(reported, facts);
    if (!report)
        return std::nullopt;
    // Named after the calibration file, or the one the next save would write.
    const QString calFile =
        m_openFile.isEmpty() ? nextCalFileName(m_settings.LastFilePath, facts.serial) : m_openFile;
    return ReportRequest{std::move(*report), QFileInfo(calFile).completeBaseName()};
}

void CalibrationSession::reportWritten(const QString& path) {
    m_settings.LastFilePath = FolderOfPath(path);
}

} // namespace kx
