#pragma once

#include "calibration/FitEngine.h"

namespace kx {

// The program's own fit: Q = S·Sᵀ inverted through its Cholesky factors.
class BuiltInFitEngine final : public FitEngine {
public:
    std::optional<FitProducts> compute(const Eigen::MatrixXd& L, const Eigen::MatrixXd& S,
                                       QString& error) override;
};

} // namespace kx
