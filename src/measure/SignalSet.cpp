#include "measure/SignalSet.h"

namespace kx {

ChartValues chartValues(DisplayType type, const Float3& forces, const Float3& volts,
                        const std::optional<CentreOfPressure>& cop) {
    switch (type) {
    case DisplayType::Forces:
        return {forces[0], forces[1], forces[2]};
    case DisplayType::Voltages:
        return {volts[0], volts[1], volts[2]};
    case DisplayType::Postural:
        break;
    }
    if (cop)
        return {forces[0], cop->x, cop->y};
    return {forces[0], std::nullopt, std::nullopt};
}

} // namespace kx
