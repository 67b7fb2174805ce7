#include "measure/TimeAxis.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kx {
namespace {

constexpr std::array kLadder{
    0.5,   1.0,   2.0,   5.0,   10.0,   20.0,   30.0,   60.0,
    120.0, 300.0, 600.0, 900.0, 1800.0, 3600.0, 7200.0, TimeAxis::kLongestSpan};
// Two spans closer than this are the same rung (spans come back from points / rate).
constexpr double kSameRung = 1e-6;

bool allowed(double spanSeconds, double pointsPerSecond) {
    const double points = spanSeconds * pointsPerSecond;
    return points >= double(TimeAxis::kMinPoints) - 0.5 &&
           points <= double(TimeAxis::kMaxPoints) + 0.5;
}

// The smallest of 1, 2 and 5 times a power of ten that cuts span into at most ten parts.
double niceStep(double span) {
    const double rough = span / 10;
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    for (const double multiple : {1.0, 2.0, 5.0, 10.0})
        if (multiple * power >= rough * (1 - kSameRung))
            return multiple * power;
    return 10 * power;
}

} // namespace

qsizetype TimeAxis::pointsForSpan(double spanSeconds, double pointsPerSecond) {
    const double points = std::round(spanSeconds * pointsPerSecond);
    if (!std::isfinite(points))
        return kMaxPoints;
    return static_cast<qsizetype>(std::clamp(points, double(kMinPoints), double(kMaxPoints)));
}

double TimeAxis::steppedSpan(double spanSeconds, int wheelSteps, double pointsPerSecond) {
    double span = spanSeconds;
    const int direction = wheelSteps > 0 ? 1 : -1;
    for (int step = 0; step < std::abs(wheelSteps); ++step) {
        // The nearest rung beyond the span in the wheel's direction.
        const double tolerance = span * kSameRung;
        const double* rung = nullptr;
        for (const double& candidate : kLadder) {
            if (direction > 0 && candidate > span + tolerance) {
                rung = &candidate;
                break;
            }
            if (direction < 0 && candidate < span - tolerance)
                rung = &candidate;
        }
        if (rung == nullptr || !allowed(*rung, pointsPerSecond))
            break;
        span = *rung;
    }
    return span;
}

std::vector<TimeAxis::Tick> TimeAxis::ticks(double spanSeconds) {
    std::vector<Tick> ticks;
    if (!(spanSeconds > 0) || !std::isfinite(spanSeconds))
        return ticks;
    const bool minutes = spanSeconds >= kMinutesFrom * (1 - kSameRung);
    const double unit = minutes ? 60 : 1;
    const QString suffix = minutes ? QStringLiteral(" min") : QStringLiteral(" s");
    const double span = spanSeconds / unit;
    const double step = niceStep(span);
    const auto count = static_cast<int>(std::floor(span / step + kSameRung));
    for (int k = 0; k <= count; ++k) {
        const double value = k * step;
        ticks.push_back({value * unit, QString::number(value, 'g', 6) + suffix});
    }
    return ticks;
}

} // namespace kx
