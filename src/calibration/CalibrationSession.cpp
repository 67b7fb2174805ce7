#include "calibration/CalibrationSession.h"

#include "calibration/AcquisitionPlan.h"
#include "calibration/BuiltInFitEngine.h"
#include "calibration/CalFileReader.h"
#include "calibration/CalFileWriter.h"
#include "calibration/CalibrationTexts.h"
#include "calibration/LinearityScaling.h"
#include "calibration/MatrixFit.h"
#include "calibration/OctaveFitEngine.h"
#include "calibration/OctaveFitRun.h"
#include "calibration/PlateCommit.h"
#include "calibration/PointTable.h"
#include "device/PlateDevice.h"
#include "device/PlateError.h"
#include "resources/ResourceFiles.h"
#include "resources/StringTable.h"
#include "support/Clock.h"
#include "support/Folders.h"
#include "support/IniFile.h"
#include "support/NumberFormat.h"
#include "support/NumberInput.h"
#include "support/Prompt.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <cmath>

namespace kx {

namespace {

namespace c = strings::calibrate;

constexpr int ProgressPeriodMs = 100;
constexpr auto VoltsFormat = u"0.000";

// The bridge excitation the converter accepts: at most 5 V, and above 0 (a box at 0 or below
// asks for the least it can give).
float clampExcitation(double volts) {
    if (volts <= 0)
        return 0.01f;
    return volts > 5 ? 5.0f : static_cast<float>(volts);
}

bool allFinite(const CalMatrix& matrix) {
    for (const auto& row : matrix)
        for (const float cell : row)
            if (!std::isfinite(cell))
                return false;
    return true;
}

} // namespace

struct CalibrationSession::PendingFit {
    FitProblem problem;
    std::vector<double> inputs;
};

CalibrationSession::CalibrationSession(Clock& clock, Prompt& prompt, QObject* parent)
    : QObject(parent)
    , m_clock(clock)
    , m_prompt(prompt)
    , m_progress(clock.createWallTimer(this)) // only shown: repaints at screen pace
    , m_octave(new OctaveFitRun(QStringLiteral("octave-cli"), clock, this)) {
    connect(m_octave, &OctaveFitRun::finished, this, &CalibrationSession::octaveFinished);
    connect(m_progress, &Timer::timeout, this, [this] {
        const auto elapsed = double(quint32(m_clock.tickCount() - m_running.startTick));
        Q_EMIT progressed(static_cast<qint32>(elapsed * double(m_frequency) / 1000.0));
    });
}

CalibrationSession::~CalibrationSession() = default;

void CalibrationSession::setFitProgram(const QString& program) {
    m_octave->setProgram(program);
}

// --- Load and close ----------------------------------------------------------------------

void CalibrationSession::begin(const CalibrationSettings& settings, PlateDevice* plate) {
    m_settings = settings;
    m_calibration = Calibration::fromSettings(settings);
    m_savedRecord = m_calibration.record;
    m_form.scale = formatNumber(m_calibration.record.scaleValue, u"0.0000");
    setStatus(c::StatusNoPlate);
    if (plate)
        attach(plate);
    Q_EMIT formChanged();
    Q_EMIT changed();
}

void CalibrationSession::attach(PlateDevice* plate) {
    m_plate = plate;
    const bool known = plateCall([&] {
        m_serial = plate->SerialNumber();
        m_form.excitation = formatNumber(plate->GageVoltage(Which::Current), VoltsFormat);
        m_frequency = plate->SampleFrequency(Which::Current);
        m_plateOperator = plate->CalibrationRecordOperator();
    });
    m_calibration.operatorOnFile = m_plateOperator;
    connect(plate, &PlateDevice::ZeroProgress, this, [this](qint32 samples) {
        if (m_activity == Activity::Zero)
            Q_EMIT progressed(samples);
    });
    connect(plate, &PlateDevice::ZeroDone, this,
            [this](qint32, const ChannelValues& average, const ChannelValues& deviation,
                   const ChannelValues&) { onZeroDone(average, deviation); });
    connect(plate, &PlateDevice::TestDone, this,
            [this](qint32 count, const QList<Float3>&, const QList<Float3>& volts) {
                onTestDone(count, volts);
            });
    setStatus(c::StatusReady);
    // Without its serial number the plate's kept work cannot be found, nor new work kept.
    if (known) {
        m_recovery.emplace(m_serial);
        offerKeptWork();
    }
}

void CalibrationSession::end(bool plateRemoved) {
    if (m_plate && !plateRemoved &&
        (m_activity == Activity::Zero || m_activity == Activity::Data || m_displaying))
        plateCall([this] { m_plate->StopAcquisition(); });
    if (m_plate)
        disconnect(m_plate, nullptr, this, nullptr);
    m_octave->cancel();
    m_pendingFit.reset();
    m_progress->stop();
    m_activity = Activity::Idle;
    m_displaying = false;
    m_settings.save(IniFile::sharedProfile());
}

// --- The form ---------------------------------------------------------------------------

void CalibrationSession::setOperatorCode(const QString& text) {
    m_form.operatorCode = text;
    m_calibration.operatorNow = text.trimmed();
}

void CalibrationSession::setCondition(Condition condition, const QString& text) {
    switch (condition) {
    case Condition::Temperature:
        m_form.temperature = text;
        break;
    case Condition::Humidity:
        m_form.humidity = text;
        break;
    case Condition::Pressure:
        m_form.pressure = text;
        break;
    }
}

void CalibrationSession::setDuration(const QString& text) {
    m_form.duration = text;
}

void CalibrationSession::setExcitation(const QString& text) {
    if (!m_plate || m_activity != Activity::Idle)
        return;
    const std::optional<double> volts = parseNumber(text);
    if (!volts)
        m_prompt.beep();
    plateCall([&] {
        if (volts)
            m_plate->SetGageVoltage(Which::Current, clampExcitation(*volts));
        m_form.excitation = formatNumber(m_plate->GageVoltage(Which::Current), VoltsFormat);
    });
    Q_EMIT formChanged();
}

// --- The points -------------------------------------------------------------------------

void CalibrationSession::announcePoint(int before) {
    if (m_calibration.currentPoint != before)
        Q_EMIT currentPointChanged(m_calibration.currentPoint);
    Q_EMIT changed();
}

void CalibrationSession::next() {
    if (m_activity != Activity::Idle)
        return;
    const int before = m_calibration.currentPoint;
    PointTable(m_calibration).next();
    announcePoint(before);
}

void CalibrationSession::click(QPointF plate) {
    if (m_activity != Activity::Idle)
        return;
    const int before = m_calibration.currentPoint;
    PointTable(m_calibration).click(plate.x(), plate.y(), double(m_settings.DisplayPointRadius));
    recordChanged(); // the point left may have lost its zero
    announcePoint(before);
}

// --- Acquisitions -----------------------------------------------------------------------

bool CalibrationSession::plateCall(const std::function<void()>& call) {
    return m_plate && runDeviceHandler(m_prompt, call);
}

void CalibrationSession::setStatus(int text) {
    setStatusText(strings::text(text));
}

void CalibrationSession::setStatusText(const QString& text) {
    m_status = text;
    Q_EMIT statusChanged(text);
}

void CalibrationSession::stopRunning() {
    const bool acquiring = m_activity == Activity::Zero || m_activity == Activity::Data;
    if (!acquiring && !m_displaying)
        return;
    plateCall([this] { m_plate->StopAcquisition(); });
    if (acquiring)
        m_activity = Activity::Idle;
    m_progress->stop();
    if (std::exchange(m_displaying, false))
        Q_EMIT displayChanged(false);
}

bool CalibrationSession::prepareAcquisition(qint32& samples) {
    return plateCall([&] {
        // Normalised volts taken at another excitation do not mix with those collected.
        const float now = m_plate->GageVoltage(Which::Current);
        if (const std::optional<float> wanted =
                compatibleExcitation(m_calibration.dataExcitation, now)) {
            m_plate->SetGageVoltage(Which::Current, *wanted);
            m_form.excitation = formatNumber(m_plate->GageVoltage(Which::Current), VoltsFormat);
            m_form.excitationNote = strings::text(c::ExcitationNote) + m_form.excitation;
        }
        m_running.excitation = m_plate->GageVoltage(Which::Current);
        m_frequency = m_plate->SampleFrequency(Which::Current);
        const AcquisitionPlan plan = AcquisitionPlan::from(m_form.duration, m_frequency);
        m_form.duration = plan.durationText;
        samples = plan.samples;
        Q_EMIT formChanged();
    });
}

void CalibrationSession::takeZero() {
    startZero(false);
}

void CalibrationSession::takeScalingZero() {
    startZero(true);
}

void CalibrationSession::takeData() {
    startData(-1);
}

void CalibrationSession::takeStep(int step) {
    if (step >= 0 && step < int(m_calibration.record.steps.size()))
        startData(step);
}

void CalibrationSession::startZero(bool scaling) {
    if (!m_plate || m_activity != Activity::Idle)
        return;
    stopRunning();
    qint32 samples = 0;
    if (!prepareAcquisition(samples))
        return;
    setStatus(c::StatusAcquiringZero);
    m_running.scaling = scaling;
    m_running.step = -1;
    if (!plateCall([&] {
            m_plate->FlushData();
            m_plate->CalibrateSelf();
            m_plate->StartZero(samples, true, 0);
        })) {
        setStatus(c::StatusReady);
        return;
    }
    m_activity = Activity::Zero;
    Q_EMIT acquisitionStarted(samples);
    Q_EMIT changed();
}

bool CalibrationSession::zeroIsTaken(int step) {
    const CalibrationRecord& record = m_calibration.record;
    if (step >= 0 ? record.scalingZero.done
                  : record.points[std::size_t(m_calibration.currentPoint)].zeroDone)
        return true;
    // Data against a missing zero would be read against whatever zero the plate holds.
    setStatusText(step >= 0 ? strings::text(c::NeedScalingZero)
                            : strings::text(c::NeedPointZero).arg(m_calibration.currentPoint + 1));
    return false;
}

void CalibrationSession::writeDeviceZero(const std::array<double, 4>& average) {
    const std::array<qint32, 3> codes = PointTable::deviceZero(average);
    for (int channel = 0; channel < 3; ++channel)
        m_plate->SetZeroValue(channel, Which::Current, codes[std::size_t(channel)]);
}

void CalibrationSession::startData(int step) {
    if (!m_plate || m_activity != Activity::Idle || !zeroIsTaken(step))
        return;
    stopRunning();
    const CalibrationRecord& record = m_calibration.record;
    const std::array<double, 4>& zero =
        step < 0 ? record.points[std::size_t(m_calibration.currentPoint)].zeroAverage
                 : record.scalingZero.average;
    qint32 samples = 0;
    if (!plateCall([&] { writeDeviceZero(zero); }) || !prepareAcquisition(samples))
        return;
    setStatus(c::StatusAcquiringData);
    m_running.scaling = step >= 0;
    m_running.step = step;
    if (!plateCall([&] {
            m_plate->FlushData();
            m_plate->CalibrateSelf();
            m_plate->StartTest(samples, true, true, false, 0, true);
        })) {
        setStatus(c::StatusReady);
        return;
    }
    m_activity = Activity::Data;
    m_running.startTick = m_clock.tickCount();
    m_progress->start(ProgressPeriodMs);
    Q_EMIT acquisitionStarted(samples);
    Q_EMIT changed();
}

void CalibrationSession::finishAcquisition() {
    m_activity = Activity::Idle;
    m_progress->stop();
    Q_EMIT acquisitionEnded(true);
    playCompletionSound();
}

void CalibrationSession::playCompletionSound() {
    if (!m_prompt.playSound(resources::soundFile(QCoreApplication::applicationDirPath())))
        m_prompt.beep();
}

float CalibrationSession::plateTemperature() {
    float temperature = 0;
    plateCall([&] { temperature = m_plate->Temperature(); });
    return temperature;
}

void CalibrationSession::onZeroDone(const ChannelValues& average, const ChannelValues& deviation) {
    if (m_activity != Activity::Zero)
        return;
    finishAcquisition();
    const ZeroReading reading = ZeroReading::fromZeroDone(average, deviation);
    const QDateTime now = m_clock.currentDateTime();
    const float temperature = plateTemperature();
    const float limit = m_settings.MaxZeroStdDev;
    if (m_running.scaling) {
        if (LinearityScaling::completeZero(m_calibration, reading, limit, now, temperature) ==
            AcquisitionOutcome::Rejected)
            m_prompt.critical(strings::text(c::TooNoisyScaling));
    } else if (PointTable(m_calibration).completeZero(reading, limit, now, temperature) ==
               AcquisitionOutcome::Rejected) {
        m_prompt.critical(strings::text(c::TooNoisy));
    } else {
        // From now on the plate subtracts the new zero.
        plateCall([&] { writeDeviceZero(reading.average); });
    }
    recordChanged();
    setStatus(c::StatusReady);
    Q_EMIT changed();
}

void CalibrationSession::onTestDone(qint32 count, const QList<Float3>& volts) {
    if (m_activity != Activity::Data)
        return;
    finishAcquisition();
    const DataReading reading = DataReading::fromSamples(count, volts);
    const QDateTime now = m_clock.currentDateTime();
    const float temperature = plateTemperature();
    const float limit = m_settings.MaxDataStdDev;
    const AcquisitionOutcome outcome =
        m_running.scaling
            ? LinearityScaling::completeStep(m_calibration, m_running.step, reading, limit, now,
                                             temperature)
            : PointTable(m_calibration).completeData(reading, limit, now, temperature);
    if (outcome == AcquisitionOutcome::Rejected)
        m_prompt.critical(strings::text(m_running.scaling ? c::TooNoisyScaling : c::TooNoisy));
    else if (!m_calibration.dataExcitation)
        m_calibration.dataExcitation = m_running.excitation;
    recordChanged();
    // Set from the program's own literal rather than the text table; the same text.
    setStatusText(QStringLiteral("Ready"));
    Q_EMIT changed();
}

void CalibrationSession::abortAcquisition() {
    if (m_activity == Activity::Zero || m_activity == Activity::Data)
        m_activity = Activity::Idle;
    m_progress->stop();
    Q_EMIT acquisitionEnded(false);
    if (std::exchange(m_displaying, false))
        Q_EMIT displayChanged(false);
    setStatus(m_plate ? c::StatusReady : c::StatusNoPlate);
    Q_EMIT changed();
}

void CalibrationSession::startDisplay() {
    if (!m_plate || m_activity != Activity::Idle || m_displaying)
        return;
    m_displaying = plateCall([this] {
        m_plate->FlushData();
        m_plate->CalibrateSelf();
        m_frequency = m_plate->SampleFrequency(Which::Current);
        m_plate->StartAcquisition(true, false, true, false, true);
    });
    if (m_displaying)
        Q_EMIT displayChanged(true);
}

void CalibrationSession::stopDisplay() {
    if (m_displaying)
        stopRunning();
}

// --- The fit ----------------------------------------------------------------------------

void CalibrationSession::fitNow() {
    BuiltInFitEngine builtIn;
    FitOutcome outcome = MatrixFit::compute(m_calibration.record.points, builtIn);
    m_calibration.fit.reset();
    if (outcome.result)
        adoptFit(std::move(*outcome.result), Calibration::fitInputsOf(m_calibration.record));
}

void CalibrationSession::adoptFit(FitResult fit, std::vector<double> inputs) {
    Calibration& c = m_calibration;
    c.matrix = fit.matrix;
    c.fit = std::move(fit);
    c.fitInputs = std::move(inputs);
    c.scaledMatrix = LinearityScaling::scaled(c.matrix, c.record.scaleValue);
}

void CalibrationSession::computeMatrix() {
    if (m_activity != Activity::Idle)
        return;
    setStatus(c::StatusComputingMatrix);
    std::vector<double> inputs = Calibration::fitInputsOf(m_calibration.record);
    FitOutcome refused;
    std::optional<FitProblem> problem = MatrixFit::pose(m_calibration.record.points, refused.error);
    if (!problem) {
        acceptFit(std::move(refused), std::move(inputs));
        return;
    }
    if (!OctaveFitEngine(m_octave->program()).isAvailable()) {
        m_prompt.critical(strings::text(c::EngineUnavailable));
        acceptFit(MatrixFit::complete(*problem, std::nullopt), std::move(inputs));
        return;
    }
    // Octave needs a second or more: the window stays live meanwhile, but nothing may change
    // the points or start another fit until its answer is in.
    m_octave->start(problem->L, problem->S);
    m_pendingFit = std::make_unique<PendingFit>(PendingFit{std::move(*problem), std::move(inputs)});
    m_activity = Activity::Fitting;
    Q_EMIT fitRunning(true);
    Q_EMIT changed();
}

void CalibrationSession::octaveFinished(const std::optional<FitProducts>& products,
                                        const QString& error) {
    std::unique_ptr<PendingFit> pending = std::move(m_pendingFit);
    if (!pending)
        return;
    m_activity = Activity::Idle;
    Q_EMIT fitRunning(false);
    acceptFit(MatrixFit::complete(pending->problem, products, error), std::move(pending->inputs));
}

void CalibrationSession::acceptFit(FitOutcome outcome, std::vector<double> inputs) {
    if (!outcome.result) {
        m_prompt.critical(outcome.error);
    } else {
        // An engine that answered with another matrix did start: say what did happen.
        const int heading = outcome.result->engineRefused ? c::EngineRefused : c::EngineUnavailable;
        if (const QString& why = outcome.result->engineError; !why.isEmpty())
            m_prompt.critical(strings::text(heading) + QStringLiteral("\n\n") + why +
                              QStringLiteral("\n\n") + strings::text(c::EngineBuiltInUsed));
        adoptFit(std::move(*outcome.result), std::move(inputs));
        m_calibration.unsavedChanges = true;
    }
    setStatus(c::StatusReady);
    Q_EMIT changed();
}

bool CalibrationSession::applyScale(const QString& text) {
    if (m_activity != Activity::Idle)
        return false;
    Calibration& c = m_calibration;
    const std::optional<float> value = LinearityScaling::valueFromText(text);
    const CalMatrix scaled = LinearityScaling::scaled(c.matrix, value.value_or(0));
    if (!value || !allFinite(scaled)) {
        // Refused visibly; the scaling in force stays.
        m_prompt.beep();
        m_form.scale = formatNumber(c.record.scaleValue, u"0.0000");
        Q_EMIT formChanged();
        return false;
    }
    m_form.scale = formatNumber(*value, u"0.0000");
    if (c.record.scaleValue != *value)
        c.unsavedChanges = true;
    c.record.scaleValue = *value;
    c.scaledMatrix = scaled;
    recordChanged();
    Q_EMIT formChanged();
    Q_EMIT changed();
    return true;
}

QString CalibrationSession::stepCaption(int step) const {
    const auto& steps = m_calibration.record.steps;
    const bool loading = step < int(steps.size() / 2);
    const double kilograms = double(steps[std::size_t(step)].appliedLoad) / m_settings.Gravity;
    return strings::text(loading ? c::LoadStep : c::UnloadStep)
        .arg(formatGeneral(std::round(kilograms * 100) / 100));
}

// --- Commit -----------------------------------------------------------------------------

QStringList CalibrationSession::committedTexts() const {
    QStringList texts;
    for (const auto& row : m_calibration.scaledMatrix)
        for (const float cell : row)
            texts << formatGeneral(cell);
    return texts;
}

bool CalibrationSession::commit() {
    stopRunning();
    if (!operatorGiven())
        return false;
    const Calibration::FitState fit = m_calibration.fitState();
    if (fit != Calibration::FitState::Current) {
        const Question ask{
            strings::text(fit == Calibration::FitState::Absent ? c::OkWithoutFit
                                                               : c::OkWithStaleFit),
            {strings::text(c::ChoiceCloseWithoutWriting), strings::text(c::ChoiceGoBack)},
            1,
            1};
        if (m_prompt.ask(ask) != 0)
            return false;
        // Closing as OK does: the work saved first, nothing written to the plate.
        return (!m_calibration.unsavedChanges && !hasWorkAtRisk()) || save();
    }
    if (isOtherPlates()) {
        const Question ask{
            strings::text(c::OtherPlateCommit).arg(plateOnFile(), m_serial),
            {strings::text(c::ChoiceWriteToPlate).arg(m_serial), strings::text(c::ChoiceGoBack)},
            1,
            1};
        if (m_prompt.ask(ask) != 0)
            return false;
    }
    if ((m_calibration.unsavedChanges || hasWorkAtRisk()) && !save())
        return false;
    if (!m_plate)
        return true;
    const CommitOutcome outcome = commitToPlate(
        *m_plate, committedCells(m_calibration.scaledMatrix), m_calibration.operatorNow, m_clock);
    if (outcome.result != CommitOutcome::Result::Committed) {
        m_prompt.critical(outcome.message);
        return false;
    }
    return true;
}

} // namespace kx
