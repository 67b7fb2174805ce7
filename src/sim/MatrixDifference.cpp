#include "sim/MatrixDifference.h"

#include <algorithm>
#include <cmath>

namespace kx {

Matrix3 differencePercent(const Matrix3& truth, const Matrix3& stored) {
    Matrix3 difference{};
    for (std::size_t r = 0; r < 3; ++r) {
        double scale = 0;
        for (double cell : truth[r])
            scale = std::max(scale, std::abs(cell));
        for (std::size_t c = 0; c < 3; ++c)
            difference[r][c] = scale > 0 ? 100 * (stored[r][c] - truth[r][c]) / scale : 0.0;
    }
    return difference;
}

} // namespace kx
