#pragma once

#include <array>
#include <optional>

namespace kx {

// Small dense algebra for the plates' 3x3 matrices, row-major: m[row][column].
using Vector3 = std::array<double, 3>;
using Matrix3 = std::array<Vector3, 3>;

Vector3 multiply(const Matrix3& m, const Vector3& v);
Matrix3 multiply(const Matrix3& a, const Matrix3& b);
// Empty when the matrix is singular (or nearly so).
std::optional<Matrix3> inverse(const Matrix3& m);

} // namespace kx
