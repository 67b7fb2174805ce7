#include "calibration/CoverageFactor.h"

#include <array>
#include <limits>

namespace kx {

namespace {

// Student's t at 97.5 % for 1 to 30 degrees of freedom.
constexpr std::array<double, 30> Table{
    12.7062, 4.3027, 3.1824, 2.7764, 2.5706, 2.4469, 2.3646, 2.3060, 2.2622, 2.2281,
    2.2010,  2.1788, 2.1604, 2.1448, 2.1314, 2.1199, 2.1098, 2.1009, 2.0930, 2.0860,
    2.0796,  2.0739, 2.0687, 2.0639, 2.0595, 2.0555, 2.0518, 2.0484, 2.0452, 2.0423};

constexpr double Normal975 = 1.959963984540054;

} // namespace

double coverageFactor95(int degreesOfFreedom) {
    if (degreesOfFreedom < 1)
        return std::numeric_limits<double>::infinity();
    if (degreesOfFreedom <= static_cast<int>(Table.size()))
        return Table[static_cast<std::size_t>(degreesOfFreedom - 1)];
    // Beyond the table the expansion of t in powers of 1/ν about the normal quantile is good
    // to the table's four decimals.
    const double z = Normal975;
    const double z2 = z * z;
    const double v = degreesOfFreedom;
    return z + z * (z2 + 1) / (4 * v) + z * ((5 * z2 + 16) * z2 + 3) / (96 * v * v) +
           z * (((3 * z2 + 19) * z2 + 17) * z2 - 15) / (384 * v * v * v);
}

} // namespace kx
