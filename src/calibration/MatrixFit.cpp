#include "calibration/MatrixFit.h"

#include "calibration/BuiltInFitEngine.h"
#include "calibration/CalibrationRecord.h"
#include "calibration/CoverageFactor.h"
#include "resources/StringTable.h"

#include <Eigen/Cholesky>
#include <Eigen/SVD>
#include <cmath>
#include <limits>

namespace kx {

namespace {

namespace c = strings::calibrate;

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
        d.degreesOfFreedom = static_cast<int>(n - m);
        d.coverageFactor = coverageFactor95(d.degreesOfFreedom);
        FitDiagnostics::Elements u{};
        for (Eigen::Index i = 0; i < 3; ++i) {
            const double variance = R.row(i).squaredNorm() / double(n - m);
            for (Eigen::Index j = 0; j < m; ++j) {
                const double curvature = FitDiagnostics::CellCurvature * C(i, j);
                u[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] =
                    d.coverageFactor * std::sqrt(variance * Qi(j, j) + curvature * curvature);
            }
        }
        d.uncertainty = u;
    }

    const Eigen::Index dof = n - m - 1; // left once the point itself is left out
    for (Eigen::Index k = 0; k < n; ++k) {
        double worst = dof > 0 ? 0.0 : NaN;
        bool flagged = false;
        const double leverage = S.col(k).dot(Qi * S.col(k));
        const double free = 1 - leverage;
        // Fz off by a share of the load; a moment off by a distance times the load.
        const double load = std::abs(L(0, k));
        const std::array<double, 3> floors{FitDiagnostics::FzFloor * load,
                                           FitDiagnostics::CopFloor * load,
                                           FitDiagnostics::CopFloor * load};
        for (Eigen::Index i = 0; i < 3 && dof > 0; ++i) {
            const double sse = R.row(i).squaredNorm();
            const double scale = L.row(i).norm();
            if (std::sqrt(sse) <= ExactFit * scale)
                continue;
            if (free <= 1e-12) {
                worst = NaN; // the point alone decides this row: it cannot be judged
                flagged = false;
                break;
            }
            const double r = R(i, k);
            const double othersVariance = (sse - r * r / free) / double(dof);
            const double t = othersVariance > 0 ? std::abs(r) / std::sqrt(othersVariance * free)
                                                : std::numeric_limits<double>::infinity();
            worst = std::max(worst, t);
            flagged = flagged || (t > FitDiagnostics::OutlierLimit &&
                                  std::abs(r) > floors[static_cast<std::size_t>(i)]);
        }
        d.standardisedResidual.push_back(worst);
        d.flagged.push_back(flagged);
    }
    return d;
}

bool same(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b) {
    return a.rows() == b.rows() && a.cols() == b.cols() && a == b;
}

// The largest difference of an element of `theirs` from `own`, as a share of the largest
// element of its row; infinite when the shapes differ or a value is not a number.
double disagreement(const Eigen::MatrixXd& theirs, const Eigen::MatrixXd& own) {
    if (theirs.rows() != own.rows() || theirs.cols() != own.cols() || !theirs.allFinite())
        return std::numeric_limits<double>::infinity();
    double largest = 0;
    for (Eigen::Index i = 0; i < own.rows(); ++i) {
        const double scale = own.row(i).cwiseAbs().maxCoeff();
        const double off = (theirs.row(i) - own.row(i)).cwiseAbs().maxCoeff();
        largest = std::max(largest, scale > 0 ? off / scale : off);
    }
    return largest;
}

double disagreement(const FitProducts& theirs, const FitProducts& own) {
    return std::max(disagreement(theirs.C, own.C), disagreement(theirs.F, own.F));
}

// A share as a percentage of two significant figures, without an exponent: 0.0012, 0.50, 100.
QString percentText(double share) {
    const double percent = share * 100;
    const int decimals =
        percent > 0 && percent < 10 ? 1 - static_cast<int>(std::floor(std::log10(percent))) : 0;
    return QString::number(percent, 'f', decimals);
}

} // namespace

FitOutcome MatrixFit::compute(const std::vector<CalPoint>& points, FitEngine& engine) {
    FitOutcome outcome;
    const std::optional<FitProblem> problem = pose(points, outcome.error);
    if (!problem)
        return outcome;
    QString engineError;
    std::optional<FitProducts> products = engine.compute(problem->L, problem->S, engineError);
    return complete(*problem, std::move(products), engineError);
}

std::optional<FitProblem> MatrixFit::pose(const std::vector<CalPoint>& points, QString& error) {
    const int m = signalRows(points);
    if (m == 0) {
        error = strings::text(c::FitNoSignal);
        return std::nullopt;
    }
    FitProblem problem;
    problem.m = m;
    for (std::size_t i = 0; i < points.size(); ++i)
        if (points[i].dataDone)
            problem.points.push_back(static_cast<int>(i));
    const auto n = static_cast<Eigen::Index>(problem.points.size());
    if (n < m) {
        error = strings::text(c::FitTooFewPoints).arg(m).arg(n);
        return std::nullopt;
    }

    problem.L.resize(3, n);
    problem.S.resize(m, n);
    for (Eigen::Index k = 0; k < n; ++k) {
        const CalPoint& p =
            points[static_cast<std::size_t>(problem.points[static_cast<std::size_t>(k)])];
        problem.marks.push_back({p.x, p.y});
        for (Eigen::Index i = 0; i < 3; ++i)
            problem.L(i, k) = p.expectedLoad[static_cast<std::size_t>(i)];
        for (Eigen::Index c = 0; c < m; ++c)
            problem.S(c, k) = p.dataMean[static_cast<std::size_t>(c)];
    }

    const Eigen::JacobiSVD<Eigen::MatrixXd> svd(problem.S);
    const auto& sv = svd.singularValues();
    problem.conditionNumber =
        sv(m - 1) > 0 ? sv(0) / sv(m - 1) : std::numeric_limits<double>::infinity();
    if (!(problem.conditionNumber <= MaxConditionNumber)) {
        error = strings::text(c::FitIllConditioned).arg(problem.conditionNumber, 0, 'g', 3);
        return std::nullopt;
    }
    return problem;
}

FitOutcome MatrixFit::complete(const FitProblem& problem, std::optional<FitProducts> products,
                               const QString& engineError) {
    FitOutcome outcome;
    QString unused;
    const std::optional<FitProducts> own = BuiltInFitEngine().compute(problem.L, problem.S, unused);
    if (!own) {
        outcome.error = strings::text(c::FitIllConditioned).arg(problem.conditionNumber, 0, 'g', 3);
        return outcome;
    }
    FitResult result;
    result.engineError = products ? QString() : engineError;
    if (products) {
        const double off = disagreement(*products, *own);
        const double tolerance = std::max(
            EngineTolerance, EngineRounding * problem.conditionNumber * problem.conditionNumber);
        if (off > tolerance) {
            result.engineError =
                strings::text(c::EngineDisagrees).arg(products->source, percentText(off));
            result.engineRefused = true;
            products.reset();
        }
    }
    if (!products)
        products = own;
    const Eigen::MatrixXd& C = products->C;
    const Eigen::MatrixXd& F = products->F;
    const Eigen::MatrixXd& L = problem.L;
    const int m = problem.m;

    result.m = m;
    result.points = problem.points;
    for (Eigen::Index i = 0; i < 3; ++i)
        for (Eigen::Index j = 0; j < m; ++j) {
            result.matrix[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] =
                static_cast<float>(C(i, j));
            result.C.push_back(C(i, j));
        }
    for (Eigen::Index k = 0; k < L.cols(); ++k) {
        const auto [x, y] = problem.marks[static_cast<std::size_t>(k)];
        FitErrorRow row;
        row.point = problem.points[static_cast<std::size_t>(k)];
        row.fz = L(0, k) - F(0, k);
        const double fz = F(0, k);
        row.x = fz != 0 ? x - (-F(2, k) / fz) : NaN;
        row.y = fz != 0 ? y - (F(1, k) / fz) : NaN;
        result.errors.push_back(row);
    }
    result.diagnostics = diagnose(L, problem.S, C, problem.conditionNumber);
    result.problem = problem;
    outcome.result = std::move(result);
    return outcome;
}

bool MatrixFit::matches(const FitResult& fit, const std::vector<CalPoint>& points) {
    QString unused;
    const std::optional<FitProblem> now = pose(points, unused);
    const FitProblem& then = fit.problem;
    return now && now->m == then.m && now->points == then.points && now->marks == then.marks &&
           same(now->L, then.L) && same(now->S, then.S);
}

} // namespace kx
