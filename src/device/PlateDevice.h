#pragma once

#include "device/PlateTypes.h"

#include <QDateTime>
#include <QObject>
#include <QString>

namespace kx {

// One connected force plate, as the plate library offers it. Every operation may throw
// PlateError; call them inside runDeviceHandler() (PlateError.h). Events arrive on the
// user-interface thread, between user actions, and handlers may call back into the plate.
//
// Units: volts and hertz as Single, zero values in converter codes, matrix cells in
// "N or Nm per V read by converter @ 1V Bridge Excit.", temperatures in degrees C.
class PlateDevice : public QObject {
    Q_OBJECT
public:
    ~PlateDevice() override;

    // Identity
    virtual QString SerialNumber() = 0;
    virtual void SetSerialNumber(const QString& serial) = 0;
    virtual quint8 FirmwareMajor() = 0;
    virtual quint8 FirmwareMinor() = 0;

    // Converter parameters. Writing the turbo rate, decimation rate, sampling frequency or
    // -3 dB frequency makes the plate derive the others; read them back after a write.
    virtual float GageVoltage(Which which) = 0;
    virtual void SetGageVoltage(Which which, float volts) = 0;
    virtual float SampleFrequency(Which which) = 0;
    virtual void SetSampleFrequency(Which which, float hertz) = 0;
    virtual float CutoffFrequency(Which which) = 0;
    virtual void SetCutoffFrequency(Which which, float hertz) = 0;
    virtual qint16 TurboRate(Which which) = 0;
    virtual void SetTurboRate(Which which, qint16 rate) = 0;
    virtual qint16 DecimationRate(Which which) = 0;
    virtual void SetDecimationRate(Which which, qint16 rate) = 0;
    virtual int Resolution() = 0; // bits
    virtual void SetResolution(int bits) = 0;

    // Zero values of converter channels 0 to 3, in converter codes.
    virtual qint32 ZeroValue(int channel, Which which) = 0;
    virtual void SetZeroValue(int channel, Which which, qint32 codes) = 0;

    // The stored 4x4 table: rows and columns 0..2 hold the calibration matrix (row = Fz, Mx,
    // My; column = bridge channel); row 3 the four application counters; cell (0, 3) the
    // date of the last counter change as a day number (days since 30 December 1899).
    virtual float MatrixElement(int row, int column) = 0;
    virtual void SetMatrixElement(int row, int column, float value) = 0;

    // Status switches. The selector of the first three is always passed as 0.
    virtual bool Polled(qint16 selector) = 0;
    virtual void SetPolled(qint16 selector, bool on) = 0;
    virtual bool PowerOn(qint16 selector) = 0;
    virtual void SetPowerOn(qint16 selector, bool on) = 0;
    virtual bool ConverterSleep(qint16 selector) = 0;
    virtual void SetConverterSleep(qint16 selector, bool on) = 0;
    virtual bool BackgroundCalibration() = 0;
    virtual void SetBackgroundCalibration(bool on) = 0;

    // Converter commands
    virtual void CalibrateSelf() = 0;
    virtual void CalibrateOffset() = 0;
    virtual void CalibrateFullScale() = 0;
    virtual void CalibratePseudo() = 0;

    // Acquisitions. Starting one while another runs replaces it. The flag and option
    // arguments are the library's; callers pass them exactly as their dialog specifies.
    virtual void StartZero(qint32 samples, bool flag, qint32 option1 = 0, qint32 option2 = 0) = 0;
    virtual void StartTest(qint32 samples, bool flag1, bool flag2, bool flag3, qint32 option,
                           bool flag4) = 0;
    virtual void StartAcquisition(bool flag1, bool flag2, bool flag3, bool flag4, bool flag5) = 0;
    virtual void StartCapture(bool flag) = 0;
    virtual void StopCapture() = 0;
    virtual void StopAcquisition() = 0;
    virtual void AbortAcquisition() = 0;
    virtual void FlushData() = 0;
    virtual void RequestEncoder() = 0;

    virtual float Temperature() = 0;
    virtual void SetOperatorRecord2(const QString& record, const QDateTime& date) = 0;
    virtual void SetOperatorRecord3(const QString& record, const QDateTime& date) = 0;

    // Maintenance
    virtual UsbIdentity GetUsbIdentity() = 0;
    virtual void SetUsbIdentity(const UsbIdentity& identity) = 0;
    virtual float MaxTemperature() = 0;
    virtual float MinTemperature() = 0;
    virtual qint64 TimeInService() = 0; // seconds
    virtual qint32 EnumerationCount() = 0;
    // Invalid when the plate holds no valid date (never calibrated or inspected).
    virtual QDateTime CalibrationRecordDate() = 0;
    virtual QString CalibrationRecordOperator() = 0;
    virtual QDateTime InspectionRecordDate() = 0;
    virtual QString InspectionRecordOperator() = 0;
    // Codes: 157 resets the temperature extremes, 158 the time in service, 160 the
    // enumeration count.
    virtual void ExecuteCommand(qint16 selector, qint16 code) = 0;

Q_SIGNALS:
    // One converted sample of a streaming acquisition.
    void ForcesIn(qint32 sampleNumber, const kx::Float3& forces, const kx::Float3& volts);
    // Samples taken so far by a zero acquisition.
    void ZeroProgress(qint32 samples);
    // A zero acquisition ended: per channel the average and standard deviation in converter
    // codes, and a third statistic (the peak-to-peak range) that the noise test prints.
    void ZeroDone(qint32 samples, const kx::ChannelValues& average,
                  const kx::ChannelValues& deviation, const kx::ChannelValues& range);
    // A test block, or the samples recorded between StartCapture and StopCapture: forces and
    // normalised volts per sample.
    void TestDone(qint32 count, const QList<kx::Float3>& forces, const QList<kx::Float3>& volts);
    void EncoderIn(qint32 value);

    // Device-side failures (reported to the user by DeviceErrorReporter).
    void Removal();
    void ReadTimeout();
    void WriteTimeout();
    void BufferOverRun();
    void DataClipped();

protected:
    explicit PlateDevice(QObject* parent = nullptr)
        : QObject(parent) {}
};

} // namespace kx
