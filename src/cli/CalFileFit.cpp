#include "cli/CalFileFit.h"

#include "calibration/BuiltInFitEngine.h"
#include "calibration/CalibrationRecord.h"
#include "calibration/OctaveFitEngine.h"
#include "resources/StringTable.h"

namespace kx::cli {

CalFileFit fitCalibration(const CalibrationRecord& record, FitEngineChoice engine) {
    CalFileFit fit;
    if (engine == FitEngineChoice::Octave) {
        OctaveFitEngine octave;
        fit.outcome = MatrixFit::compute(record.points, octave);
    } else {
        BuiltInFitEngine builtIn;
        fit.outcome = MatrixFit::compute(record.points, builtIn);
    }
    if (fit.outcome.result && !fit.outcome.result->engineError.isEmpty()) {
        namespace c = strings::calibrate;
        fit.engineNote =
            oneLine(strings::text(c::EngineUnavailable) + QStringLiteral(": ") +
                    fit.outcome.result->engineError + u' ' + strings::text(c::EngineBuiltInUsed));
    }
    return fit;
}

QString oneLine(const QString& text) {
    return text.simplified();
}

} // namespace kx::cli
