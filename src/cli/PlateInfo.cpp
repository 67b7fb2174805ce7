#include "cli/PlateInfo.h"

#include "device/PlateDevice.h"

#include <cmath>

namespace kx::cli {

namespace {

constexpr int CounterRow = 3;
constexpr int DateRow = 0;
constexpr int DateColumn = 3;
// The selector the status switches are always read with.
constexpr qint16 SwitchSelector = 0;
// The extended device information exists from this firmware on.
constexpr quint8 ServiceRecordFirmware = 2;

PlateInfo::Converter readConverter(PlateDevice& plate, Which which) {
    return {.gageVoltage = plate.GageVoltage(which),
            .sampleFrequency = plate.SampleFrequency(which),
            .cutoffFrequency = plate.CutoffFrequency(which),
            .turboRate = plate.TurboRate(which),
            .decimationRate = plate.DecimationRate(which)};
}

PlateInfo::ServiceRecord readRecord(PlateDevice& plate) {
    PlateInfo::ServiceRecord r;
    r.maxTemperature = plate.MaxTemperature();
    r.temperature = plate.Temperature();
    r.minTemperature = plate.MinTemperature();
    r.enumerations = plate.EnumerationCount();
    r.secondsInService = plate.TimeInService();
    r.calibrationDate = plate.CalibrationRecordDate();
    if (r.calibrationDate.isValid())
        r.calibrationOperator = plate.CalibrationRecordOperator();
    r.inspectionDate = plate.InspectionRecordDate();
    if (r.inspectionDate.isValid())
        r.inspectionOperator = plate.InspectionRecordOperator();
    return r;
}

} // namespace

QString PlateInfo::firmware() const {
    return QString::number(firmwareMajor) + u'.' + QString::number(firmwareMinor);
}

bool PlateInfo::calibrated() const {
    for (const Float3& row : matrix)
        for (const float cell : row)
            if (cell != 0.0f)
                return true;
    return false;
}

QDate PlateInfo::countersDate() const {
    if (!std::isfinite(countersDay) || std::abs(countersDay) > 3e6f)
        return {};
    return QDate(1899, 12, 30).addDays(static_cast<qint64>(std::trunc(countersDay)));
}

PlateInfo PlateInfo::read(PlateDevice& plate) {
    PlateInfo info;
    info.serial = plate.SerialNumber();
    info.firmwareMajor = plate.FirmwareMajor();
    info.firmwareMinor = plate.FirmwareMinor();
    info.defaults = readConverter(plate, Which::Default);
    info.current = readConverter(plate, Which::Current);
    info.resolution = plate.Resolution();
    for (int channel = 0; channel < Channels; ++channel) {
        const auto c = static_cast<std::size_t>(channel);
        info.zeroDefault[c] = plate.ZeroValue(channel, Which::Default);
        info.zeroCurrent[c] = plate.ZeroValue(channel, Which::Current);
    }
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            info.matrix[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)] =
                plate.MatrixElement(row, column);
    info.polled = plate.Polled(SwitchSelector);
    info.powerOn = plate.PowerOn(SwitchSelector);
    info.converterSleep = plate.ConverterSleep(SwitchSelector);
    info.backgroundCalibration = plate.BackgroundCalibration();
    for (int i = 0; i < 4; ++i)
        info.counters[static_cast<std::size_t>(i)] = plate.MatrixElement(CounterRow, i);
    info.countersDay = plate.MatrixElement(DateRow, DateColumn);
    if (info.firmwareMajor >= ServiceRecordFirmware)
        info.record = readRecord(plate);
    return info;
}

} // namespace kx::cli
