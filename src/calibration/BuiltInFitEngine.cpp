#include "calibration/BuiltInFitEngine.h"

#include <Eigen/Cholesky>

namespace kx {

std::optional<FitProducts> BuiltInFitEngine::compute(const Eigen::MatrixXd& L,
                                                     const Eigen::MatrixXd& S, QString& error) {
    const Eigen::MatrixXd Q = S * S.transpose();
    const Eigen::LDLT<Eigen::MatrixXd> factors(Q);
    if (factors.info() != Eigen::Success || !factors.isPositive()) {
        error = QStringLiteral("S·Sᵀ is not positive definite");
        return std::nullopt;
    }
    // C = (L·Sᵀ)·Q⁻¹, computed as the solution of Q·Cᵀ = S·Lᵀ (Q is symmetric).
    FitProducts products;
    products.C = factors.solve(S * L.transpose()).transpose();
    products.F = products.C * S;
    return products;
}

} // namespace kx
