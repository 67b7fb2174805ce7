#pragma once

#include <Eigen/Core>
#include <QString>
#include <optional>

namespace kx {

// What a fit engine returns: C = (L·Sᵀ)·(S·Sᵀ)⁻¹ (3 × m) and F = C·S (3 × N).
struct FitProducts {
    Eigen::MatrixXd C;
    Eigen::MatrixXd F;
    QString source; // the program that computed them; empty for the built-in fit
};

// Computes the least-squares matrix from the expected loads L (3 × N) and the signals S
// (m × N). The caller has checked that S·Sᵀ can be inverted.
class FitEngine {
public:
    virtual ~FitEngine() = default;
    // Nothing, with the reason in `error`, when the engine failed.
    virtual std::optional<FitProducts> compute(const Eigen::MatrixXd& L, const Eigen::MatrixXd& S,
                                               QString& error) = 0;
};

} // namespace kx
