#pragma once

#include "device/PlateTypes.h"

#include <array>

namespace kx {

// One conversion of a plate as its acquisitions use it: the four converter readings in the
// firmware's code format, and the normalised volts and forces computed from them with the
// stored zero values and matrix.
struct PlateSample {
    std::array<qint32, 4> codes{};
    Float3 forces{};
    Float3 volts{};
    bool clipped = false;
};

} // namespace kx
