#pragma once

#include "calibration/OleDate.h"

#include <QByteArray>
#include <QtGlobal>
#include <array>
#include <vector>

namespace kx {

// Zero and data results of one calibration point. Zero values are converter codes (channels
// 0..3), data values normalised bridge volts (channels 0..2).
struct CalPoint {
    double x = 0; // m
    double y = 0; // m
    bool zeroDone = false;
    OleDate zeroDate;
    float zeroTemperature = 0; // °C
    std::array<double, 4> zeroAverage{};
    std::array<double, 4> zeroStdDev{};
    bool dataDone = false;
    OleDate dataDate;
    float dataTemperature = 0; // °C
    std::array<double, 3> dataMean{};
    std::array<double, 3> dataStdDev{};
    // What the calibration weight exerts here: Fz [N], Mx [N·m], My [N·m].
    std::array<double, 3> expectedLoad{};

    friend bool operator==(const CalPoint&, const CalPoint&) = default;
};

// One step of the linearity check: the plate loaded (steps 1..n/2) or unloaded (the rest)
// with a known force.
struct LinearityStep {
    bool done = false;
    OleDate date;
    float temperature = 0;        // °C
    std::array<double, 3> mean{}; // normalised volts
    std::array<double, 3> stdDev{};
    float appliedLoad = 0; // N, the setting at the time of the step

    friend bool operator==(const LinearityStep&, const LinearityStep&) = default;
};

// The zero taken for the linearity steps, kept apart from the points' zeros.
struct ScalingZero {
    bool done = false;
    OleDate date;
    float temperature = 0; // °C; not kept in the file
    std::array<double, 4> average{};
    std::array<double, 4> stdDev{};

    friend bool operator==(const ScalingZero&, const ScalingZero&) = default;
};

// A Variant as the file stores it: a 2-byte type tag and the value's bytes.
struct CalVariant {
    quint16 tag = 10;                                   // error value
    QByteArray value = QByteArray::fromHex("04000280"); // 0x80020004, "missing"

    friend bool operator==(const CalVariant&, const CalVariant&) = default;
};

// The environment the calibration was made in.
struct CalEnvironment {
    double gravity = 9.796878; // m/s²
    float temperature = 0;     // °C
    float humidity = 0;        // %
    double pressure = 0;       // hPa
    double pressureCorrection = 5.210406;

    friend bool operator==(const CalEnvironment&, const CalEnvironment&) = default;
};

// Everything a calibration file holds. The plate extents and the point-hit radius are those in
// force when the points were taken.
struct CalibrationRecord {
    float pointRadius = 0.025f; // m
    float plateXLeft = 0;
    float plateXRight = 0;
    float plateYTop = 0;
    float plateYBottom = 0;
    std::vector<CalPoint> points;
    ScalingZero scalingZero;
    std::vector<LinearityStep> steps;
    float scaleValue = 1;
    double reserved = 0;
    CalVariant reservedVariant1;
    CalVariant reservedVariant2;
    CalEnvironment environment;

    friend bool operator==(const CalibrationRecord&, const CalibrationRecord&) = default;
};

} // namespace kx
