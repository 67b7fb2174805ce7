#include "measure/CaptureRow.h"

#include "measure/CentreOfPressure.h"

namespace kx {

Float3 posturalOf(const Float3& forces, float minFz) {
    if (const auto cop = centreOfPressure(forces, minFz))
        return {forces[0], cop->x, cop->y};
    return {};
}

} // namespace kx
