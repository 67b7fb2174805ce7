#pragma once

#include "calibration/AcquisitionStatistics.h"
#include "calibration/CalMatrix.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <array>
#include <optional>
#include <vector>

namespace kx {

struct Calibration;
struct LinearityStep;

// The linearity check and the scaling value. Steps 1..n/2 load the plate weight by weight, the
// matching unload of weight k is step n − k + 1. The step signals are used as they are: the
// plate already subtracts the zero written to it.
class LinearityScaling {
public:
    // Fz = −(C11·s1 + C12·s2 + C13·s3), a downward load positive, rounded to single.
    static float computedFz(const CalMatrix& matrix, const std::array<double, 3>& means);

    // One row per weight: "Fz [N]", "Load [N]", "Unload [N]" ("0.000") and "Scale" ("0.0000",
    // computed over applied force, from the mean of the steps taken). Cells of steps not taken
    // are empty.
    static std::vector<QStringList> gridRows(const CalMatrix& matrix,
                                             const std::vector<LinearityStep>& steps);

    // 2 / (largest + smallest ratio), starting from smallest 2.0 and largest 0.0, over the
    // taken steps, each weight's load before its unload.
    static float suggestedValue(const CalMatrix& matrix, const std::vector<LinearityStep>& steps);

    // The scaling value from its box: empty is 1; nothing when the text is not a number.
    static std::optional<float> valueFromText(const QString& text);
    static CalMatrix scaled(const CalMatrix& matrix, float value);

    // A finished zero or step of the scaling panel; rejected readings change nothing.
    // Accepted steps mark the calibration changed; `step` is 0-based.
    static AcquisitionOutcome completeZero(Calibration& calibration, const ZeroReading& reading,
                                           float maxStdDev, const QDateTime& now,
                                           float temperature);
    static AcquisitionOutcome completeStep(Calibration& calibration, int step,
                                           const DataReading& reading, float maxStdDev,
                                           const QDateTime& now, float temperature);
};

} // namespace kx
