#pragma once

#include "device/PlateTypes.h"
#include "measure/CentreOfPressure.h"

#include <QtGlobal>
#include <array>
#include <optional>

namespace kx {

// The signals the three charts of the real-time display show.
enum class DisplayType : qint16 {
    Forces = 0,   // Fz, Mx, My
    Voltages = 1, // V1, V2, V3
    Postural = 2  // Fz, CoPx, CoPy
};

// One value per chart, chart 0 first; an empty entry is a blank point (a gap in the trace).
using ChartValues = std::array<std::optional<float>, 3>;

// What the charts get for one sample, or for one averaged drift point: in Postural the
// centre-of-pressure charts get a blank when there is no centre of pressure (unloaded plate).
ChartValues chartValues(DisplayType type, const Float3& forces, const Float3& volts,
                        const std::optional<CentreOfPressure>& cop);

} // namespace kx
