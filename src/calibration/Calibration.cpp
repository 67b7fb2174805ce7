#include "calibration/Calibration.h"

#include "calibration/CalibrationSettings.h"
#include "calibration/PointTable.h"

namespace kx {

Calibration Calibration::fromSettings(const CalibrationSettings& settings) {
    Calibration c;
    c.load = settings.Load;
    CalibrationRecord& r = c.record;
    r.pointRadius = settings.DisplayPointRadius;
    r.plateXLeft = settings.PlateXLeft;
    r.plateXRight = settings.PlateXRight;
    r.plateYTop = settings.PlateYTop;
    r.plateYBottom = settings.PlateYBottom;
    for (const PointXY& xy : settings.Points) {
        CalPoint point;
        point.x = xy.x;
        point.y = xy.y;
        point.expectedLoad = PointTable::expectedLoad(settings.Load, xy.x, xy.y);
        r.points.push_back(point);
    }
    for (const float load : settings.LinearityLoads) {
        LinearityStep step;
        step.appliedLoad = load;
        r.steps.push_back(step);
    }
    r.environment.gravity = settings.Gravity;
    r.environment.pressureCorrection = settings.PressureCorrection;
    return c;
}

Calibration::FitState Calibration::fitState() const {
    if (!fit)
        return FitState::Absent;
    return fitInputsOf(record) == fitInputs ? FitState::Current : FitState::Stale;
}

std::vector<double> Calibration::fitInputsOf(const CalibrationRecord& record) {
    std::vector<double> inputs{record.environment.gravity};
    for (std::size_t i = 0; i < record.points.size(); ++i) {
        const CalPoint& point = record.points[i];
        if (!point.dataDone)
            continue;
        inputs.push_back(double(i));
        inputs.insert(inputs.end(), point.dataMean.begin(), point.dataMean.end());
        inputs.insert(inputs.end(), point.expectedLoad.begin(), point.expectedLoad.end());
        inputs.insert(inputs.end(), {point.x, point.y});
    }
    return inputs;
}

} // namespace kx
