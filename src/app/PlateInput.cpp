#include "app/PlateInput.h"

#include "support/Rounding.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kx {

qint16 toInt16(double value) {
    return static_cast<qint16>(std::clamp<qint32>(roundHalfEven(value),
                                                  std::numeric_limits<qint16>::min(),
                                                  std::numeric_limits<qint16>::max()));
}

qint32 toInt32(double value) {
    return roundHalfEven(value);
}

float toSingle(double value) {
    constexpr double largest = std::numeric_limits<float>::max();
    return static_cast<float>(std::clamp(value, -largest, largest));
}

} // namespace kx
