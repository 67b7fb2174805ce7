#include "support/Rounding.h"

#include <cmath>
#include <limits>

namespace kx {

qint32 roundHalfEven(double value) {
    if (std::isnan(value))
        return 0;
    const double lower = std::floor(value);
    const double fraction = value - lower;
    double rounded = lower;
    if (fraction > 0.5 || (fraction == 0.5 && std::fmod(lower, 2.0) != 0.0))
        rounded = lower + 1.0;
    constexpr double min = std::numeric_limits<qint32>::min();
    constexpr double max = std::numeric_limits<qint32>::max();
    if (rounded <= min)
        return std::numeric_limits<qint32>::min();
    if (rounded >= max)
        return std::numeric_limits<qint32>::max();
    return static_cast<qint32>(rounded);
}

qint32 periodMsFromHertz(double hertz) {
    return roundHalfEven(1000.0 / hertz);
}

} // namespace kx
