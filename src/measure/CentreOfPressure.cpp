#include "measure/CentreOfPressure.h"

namespace kx {

std::optional<CentreOfPressure> centreOfPressure(const Float3& forces, float minFz) {
    if (!isLoaded(forces, minFz))
        return std::nullopt;
    const float fz = forces[0];
    return CentreOfPressure{-forces[2] / fz, forces[1] / fz};
}

} // namespace kx
