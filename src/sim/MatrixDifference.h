#pragma once

#include "sim/Matrix3.h"

namespace kx {

// How far a stored calibration matrix is from the plate's true one, cell by cell, in percent
// of the largest true cell of the same row: cross-talk cells are nearly zero, and a percentage
// of them alone would make a good calibration look bad.
Matrix3 differencePercent(const Matrix3& truth, const Matrix3& stored);

} // namespace kx
