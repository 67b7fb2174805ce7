#pragma once

#include "sim/Matrix3.h"

#include <optional>

namespace kx {

// What a plate's stored matrix gets wrong on its own: a load on every point of a fine grid
// over the whole top, turned into bridge volts by the plate's true sensitivity and back into
// forces by the stored matrix. Offsets and the imperfections of the cells and the top are
// left out.
struct MatrixErrors {
    static constexpr double GridStep = 0.01; // m, at most, from edge to edge

    double copRms = 0;   // m, distance of the centre of pressure from where the load stands
    double copWorst = 0; // m
    double fzRms = 0;    // N
    double fzWorst = 0;  // N

    // Empty when the stored matrix does not weigh a load somewhere on the top (an
    // uncalibrated plate's zeros, say), or the true one is singular.
    static std::optional<MatrixErrors> overTop(const Matrix3& truth, const Matrix3& stored,
                                               double newtons);
};

} // namespace kx
