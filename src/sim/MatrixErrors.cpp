#include "sim/MatrixErrors.h"

#include "sim/PlateTop.h"

#include <algorithm>
#include <cmath>

namespace kx {

std::optional<MatrixErrors> MatrixErrors::overTop(const Matrix3& truth, const Matrix3& stored,
                                                  double newtons) {
    const std::optional<Matrix3> sensitivity = inverse(truth);
    if (!sensitivity)
        return std::nullopt;
    // Edge to edge, in steps of at most GridStep.
    const PlateTop top;
    const int columns = int(std::ceil((top.right - top.left) / GridStep)) + 1;
    const int rows = int(std::ceil((top.top - top.bottom) / GridStep)) + 1;
    MatrixErrors errors;
    double copSquares = 0;
    double fzSquares = 0;
    for (int i = 0; i < columns; ++i) {
        for (int j = 0; j < rows; ++j) {
            const double x = top.left + (top.right - top.left) * i / (columns - 1);
            const double y = top.bottom + (top.top - top.bottom) * j / (rows - 1);
            // A load pressing down: Fz negative, Mx = Fz·y, My = -Fz·x.
            const double fz = -newtons;
            const Vector3 read =
                multiply(stored, multiply(*sensitivity, Vector3{fz, fz * y, -fz * x}));
            if (!(read[0] * fz > 0))
                return std::nullopt;
            const double cop = std::hypot(-read[2] / read[0] - x, read[1] / read[0] - y);
            const double fzError = std::abs(read[0] - fz);
            copSquares += cop * cop;
            fzSquares += fzError * fzError;
            errors.copWorst = std::max(errors.copWorst, cop);
            errors.fzWorst = std::max(errors.fzWorst, fzError);
        }
    }
    const double points = double(columns) * rows;
    errors.copRms = std::sqrt(copSquares / points);
    errors.fzRms = std::sqrt(fzSquares / points);
    return errors;
}

} // namespace kx
