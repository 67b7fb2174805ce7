#pragma once

#include "device/PlateTypes.h"

#include <optional>

namespace kx {

// Where the load stands on the plate, in metres (X to the right, Y up).
struct CentreOfPressure {
    float x;
    float y;
};

// A sample counts as loaded while Fz < minFz (a loaded plate reports negative Fz).
inline bool isLoaded(const Float3& forces, float minFz) {
    return forces[0] < minFz;
}

// CoPx = -My / Fz and CoPy = Mx / Fz in single precision, for a loaded sample only. With a
// negative threshold Fz = 0 never gets here; a threshold of 0 or more lets it through, and the
// result is then not finite, which the caller must not plot.
std::optional<CentreOfPressure> centreOfPressure(const Float3& forces, float minFz);

} // namespace kx
