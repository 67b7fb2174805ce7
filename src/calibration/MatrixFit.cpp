#include "calibration/MatrixFit.h"

#include "calibration/BuiltInFitEngine.h"
#include "calibration/CalibrationRecord.h"
#include "resources/StringTable.h"

#include <Eigen/Cholesky>
#include <Eigen/SVD>
#include <cmath>
#include <limits>

namespace kx {

namespace {

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
// A row whose residuals are this small against its loads fits exactly: its standardised
// residuals are 0 rather than a ratio of rounding errors.
constexpr double ExactFit = 1e-12;

int signalRows(const std::vector<CalPoint>& points) {
    int m = 0;
    for (const CalPoint& p : points)
        if (p.dataDone)
            for (int c = 0; c < 3; ++c)
                if (p.dataMean[static_cast<std::size_t>(c)] > 0)
                    m = std::max(m, c + 1);
    return m;
}

FitDiagnostics diagnose(const Eigen::MatrixXd& L, const Eigen::MatrixXd& S,
                        const Eigen::MatrixXd& C, double conditionNumber) {
    const Eigen::Index m = S.rows();
    const Eigen::Index n = S.cols();
    FitDiagnostics d;
    d.conditionNumber = conditionNumber;
    const Eigen::MatrixXd R = L - C * S;
    const Eigen::MatrixXd Qi = (S * S.transpose()).ldlt().solve(Eigen::MatrixXd::Identity(m, m));
    for (Eigen::Index i = 0; i < 3; ++i)
        d.residualRms[static_cast<std::size_t>(i)] = std::sqrt(R.row(i).squaredNorm() / double(n));

    if (n > m) {
        std::array<std::array<double, 3>, 3> u{};
        for (Eigen::Index i = 0; i < 3; ++i) {
            const double variance = R.row(i).squaredNorm() / double(n - m);
            for (Eigen::Index j = 0; j < m; ++j)
                u[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] =
                    std::sqrt(variance * Qi(j, j));
        }
        d.uncertainty = u;
    }

    const Eigen::Index dof = n - m - 1; // left once the point itself is left out
    for (Eigen::Index k = 0; k < n; ++k) {
        double worst = dof > 0 ? 0.0 : NaN;
        const double leverage = S.col(k).dot(Qi * S.col(k));
        const double free = 1 - leverage;
        for (Eigen::Index i = 0; i < 3 && dof > 0; ++i) {
            const double sse = R.row(i).squaredNorm();
            const double scale = L.row(i).norm();
            if (std::sqrt(sse) <= ExactFit * scale)
                continue;
            if (free <= 1e-12) {
                worst = NaN; // the point alone decides this row: it cannot be judged
                break;
            }
            const double r = R(i, k);
            const double othersVariance = (sse - r * r / free) / double(dof);
            const double t = othersVariance > 0 ? std::abs(r) / std::sqrt(othersVariance * free)
                                                : std::numeric_limits<double>::infinity();
            worst = std::max(worst, t);
        }
        d.standardisedResidual.push_back(worst);
        d.flagged.push_back(worst > FitDiagnostics::OutlierLimit);
    }
    return d;
}

} // namespace

FitOutcome MatrixFit::compute(const std::vector<CalPoint>& points, FitEngine& engine) {
    FitOutcome outcome;
    const int m = signalRows(points);
    if (m == 0) {
        outcome.error = strings::text(strings::calibrate::FitNoSignal);
        return outcome;
    }
    std::vector<int> used;
    for (std::size_t i = 0; i < points.size(); ++i)
        if (points[i].dataDone)
            used.push_back(static_cast<int>(i));
    const auto n = static_cast<Eigen::Index>(used.size());
    if (n < m) {
        outcome.error = strings::text(strings::calibrate::FitTooFewPoints).arg(m).arg(n);
        return outcome;
    }

    Eigen::MatrixXd L(3, n);
    Eigen::MatrixXd S(m, n);
    for (Eigen::Index k = 0; k < n; ++k) {
        const CalPoint& p = points[static_cast<std::size_t>(used[static_cast<std::size_t>(k)])];
        for (Eigen::Index i = 0; i < 3; ++i)
            L(i, k) = p.expectedLoad[static_cast<std::size_t>(i)];
        for (Eigen::Index c = 0; c < m; ++c)
            S(c, k) = p.dataMean[static_cast<std::size_t>(c)];
    }

    const Eigen::JacobiSVD<Eigen::MatrixXd> svd(S);
    const auto& sv = svd.singularValues();
    const double condition =
        sv(m - 1) > 0 ? sv(0) / sv(m - 1) : std::numeric_limits<double>::infinity();
    if (!(condition <= MaxConditionNumber)) {
        outcome.error =
            strings::text(strings::calibrate::FitIllConditioned).arg(condition, 0, 'g', 3);
        return outcome;
    }

    FitResult result;
    QString engineError;
    std::optional<FitProducts> products = engine.compute(L, S, engineError);
    if (!products) {
        result.engineError = engineError;
        BuiltInFitEngine builtIn;
        products = builtIn.compute(L, S, engineError);
        if (!products) {
            outcome.error =
                strings::text(strings::calibrate::FitIllConditioned).arg(condition, 0, 'g', 3);
            return outcome;
        }
    }
    const Eigen::MatrixXd& C = products->C;
    const Eigen::MatrixXd& F = products->F;

    result.m = m;
    result.points = used;
    for (Eigen::Index i = 0; i < 3; ++i)
        for (Eigen::Index j = 0; j < m; ++j) {
            result.matrix[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] =
                static_cast<float>(C(i, j));
            result.C.push_back(C(i, j));
        }
    for (Eigen::Index k = 0; k < n; ++k) {
        const CalPoint& p = points[static_cast<std::size_t>(used[static_cast<std::size_t>(k)])];
        FitErrorRow row;
        row.point = used[static_cast<std::size_t>(k)];
        row.fz = L(0, k) - F(0, k);
        const double fz = F(0, k);
        row.x = fz != 0 ? p.x - (-F(2, k) / fz) : NaN;
        row.y = fz != 0 ? p.y - (F(1, k) / fz) : NaN;
        result.errors.push_back(row);
    }
    result.diagnostics = diagnose(L, S, C, condition);
    outcome.result = std::move(result);
    return outcome;
}

} // namespace kx
