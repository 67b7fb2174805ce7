#include "calibration/LinearityScaling.h"

#include "calibration/Calibration.h"
#include "calibration/CalibrationTexts.h"

#include <cmath>

namespace kx {

namespace {

// The steps of weight k (0-based): its load and the matching unload.
std::array<std::size_t, 2> stepsOfWeight(std::size_t k, std::size_t stepCount) {
    return {k, stepCount - 1 - k};
}

float ratio(const CalMatrix& matrix, const LinearityStep& step) {
    return LinearityScaling::computedFz(matrix, step.mean) / step.appliedLoad;
}

} // namespace

float LinearityScaling::computedFz(const CalMatrix& matrix, const std::array<double, 3>& means) {
    const auto& c = matrix[0];
    return static_cast<float>(-(c[0] * means[0] + c[1] * means[1] + c[2] * means[2]));
}

std::vector<QStringList> LinearityScaling::gridRows(const CalMatrix& matrix,
                                                    const std::vector<LinearityStep>& steps) {
    std::vector<QStringList> rows;
    for (std::size_t k = 0; k < steps.size() / 2; ++k) {
        QStringList row{shownNumber(steps[k].appliedLoad, u"0.000")};
        float sum = 0;
        int taken = 0;
        for (const std::size_t s : stepsOfWeight(k, steps.size())) {
            if (!steps[s].done) {
                row << QString();
                continue;
            }
            const float fz = computedFz(matrix, steps[s].mean);
            row << shownNumber(fz, u"0.000");
            sum += fz;
            ++taken;
        }
        row << (taken > 0
                    ? shownNumber(sum / static_cast<float>(taken) / steps[k].appliedLoad, u"0.0000")
                    : QString());
        rows.push_back(row);
    }
    return rows;
}

float LinearityScaling::suggestedValue(const CalMatrix& matrix,
                                       const std::vector<LinearityStep>& steps) {
    // The starting values belong to the rule: no step gives 1, a ratio of 2 or more never
    // lowers the smallest below 2.
    float smallest = 2.0f;
    float largest = 0.0f;
    for (std::size_t k = 0; k < steps.size() / 2; ++k) {
        for (const std::size_t s : stepsOfWeight(k, steps.size())) {
            if (!steps[s].done)
                continue;
            const float r = ratio(matrix, steps[s]);
            if (r < smallest)
                smallest = r;
            if (r > largest)
                largest = r;
        }
    }
    return 2.0f / (largest + smallest);
}

std::optional<float> LinearityScaling::valueFromText(const QString& text) {
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return 1.0f;
    bool ok = false;
    const float value = trimmed.toFloat(&ok);
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    return value;
}

CalMatrix LinearityScaling::scaled(const CalMatrix& matrix, float value) {
    CalMatrix result = matrix;
    for (auto& row : result)
        for (float& cell : row)
            cell *= value;
    return result;
}

AcquisitionOutcome LinearityScaling::completeZero(Calibration& calibration,
                                                  const ZeroReading& reading, float maxStdDev,
                                                  const QDateTime& now, float temperature) {
    if (!reading.acceptedBy(maxStdDev))
        return AcquisitionOutcome::Rejected;
    ScalingZero& zero = calibration.record.scalingZero;
    zero.done = true;
    zero.date = OleDate::fromDateTime(now);
    zero.temperature = temperature;
    zero.average = reading.average;
    zero.stdDev = reading.stdDev;
    return AcquisitionOutcome::Accepted;
}

AcquisitionOutcome LinearityScaling::completeStep(Calibration& calibration, int step,
                                                  const DataReading& reading, float maxStdDev,
                                                  const QDateTime& now, float temperature) {
    auto& steps = calibration.record.steps;
    if (step < 0 || step >= static_cast<int>(steps.size()) || !reading.acceptedBy(maxStdDev))
        return AcquisitionOutcome::Rejected;
    LinearityStep& s = steps[static_cast<std::size_t>(step)];
    s.done = true;
    s.date = OleDate::fromDateTime(now);
    s.temperature = temperature;
    s.mean = reading.mean;
    s.stdDev = reading.stdDev;
    calibration.unsavedChanges = true;
    return AcquisitionOutcome::Accepted;
}

} // namespace kx
