#include "calibration/AcquisitionPlan.h"

#include "support/NumberFormat.h"
#include "support/Rounding.h"

#include <algorithm>
#include <cmath>

namespace kx {

AcquisitionPlan AcquisitionPlan::from(const QString& durationText, float sampleFrequency) {
    AcquisitionPlan plan;
    bool ok = false;
    const double duration = durationText.trimmed().toDouble(&ok);
    if (ok && std::isfinite(duration) && duration > 0) {
        plan.durationText = durationText;
        plan.duration = duration;
    } else {
        plan.durationText = QStringLiteral("1");
    }
    plan.samples = std::max(1, roundHalfEven(plan.duration * static_cast<double>(sampleFrequency)));
    return plan;
}

std::optional<float> compatibleExcitation(std::optional<float> dataExcitation,
                                          float boxExcitation) {
    if (!dataExcitation)
        return std::nullopt;
    const NumberFormat shown(u"0.000");
    if (shown.format(*dataExcitation) == shown.format(boxExcitation))
        return std::nullopt;
    return dataExcitation;
}

} // namespace kx
