#pragma once

#include "device/PlateDevice.h"
#include "sim/AcquisitionEngine.h"
#include "sim/ConverterModel.h"
#include "sim/FailurePlan.h"
#include "sim/FaultSchedule.h"
#include "sim/PlateLoads.h"
#include "sim/PlateTruth.h"
#include "sim/ServiceRecord.h"
#include "sim/SignalChain.h"
#include "sim/SimPlateConfig.h"

#include <array>
#include <functional>
#include <optional>

namespace kx {

class Clock;
class SamplePacer;

// One simulated force plate. It keeps what a real plate keeps (identity, converter settings
// current and power-on default, zero values, the stored 4x4 table, switches, service record),
// turns the loads on its top into converter codes through its hidden physics, and reports
// volts = (reading - stored zero) × code size / excitation and forces = stored matrix × volts.
//
// A plate is usable while plugged in, responding and opened by its driver; otherwise every
// operation throws PlateError, except StopAcquisition, AbortAcquisition, FlushData and
// StopCapture, which then do nothing. Its SimDriver owns it and keeps it alive when it is
// unplugged.
class SimPlate final : public PlateDevice {
    Q_OBJECT
public:
    // `origin` is the tick at which the driver's timeline starts; `instance` numbers the
    // plate's device path. The pacer must outlive the plate.
    SimPlate(Clock& clock, SamplePacer& pacer, quint32 origin, const SimPlateConfig& config,
             int instance, QObject* parent = nullptr);
    ~SimPlate() override;

    QString SerialNumber() override;
    void SetSerialNumber(const QString& serial) override;
    quint8 FirmwareMajor() override;
    quint8 FirmwareMinor() override;

    float GageVoltage(Which which) override;
    void SetGageVoltage(Which which, float volts) override;
    float SampleFrequency(Which which) override;
    void SetSampleFrequency(Which which, float hertz) override;
    float CutoffFrequency(Which which) override;
    void SetCutoffFrequency(Which which, float hertz) override;
    qint16 TurboRate(Which which) override;
    void SetTurboRate(Which which, qint16 rate) override;
    qint16 DecimationRate(Which which) override;
    void SetDecimationRate(Which which, qint16 rate) override;
    int Resolution() override;
    void SetResolution(int bits) override;

    qint32 ZeroValue(int channel, Which which) override;
    void SetZeroValue(int channel, Which which, qint32 codes) override;
    float MatrixElement(int row, int column) override;
    void SetMatrixElement(int row, int column, float value) override;

    bool Polled(qint16 selector) override;
    void SetPolled(qint16 selector, bool on) override;
    bool PowerOn(qint16 selector) override;
    void SetPowerOn(qint16 selector, bool on) override;
    bool ConverterSleep(qint16 selector) override;
    void SetConverterSleep(qint16 selector, bool on) override;
    bool BackgroundCalibration() override;
    void SetBackgroundCalibration(bool on) override;

    void CalibrateSelf() override;
    void CalibrateOffset() override;
    void CalibrateFullScale() override;
    void CalibratePseudo() override;

    void StartZero(qint32 samples, bool flag, qint32 option1 = 0, qint32 option2 = 0) override;
    void StartTest(qint32 samples, bool flag1, bool flag2, bool flag3, qint32 option,
                   bool flag4) override;
    void StartAcquisition(bool flag1, bool flag2, bool flag3, bool flag4, bool flag5) override;
    void StartCapture(bool flag) override;
    void StopCapture() override;
    void StopAcquisition() override;
    void AbortAcquisition() override;
    void FlushData() override;
    void RequestEncoder() override;

    float Temperature() override;
    void SetOperatorRecord2(const QString& record, const QDateTime& date) override;
    void SetOperatorRecord3(const QString& record, const QDateTime& date) override;

    UsbIdentity GetUsbIdentity() override;
    void SetUsbIdentity(const UsbIdentity& identity) override;
    float MaxTemperature() override;
    float MinTemperature() override;
    qint64 TimeInService() override;
    qint32 EnumerationCount() override;
    QDateTime CalibrationRecordDate() override;
    QString CalibrationRecordOperator() override;
    QDateTime InspectionRecordDate() override;
    QString InspectionRecordOperator() override;
    void ExecuteCommand(qint16 selector, qint16 code) override;

    // Simulation control, for tests and scenarios.
    const PlateTruth& truth() const { return m_truth; }
    // The extents of the top, where loads may stand.
    static constexpr PlateTop top() { return PlateTop{}; }
    PlateLoads& loads() { return m_loads; }
    FaultSchedule& faults() { return m_faults; }
    FailurePlan& failures() { return m_failures; }
    // ReadTimeout, WriteTimeout, BufferOverRun or DataClipped: the running acquisition stops,
    // then the plate raises the event.
    void raise(PlateFault fault);
    // The serial number the plate enumerates with, readable in any state.
    const QString& serial() const { return m_serial; }
    bool isPlugged() const { return m_plugged; }
    bool isResponding() const { return m_responding; }
    // Seconds since the start of the driver's timeline.
    double now() const;

    // What a scenario event or the bench does to the plate, taking effect now.
    void placeWeight(double kilograms, double x, double y);
    void placePerson(double kilograms, double x, double y, PlateLoads::Stance stance);
    void unload();
    // The room around the plate, °C; a powered plate warms up above it.
    void setAmbientTemperature(double celsius) { m_truth.ambientTemperature = celsius; }
    double ambientTemperature() const { return m_truth.ambientTemperature; }
    // The plate's temperature now, left out of the service record's extremes.
    double currentTemperature() const { return m_truth.temperature(now() - m_poweredAtSeconds); }
    // The 3x3 matrix stored in the plate, read past the plate's operations so that no planned
    // failure is used up and an unplugged plate still shows it.
    Matrix3 storedMatrix() const;

private:
    friend class SimDriver;
    // Driver side.
    void powerOn();
    void unplug();
    void stopResponding();
    void enumerate(); // applies a written serial number; the plate is open afterwards
    void release();
    QString deviceId() const;
    int vendorId() const;
    int productId() const;

    // Scheduled faults go here; the driver takes the ones that need it (unplug, no response).
    void setFaultHandler(std::function<void(PlateFault)> handler) {
        m_faultHandler = std::move(handler);
    }
    // Tells whether another connected plate carries (or is about to carry) a serial number;
    // SetSerialNumber refuses such a number, as it refuses an empty one.
    void setSerialInUse(std::function<bool(const QString&)> inUse) {
        m_serialInUse = std::move(inUse);
    }
    // The serial number the next enumeration reports.
    QString pendingSerial() const { return m_writtenSerial.value_or(m_serial); }

    void check(const char* operation);
    bool isUsable() const { return m_plugged && m_responding && m_open; }
    ConverterModel& converter(Which which);
    // Applies a change to the converter settings; a new current frequency unsettles the zero.
    void changeConverter(Which which, const std::function<void(ConverterModel&)>& change);
    float dacVolts(float volts) const;
    qint32& zeroValue(int channel, Which which);
    float& tableCell(int row, int column);
    double temperatureNow();
    void startConverting(const std::function<void(double)>& start);
    void stopConverting();
    PlateSample sampleAt(double seconds);
    void passLoadChanges(double seconds);
    void loadFactoryState(const SimPlateConfig& config);

    Clock& m_clock;
    const quint32 m_origin;
    const int m_instance;
    const quint8 m_firmwareMajor;
    const quint8 m_firmwareMinor;
    const qint32 m_codeOrigin; // offset-binary codes on firmware 1.x
    PlateTruth m_truth;        // the chain reads it; only the ambient temperature ever changes
    SignalChain m_chain;
    PlateLoads m_loads;

    // Non-volatile memory.
    QString m_serial;
    std::optional<QString> m_writtenSerial;
    ConverterModel m_defaultConverter;
    float m_defaultGage = 5;
    std::array<qint32, 4> m_defaultZero{};
    std::array<std::array<float, 4>, 4> m_table{};
    UsbIdentity m_identity{};
    ServiceRecord m_record;
    qint32 m_encoderOrigin = 0;

    // State since power-on.
    UsbIdentity m_activeIdentity{};
    ConverterModel m_converter;
    float m_gage = 5;
    std::array<qint32, 4> m_zero{};
    int m_resolution = 24;
    bool m_polled = true;
    bool m_powered = true;
    bool m_sleeping = false;
    bool m_backgroundCalibration = false;
    quint32 m_poweredAt = 0;
    double m_poweredAtSeconds = 0;
    double m_lastSampleSeconds = 0;
    quint64 m_stall = 0; // tells a pending stall time-out whether it still applies

    bool m_plugged = false;
    bool m_responding = true;
    bool m_open = false;

    FailurePlan m_failures;
    std::function<void(PlateFault)> m_faultHandler;
    std::function<bool(const QString&)> m_serialInUse;
    FaultSchedule m_faults;
    AcquisitionEngine m_engine;
};

} // namespace kx
