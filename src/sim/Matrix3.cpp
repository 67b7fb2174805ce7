#include "sim/Matrix3.h"

#include <algorithm>
#include <cmath>

namespace kx {

Vector3 multiply(const Matrix3& m, const Vector3& v) {
    Vector3 result{};
    for (int r = 0; r < 3; ++r)
        result[r] = m[r][0] * v[0] + m[r][1] * v[1] + m[r][2] * v[2];
    return result;
}

Matrix3 multiply(const Matrix3& a, const Matrix3& b) {
    Matrix3 result{};
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            result[r][c] = a[r][0] * b[0][c] + a[r][1] * b[1][c] + a[r][2] * b[2][c];
    return result;
}

std::optional<Matrix3> inverse(const Matrix3& m) {
    // Adjugate over determinant; the scale test keeps "singular" independent of the units.
    Matrix3 adj{};
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            const int r1 = (c + 1) % 3, r2 = (c + 2) % 3;
            const int c1 = (r + 1) % 3, c2 = (r + 2) % 3;
            adj[r][c] = m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
        }
    }
    const double det = m[0][0] * adj[0][0] + m[0][1] * adj[1][0] + m[0][2] * adj[2][0];
    double scale = 0;
    for (const Vector3& row : m)
        for (double x : row)
            scale = std::max(scale, std::abs(x));
    if (!std::isfinite(det) || std::abs(det) <= 1e-12 * scale * scale * scale)
        return std::nullopt;
    for (Vector3& row : adj)
        for (double& x : row)
            x /= det;
    return adj;
}

} // namespace kx
