#include "measure/ZeroStatistics.h"

#include <cmath>

namespace kx {

namespace {
constexpr double FullScaleCodes = 16777216.0; // 2^24
constexpr double FullScaleVolts = 10.0;

double decibels(double ratio) {
    return 20.0 * std::log(ratio) / std::log(10.0);
}
} // namespace

double zeroCodesToVolts(double codes) {
    return codes * FullScaleVolts / FullScaleCodes;
}

double zeroSnrDb(double deviation, int firmwareMajor, int resolutionBits) {
    if (deviation <= 0.0)
        return decibels(std::ldexp(1.0, resolutionBits));
    const double range = firmwareMajor > 1 ? FullScaleCodes : FullScaleCodes / 2.0;
    return decibels(range / deviation);
}

} // namespace kx
