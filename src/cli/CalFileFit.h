#pragma once

#include "calibration/MatrixFit.h"

#include <QString>

namespace kx {
struct CalibrationRecord;
} // namespace kx

namespace kx::cli {

enum class FitEngineChoice {
    BuiltIn, // the program's own fit
    Octave   // GNU Octave as a child process; the built-in fit when it fails
};

// The matrix fit of a calibration file's points, as "Compute Matrix" makes it. When Octave was
// asked for and failed, the built-in result comes with `engineNote`: one line on what happened.
struct CalFileFit {
    FitOutcome outcome;
    QString engineNote;
};

CalFileFit fitCalibration(const CalibrationRecord& record, FitEngineChoice engine);

// A message of the calibration texts (which break lines for a message box) in one line.
QString oneLine(const QString& text);

} // namespace kx::cli
