#pragma once

#include <array>

namespace kx {

// A plate's calibration matrix: rows Fz, Mx, My; columns bridge channels 1 to 3; in "N or Nm
// per V read by converter @ 1V Bridge Excit.".
using CalMatrix = std::array<std::array<float, 3>, 3>;

} // namespace kx
