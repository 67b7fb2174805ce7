#pragma once

#include "calibration/CalMatrix.h"
#include "calibration/CalibrationRecord.h"
#include "calibration/MatrixFit.h"

#include <QString>
#include <optional>
#include <vector>

namespace kx {

struct CalibrationSettings;

// The whole state of one calibration, as the dialog works on it and a report reads it: what
// the file keeps (record), the fit with its diagnostics, the scaled matrix and who made it.
struct Calibration {
    CalibrationRecord record;
    int currentPoint = 0;
    float load = 0; // N, the calibration weight of the expected loads

    std::optional<FitResult> fit; // the last accepted fit
    // What that fit was computed from (fitInputsOf the record at the time).
    std::vector<double> fitInputs;
    CalMatrix matrix{};       // fitted, single precision
    CalMatrix scaledMatrix{}; // matrix × record.scaleValue

    QString serialOnFile;
    QString operatorOnFile;
    QString operatorNow;
    // The bridge excitation the data were taken at, when any point or step holds data taken in
    // this session (normalised volts from different excitations do not mix).
    std::optional<float> dataExcitation;

    // Set when a data acquisition is stored or a matrix computed; cleared by a save.
    bool unsavedChanges = false;

    // A fresh calibration sized and placed by the settings: their points, extents, loads and
    // environment, no results.
    static Calibration fromSettings(const CalibrationSettings& settings);

    // A fit matches the points while everything it was computed from is unchanged: which
    // points have data, their data means and expected loads, and the gravity. Comparing what
    // the fit took rather than flagging each change means no way of changing a point can be
    // overlooked.
    enum class FitState { Absent, Stale, Current };
    FitState fitState() const;
    static std::vector<double> fitInputsOf(const CalibrationRecord& record);
};

} // namespace kx
