#include "sim/SimPlate.h"

#include "device/PlateError.h"
#include "sim/MatrixErrors.h"
#include "sim/NoiseGenerator.h"
#include "support/Clock.h"

#include <algorithm>
#include <cmath>

namespace kx {

namespace {

constexpr qint32 OffsetBinaryOrigin = 8388608;
// Below a millivolt the firmware normalises by a millivolt rather than divide by nothing.
constexpr double MinNormalisingExcitation = 1e-3;
constexpr int EncoderCountsPerSecond = 256;
constexpr int StallTimeoutMs = 1000;

// The factory's rig leaves the centre of pressure this far off over the top, RMS, give or
// take half the spread: well within a plate's stated tolerance, yet far enough that a careful
// calibration on site shows its worth.
constexpr double FactoryCopRms = 0.0015;
constexpr double FactoryCopSpread = 0.0006;

// The true matrix moved along `direction` just far enough that the centre of pressure is
// `copRms` off over the top. The error grows in proportion to a small step, so one probe
// finds the length.
Matrix3 offAlong(const Matrix3& truth, const Matrix3& direction, double copRms) {
    const auto along = [&](double length) {
        Matrix3 moved = truth;
        for (std::size_t r = 0; r < 3; ++r)
            for (std::size_t c = 0; c < 3; ++c)
                moved[r][c] += length * direction[r][c];
        return moved;
    };
    constexpr double Probe = 1e-3;
    constexpr double AnyLoad = 250; // N: the centre of pressure does not depend on it
    const std::optional<MatrixErrors> probed = MatrixErrors::overTop(truth, along(Probe), AnyLoad);
    return probed && probed->copRms > 0 ? along(Probe * copRms / probed->copRms) : truth;
}

QDate dayZero() {
    return QDate(1899, 12, 30);
}

// The operator records arrive as the program's record tag followed by the operator code.
QString operatorOf(const QString& record, QChar recordDigit) {
    const QString tag = QStringLiteral("KXI_OP_") + recordDigit;
    constexpr int TagLength = 18;
    return record.startsWith(tag) && record.size() >= TagLength ? record.mid(TagLength) : record;
}

} // namespace

SimPlate::SimPlate(Clock& clock, SamplePacer& pacer, quint32 origin, const SimPlateConfig& config,
                   int instance, QObject* parent)
    : PlateDevice(parent)
    , m_clock(clock)
    , m_origin(origin)
    , m_instance(instance)
    , m_firmwareMajor(config.firmwareMajor)
    , m_firmwareMinor(config.firmwareMinor)
    , m_codeOrigin(config.firmwareMajor < 2 ? OffsetBinaryOrigin : 0)
    , m_truth(PlateTruth::generate(config))
    , m_chain(m_truth, config.seed * 0x9E3779B97F4A7C15ull + 1)
    , m_loads(config.imperfections, config.seed ^ 0x5CA77E5ull)
    , m_faults(clock, this,
               [this](PlateFault fault) {
                   if (m_faultHandler)
                       m_faultHandler(fault);
                   else
                       raise(fault);
               })
    , m_engine(
          clock, pacer, origin, [this](double seconds) { return sampleAt(seconds); }, this) {
    m_engine.setSampleHook([this](qint64 samples) { m_faults.sampleTaken(samples); });
    connect(&m_engine, &AcquisitionEngine::forcesIn, this, &PlateDevice::ForcesIn);
    connect(&m_engine, &AcquisitionEngine::zeroProgress, this, &PlateDevice::ZeroProgress);
    connect(&m_engine, &AcquisitionEngine::zeroDone, this, &PlateDevice::ZeroDone);
    connect(&m_engine, &AcquisitionEngine::testDone, this, &PlateDevice::TestDone);
    connect(&m_engine, &AcquisitionEngine::clipped, this, &PlateDevice::DataClipped);
    connect(&m_engine, &AcquisitionEngine::overrun, this, &PlateDevice::BufferOverRun);
    loadFactoryState(config);
    if (config.plugged)
        powerOn();
}

SimPlate::~SimPlate() = default;

void SimPlate::loadFactoryState(const SimPlateConfig& config) {
    NoiseGenerator random(config.seed ^ 0xFAC7041Eull);
    m_serial = config.serial;
    m_defaultConverter = ConverterModel(config.modulatorRate);
    m_defaultConverter.setSampleFrequency(config.sampleFrequency);
    m_defaultGage = float(config.gageVoltage);
    m_identity =
        UsbIdentity{0xB0, 0x02, 0x0D, quint8(config.firmwareMajor < 2 ? 1 : 2), 0x03, 0x01, 0x00};
    m_record = ServiceRecord(float(38.0 + 3.0 * random.uniform()),
                             float(9.0 + 4.0 * random.uniform()), qint32(50 + random.next() % 2000),
                             qint64(3600 * (100 + random.next() % 5000)));
    m_encoderOrigin = qint32(random.next() % 100000);
    // The factory's calibration: a matrix a few tenths of a percent off the true one, zero
    // values within a few dozen codes of the unloaded readings at the default excitation.
    const QDate calibrated = QDate(2022, 1, 3).addDays(qint64(random.next() % 700));
    if (config.calibrated) {
        const std::array<double, 4> resting =
            m_chain.restingCodes(config.gageVoltage, config.ambientTemperature);
        for (int c = 0; c < 4; ++c)
            m_defaultZero[c] =
                qint32(std::lround(resting[c] + 30.0 * random.normal())) + m_codeOrigin;
        Matrix3 direction{};
        for (std::size_t r = 0; r < 3; ++r)
            for (std::size_t c = 0; c < 3; ++c)
                direction[r][c] = m_truth.trueMatrix[r][c] * random.normal();
        const double copRms = FactoryCopRms + FactoryCopSpread * (random.uniform() - 0.5);
        const Matrix3 factory = offAlong(m_truth.trueMatrix, direction, copRms);
        for (std::size_t r = 0; r < 3; ++r)
            for (std::size_t c = 0; c < 3; ++c)
                m_table[r][c] = float(factory[r][c]);
        m_table[0][3] = float(dayZero().daysTo(calibrated));
        m_record.calibration = {QDateTime(calibrated, QTime(10, 15)), QStringLiteral("QC-07")};
        m_record.inspection = {QDateTime(calibrated.addDays(1), QTime(14, 40)),
                               QStringLiteral("QC-03")};
    } else {
        m_defaultZero.fill(m_codeOrigin);
    }
}

// Driver side ------------------------------------------------------------------------------

void SimPlate::powerOn() {
    m_plugged = true;
    m_responding = true;
    m_open = false;
    m_activeIdentity = m_identity;
    m_converter = m_defaultConverter;
    m_gage = dacVolts(m_defaultGage);
    m_zero = m_defaultZero;
    m_resolution = 24;
    m_chain.setResolution(m_resolution);
    m_polled = true;
    m_powered = true;
    m_sleeping = false;
    m_backgroundCalibration = false;
    m_poweredAt = m_clock.tickCount();
    m_poweredAtSeconds = now();
    m_chain.powerOn(m_gage, m_poweredAtSeconds);
    m_record.poweredOn(m_poweredAt);
    // The converter calibrates itself at power-on.
    m_chain.calibrateConverter(m_truth.temperature(0));
}

void SimPlate::unplug() {
    // A plate that stopped answering still leaves its holders a Removal.
    const bool wasOpen = m_plugged && m_open;
    stopConverting();
    m_record.poweredOff(m_clock.tickCount());
    m_plugged = false;
    m_open = false;
    if (wasOpen)
        Q_EMIT Removal();
}

void SimPlate::stopResponding() {
    stopConverting();
    m_responding = false;
}

void SimPlate::enumerate() {
    if (m_writtenSerial)
        m_serial = *std::exchange(m_writtenSerial, std::nullopt);
    m_record.enumerated();
    m_open = true;
}

void SimPlate::release() {
    stopConverting();
    m_open = false;
}

int SimPlate::vendorId() const {
    return m_activeIdentity[1] | (m_activeIdentity[2] << 8);
}

int SimPlate::productId() const {
    return m_activeIdentity[3];
}

QString SimPlate::deviceId() const {
    return QStringLiteral("\\\\?\\hid#vid_%1&pid_%2#kx%3")
        .arg(vendorId(), 4, 16, QLatin1Char('0'))
        .arg(productId(), 4, 16, QLatin1Char('0'))
        .arg(m_instance);
}

// Common ------------------------------------------------------------------------------------

double SimPlate::now() const {
    return quint32(m_clock.tickCount() - m_origin) / 1000.0;
}

void SimPlate::check(const char* operation) {
    if (!m_plugged)
        throw PlateError(QStringLiteral("The force platform %1 is disconnected.").arg(m_serial));
    if (!m_responding)
        throw PlateError(QStringLiteral("The force platform %1 does not respond.").arg(m_serial));
    if (!m_open)
        throw PlateError(QStringLiteral("The force platform %1 is not open.").arg(m_serial));
    m_failures.check(operation);
}

ConverterModel& SimPlate::converter(Which which) {
    return which == Which::Default ? m_defaultConverter : m_converter;
}

qint32& SimPlate::zeroValue(int channel, Which which) {
    if (channel < 0 || channel > 3)
        throw PlateError(QStringLiteral("There is no converter channel %1.").arg(channel));
    return which == Which::Default ? m_defaultZero[channel] : m_zero[channel];
}

float& SimPlate::tableCell(int row, int column) {
    if (row < 0 || row > 3 || column < 0 || column > 3)
        throw PlateError(
            QStringLiteral("There is no matrix element (%1, %2).").arg(row).arg(column));
    return m_table[row][column];
}

double SimPlate::temperatureNow() {
    const double celsius = m_truth.temperature(quint32(m_clock.tickCount() - m_poweredAt) / 1000.0);
    m_record.observeTemperature(celsius);
    return celsius;
}

// Identity ----------------------------------------------------------------------------------

QString SimPlate::SerialNumber() {
    check("SerialNumber");
    return m_serial;
}

void SimPlate::SetSerialNumber(const QString& serial) {
    check("SetSerialNumber");
    // Either would make a plate unreachable: a blank list entry, or two entries for one plate.
    if (serial.trimmed().isEmpty())
        throw PlateError(
            QStringLiteral("The serial number of the force platform %1 cannot be empty.")
                .arg(m_serial));
    if (m_serialInUse && m_serialInUse(serial))
        throw PlateError(
            QStringLiteral("The serial number %1 is already used by another connected force "
                           "platform.")
                .arg(serial));
    // Stored at once, reported from the next enumeration on.
    m_writtenSerial = serial;
}

quint8 SimPlate::FirmwareMajor() {
    check("FirmwareMajor");
    return m_firmwareMajor;
}

quint8 SimPlate::FirmwareMinor() {
    check("FirmwareMinor");
    return m_firmwareMinor;
}

// Converter parameters ----------------------------------------------------------------------

float SimPlate::GageVoltage(Which which) {
    check("GageVoltage");
    return which == Which::Default ? m_defaultGage : m_gage;
}

void SimPlate::SetGageVoltage(Which which, float volts) {
    check("SetGageVoltage");
    if (which == Which::Default) {
        m_defaultGage = volts;
        return;
    }
    m_gage = dacVolts(volts);
    if (m_powered)
        m_chain.excitationChanged(m_gage, now());
}

// The excitation DAC sets the nearest step to what is written.
float SimPlate::dacVolts(float volts) const {
    const double step = m_truth.imperfections.gageDacStep;
    return step > 0 ? float(std::round(double(volts) / step) * step) : volts;
}

float SimPlate::SampleFrequency(Which which) {
    check("SampleFrequency");
    return float(converter(which).sampleFrequency());
}

void SimPlate::SetSampleFrequency(Which which, float hertz) {
    check("SetSampleFrequency");
    changeConverter(which, [&](ConverterModel& m) { m.setSampleFrequency(hertz); });
}

float SimPlate::CutoffFrequency(Which which) {
    check("CutoffFrequency");
    return float(converter(which).cutoffFrequency());
}

void SimPlate::SetCutoffFrequency(Which which, float hertz) {
    check("SetCutoffFrequency");
    changeConverter(which, [&](ConverterModel& m) { m.setCutoffFrequency(hertz); });
}

qint16 SimPlate::TurboRate(Which which) {
    check("TurboRate");
    return converter(which).turboRate();
}

void SimPlate::SetTurboRate(Which which, qint16 rate) {
    check("SetTurboRate");
    changeConverter(which, [&](ConverterModel& m) { m.setTurboRate(rate); });
}

qint16 SimPlate::DecimationRate(Which which) {
    check("DecimationRate");
    return converter(which).decimationRate();
}

void SimPlate::SetDecimationRate(Which which, qint16 rate) {
    check("SetDecimationRate");
    changeConverter(which, [&](ConverterModel& m) { m.setDecimationRate(rate); });
}

void SimPlate::changeConverter(Which which, const std::function<void(ConverterModel&)>& change) {
    ConverterModel& model = converter(which);
    const double before = model.sampleFrequency();
    change(model);
    if (which == Which::Current && model.sampleFrequency() != before)
        m_chain.sampleFrequencyChanged(now());
}

int SimPlate::Resolution() {
    check("Resolution");
    return m_resolution;
}

void SimPlate::SetResolution(int bits) {
    check("SetResolution");
    m_resolution = std::clamp(bits, 1, 24);
    m_chain.setResolution(m_resolution);
}

// Zero values and the stored table ----------------------------------------------------------

qint32 SimPlate::ZeroValue(int channel, Which which) {
    check("ZeroValue");
    return zeroValue(channel, which);
}

void SimPlate::SetZeroValue(int channel, Which which, qint32 codes) {
    check("SetZeroValue");
    zeroValue(channel, which) = codes;
}

float SimPlate::MatrixElement(int row, int column) {
    check("MatrixElement");
    return tableCell(row, column);
}

void SimPlate::SetMatrixElement(int row, int column, float value) {
    check("SetMatrixElement");
    tableCell(row, column) = value;
}

// Switches and converter commands -----------------------------------------------------------

bool SimPlate::Polled(qint16) {
    check("Polled");
    return m_polled;
}

void SimPlate::SetPolled(qint16, bool on) {
    check("SetPolled");
    m_polled = on;
}

bool SimPlate::PowerOn(qint16) {
    check("PowerOn");
    return m_powered;
}

void SimPlate::SetPowerOn(qint16, bool on) {
    check("SetPowerOn");
    if (on != m_powered)
        m_chain.excitationChanged(on ? m_gage : 0.0, now());
    m_powered = on;
}

bool SimPlate::ConverterSleep(qint16) {
    check("ConverterSleep");
    return m_sleeping;
}

void SimPlate::SetConverterSleep(qint16, bool on) {
    check("SetConverterSleep");
    m_sleeping = on;
}

bool SimPlate::BackgroundCalibration() {
    check("BackgroundCalibration");
    return m_backgroundCalibration;
}

void SimPlate::SetBackgroundCalibration(bool on) {
    check("SetBackgroundCalibration");
    m_backgroundCalibration = on;
}

void SimPlate::CalibrateSelf() {
    check("CalibrateSelf");
    m_chain.calibrateConverter(temperatureNow());
}

void SimPlate::CalibrateOffset() {
    check("CalibrateOffset");
    m_chain.calibrateConverter(temperatureNow());
}

// The converter's gain is part of the hidden sensitivity, so a gain calibration changes
// nothing that can be seen.
void SimPlate::CalibrateFullScale() {
    check("CalibrateFullScale");
}

void SimPlate::CalibratePseudo() {
    check("CalibratePseudo");
}

// Acquisitions ------------------------------------------------------------------------------

void SimPlate::startConverting(const std::function<void(double)>& start) {
    stopConverting();
    if (!m_polled || m_sleeping) {
        // A sleeping or unpolled converter sends nothing: the read times out.
        m_clock.singleShot(StallTimeoutMs, this, [this, stall = m_stall] {
            if (stall == m_stall)
                raise(PlateFault::ReadTimeout);
        });
        return;
    }
    const double hertz = m_converter.sampleFrequency();
    m_chain.setSampleFrequency(hertz);
    start(hertz);
}

void SimPlate::stopConverting() {
    ++m_stall;
    m_engine.stop();
}

void SimPlate::StartZero(qint32 samples, bool, qint32, qint32) {
    check("StartZero");
    startConverting([this, samples](double hertz) { m_engine.startZero(samples, hertz); });
}

void SimPlate::StartTest(qint32 samples, bool, bool, bool, qint32, bool) {
    check("StartTest");
    startConverting([this, samples](double hertz) { m_engine.startTest(samples, hertz); });
}

void SimPlate::StartAcquisition(bool, bool, bool, bool, bool) {
    check("StartAcquisition");
    startConverting([this](double hertz) { m_engine.startStreaming(hertz); });
}

void SimPlate::StartCapture(bool) {
    check("StartCapture");
    m_engine.startCapture();
}

void SimPlate::StopCapture() {
    if (!isUsable())
        return;
    m_failures.check("StopCapture");
    m_engine.stopCapture();
}

void SimPlate::StopAcquisition() {
    if (!isUsable())
        return;
    m_failures.check("StopAcquisition");
    stopConverting();
}

void SimPlate::AbortAcquisition() {
    if (!isUsable())
        return;
    m_failures.check("AbortAcquisition");
    stopConverting();
}

// Samples are produced when they fall due, so there is never a backlog to discard.
void SimPlate::FlushData() {
    if (!isUsable())
        return;
    m_failures.check("FlushData");
}

void SimPlate::RequestEncoder() {
    check("RequestEncoder");
    m_clock.singleShot(0, this, [this] {
        if (!isUsable())
            return;
        const qint64 elapsed = quint32(m_clock.tickCount() - m_poweredAt);
        Q_EMIT EncoderIn(
            static_cast<qint32>(m_encoderOrigin + elapsed * EncoderCountsPerSecond / 1000));
    });
}

void SimPlate::raise(PlateFault fault) {
    if (!isUsable())
        return;
    // A time-out means the stream is gone; an overrun or clipping leaves it running.
    switch (fault) {
    case PlateFault::ReadTimeout:
        stopConverting();
        Q_EMIT ReadTimeout();
        break;
    case PlateFault::WriteTimeout:
        stopConverting();
        Q_EMIT WriteTimeout();
        break;
    case PlateFault::BufferOverRun:
        Q_EMIT BufferOverRun();
        break;
    case PlateFault::DataClipped:
        Q_EMIT DataClipped();
        break;
    case PlateFault::Unplug:
    case PlateFault::NotResponding:
        break; // the driver's business
    }
}

// Loads put on or taken off since the last sample went through the cells; their hysteresis
// remembers the steady moments in between, in time order.
void SimPlate::passLoadChanges(double seconds) {
    std::array<double, 32> turns{};
    size_t count = 0;
    m_loads.forEachTurn(m_lastSampleSeconds, seconds, [&](double t) {
        if (count < turns.size())
            turns[count++] = t;
    });
    std::sort(turns.begin(), turns.begin() + qsizetype(count));
    for (size_t i = 0; i < count; ++i)
        m_chain.passLoad(m_loads.wrenchAt(turns[i]), turns[i]);
    m_lastSampleSeconds = seconds;
}

PlateSample SimPlate::sampleAt(double seconds) {
    passLoadChanges(seconds);
    const double celsius = m_truth.temperature(seconds - m_poweredAtSeconds);
    if (m_backgroundCalibration)
        m_chain.calibrateConverter(celsius);
    const double excitation = m_powered ? m_gage : 0.0;
    const ConverterCodes converted =
        m_chain.convert(m_loads.wrenchAt(seconds), excitation, celsius, seconds);

    PlateSample sample;
    sample.clipped = converted.clipped;
    const double normaliser =
        std::abs(m_gage) >= MinNormalisingExcitation ? double(m_gage) : MinNormalisingExcitation;
    const double voltsPerCode = SignalChain::CodeVolts / normaliser;
    std::array<double, 3> volts{};
    for (int c = 0; c < 4; ++c) {
        sample.codes[c] = converted.codes[c] + m_codeOrigin;
        if (c < 3) {
            volts[c] = double(qint64(sample.codes[c]) - m_zero[c]) * voltsPerCode;
            sample.volts[c] = float(volts[c]);
        }
    }
    for (int r = 0; r < 3; ++r)
        sample.forces[r] =
            float(m_table[r][0] * volts[0] + m_table[r][1] * volts[1] + m_table[r][2] * volts[2]);
    return sample;
}

// Records and maintenance -------------------------------------------------------------------

float SimPlate::Temperature() {
    check("Temperature");
    return float(temperatureNow());
}

void SimPlate::SetOperatorRecord2(const QString& record, const QDateTime& date) {
    check("SetOperatorRecord2");
    m_record.calibration = {date, operatorOf(record, QLatin1Char('2'))};
}

void SimPlate::SetOperatorRecord3(const QString& record, const QDateTime& date) {
    check("SetOperatorRecord3");
    m_record.inspection = {date, operatorOf(record, QLatin1Char('3'))};
}

UsbIdentity SimPlate::GetUsbIdentity() {
    check("GetUsbIdentity");
    return m_identity;
}

// Written to the EEPROM; the plate enumerates with it after its next power-on.
void SimPlate::SetUsbIdentity(const UsbIdentity& identity) {
    check("SetUsbIdentity");
    m_identity = identity;
}

float SimPlate::MaxTemperature() {
    check("MaxTemperature");
    temperatureNow();
    return m_record.maxTemperature();
}

float SimPlate::MinTemperature() {
    check("MinTemperature");
    temperatureNow();
    return m_record.minTemperature();
}

qint64 SimPlate::TimeInService() {
    check("TimeInService");
    return m_record.timeInService(m_clock.tickCount());
}

qint32 SimPlate::EnumerationCount() {
    check("EnumerationCount");
    return m_record.enumerationCount();
}

QDateTime SimPlate::CalibrationRecordDate() {
    check("CalibrationRecordDate");
    return m_record.calibration.date;
}

QString SimPlate::CalibrationRecordOperator() {
    check("CalibrationRecordOperator");
    return m_record.calibration.operatorCode;
}

QDateTime SimPlate::InspectionRecordDate() {
    check("InspectionRecordDate");
    return m_record.inspection.date;
}

QString SimPlate::InspectionRecordOperator() {
    check("InspectionRecordOperator");
    return m_record.inspection.operatorCode;
}

void SimPlate::ExecuteCommand(qint16, qint16 code) {
    check("ExecuteCommand");
    m_record.execute(code, temperatureNow(), m_clock.tickCount());
}

void SimPlate::placeWeight(double kilograms, double x, double y) {
    m_loads.placeWeight(kilograms, x, y, now());
}

void SimPlate::placePerson(double kilograms, double x, double y, PlateLoads::Stance stance) {
    m_loads.placePerson(kilograms, x, y, stance, now());
}

void SimPlate::unload() {
    m_loads.removeAll(now());
}

Matrix3 SimPlate::storedMatrix() const {
    Matrix3 m{};
    for (std::size_t r = 0; r < 3; ++r)
        for (std::size_t c = 0; c < 3; ++c)
            m[r][c] = m_table[r][c];
    return m;
}

} // namespace kx
