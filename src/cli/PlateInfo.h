#pragma once

#include "device/PlateTypes.h"

#include <QDateTime>
#include <QString>
#include <array>
#include <optional>

namespace kx {
class PlateDevice;
} // namespace kx

namespace kx::cli {

// Everything the main window's panels and the extended device information show of a plate,
// read in one pass. Reading writes nothing to the plate.
struct PlateInfo {
    struct Converter {
        float gageVoltage = 0;     // V
        float sampleFrequency = 0; // Hz
        float cutoffFrequency = 0; // Hz, -3 dB
        qint16 turboRate = 0;
        qint16 decimationRate = 0;
    };
    // The service record that firmware 2 and later keeps.
    struct ServiceRecord {
        float maxTemperature = 0; // °C
        float temperature = 0;
        float minTemperature = 0;
        qint32 enumerations = 0;
        qint64 secondsInService = 0;
        QDateTime calibrationDate; // invalid when the plate holds none
        QString calibrationOperator;
        QDateTime inspectionDate;
        QString inspectionOperator;
    };
    static constexpr int Channels = 3; // the fourth converter channel carries no bridge

    QString serial;
    quint8 firmwareMajor = 0;
    quint8 firmwareMinor = 0;
    Converter current;
    Converter defaults;
    int resolution = 0; // bits, in force
    std::array<qint32, Channels> zeroCurrent{};
    std::array<qint32, Channels> zeroDefault{};
    std::array<Float3, 3> matrix{}; // rows Fz, Mx, My; columns the bridge channels
    bool polled = false;
    bool powerOn = false;
    bool converterSleep = false;
    bool backgroundCalibration = false;
    std::array<float, 4> counters{};
    float countersDay = 0; // day number of the counters' last change (days since 30 Dec 1899)
    std::optional<ServiceRecord> record;

    QString firmware() const;
    // A plate leaves the factory uncalibrated with a matrix of zeros; any other matrix is a
    // calibration.
    bool calibrated() const;
    // The counters' date; invalid for a day number no calendar holds.
    QDate countersDate() const;

    // Throws PlateError when the plate fails a read.
    static PlateInfo read(PlateDevice& plate);
};

} // namespace kx::cli
