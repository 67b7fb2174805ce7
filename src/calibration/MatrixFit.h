#pragma once

#include "calibration/CalMatrix.h"
#include "calibration/FitEngine.h"

#include <QString>
#include <array>
#include <optional>
#include <vector>

namespace kx {

struct CalPoint;

// One row of the error table: applied minus computed Fz [N], and the point's X and Y minus
// the computed centre of pressure (−My/Fz, Mx/Fz) [m], NaN when the computed Fz is 0.
struct FitErrorRow {
    int point = 0; // index into the point table
    double fz = 0;
    double x = 0;
    double y = 0;
};

// How far the fit can be trusted. Rows are Fz [N], Mx and My [N·m].
struct FitDiagnostics {
    using Elements = std::array<std::array<double, 3>, 3>;

    double conditionNumber = 0;          // of S: largest over smallest singular value
    std::array<double, 3> residualRms{}; // per output row, over the N points
    // Expanded uncertainty of each element of C at about 95 % coverage: coverageFactor times
    // the element's standard uncertainty, which combines the scatter the fit leaves (the row's
    // residual variance over N − m degrees of freedom times the matching diagonal element of
    // (S·Sᵀ)⁻¹) with CellCurvature of the element. None when N ≤ m; columns beyond m are 0.
    std::optional<Elements> uncertainty;
    int degreesOfFreedom = 0;  // N − m
    double coverageFactor = 0; // Student's t at 97.5 % on degreesOfFreedom; 0 without them
    // Per used point, the largest externally studentised residual over the three rows (the
    // point's residual against the scatter of the others); NaN when N ≤ m + 1.
    std::vector<double> standardisedResidual;
    // Far out statistically (a row's standardised residual above OutlierLimit) and off in
    // that row by more than its floor: CopFloor for Mx and My, FzFloor for Fz.
    std::vector<bool> flagged;

    // The load cells' curves bow away from a straight line by up to 0.02 % of their full
    // scale. At the light calibration load the slope of such a bow is off the straight line's
    // by up to four times that, much the same at every point, so no residual shows it and the
    // fit takes it in whole. Spread evenly within ±0.08 %, it is a standard uncertainty of
    // 0.08 % / √3 of every element; left out, the stated uncertainty of a plate whose weights
    // are set precisely on their marks covers far fewer than 95 of 100 elements.
    static constexpr double CellCurvature = 0.0008 / 1.7320508075688772;

    // With ten points (6 degrees of freedom left out of each) a sound calibration has one of
    // its 30 residuals beyond 6 in about 3 of 100 runs; a lower limit flags good points often.
    static constexpr double OutlierLimit = 6.0;
    // The statistics alone judge a point against the others' scatter, which on a very good
    // calibration is a few hundredths of a millimetre: they would name points no technician
    // need retake. A centre-of-pressure error under 1 mm (a moment residual under 1 mm times
    // the load) is within how closely a weight is set on its mark by hand and near the 0.5 to
    // 0.7 mm the best least-squares calibrations reach; an Fz residual under 0.1 % of the load
    // is a fifth of the 0.5 % they reach. Retaking such a point would not change the matrix in
    // a way a measurement could notice; a weight on the wrong mark is off by centimetres.
    static constexpr double CopFloor = 0.001; // m
    static constexpr double FzFloor = 0.001;  // of the applied load
};

// What an engine is given: the expected loads L (3 × N) and signals S (m × N) of the points
// with accepted data, in point order.
struct FitProblem {
    int m = 0;
    std::vector<int> points;                  // indices of the points used, ascending
    std::vector<std::array<double, 2>> marks; // their X and Y [m]
    Eigen::MatrixXd L;
    Eigen::MatrixXd S;
    double conditionNumber = 0; // of S
};

struct FitResult {
    int m = 0;               // signal channels fitted
    std::vector<int> points; // indices of the points used, ascending
    CalMatrix matrix{};      // C laid into 3 x 3, missing columns 0
    std::vector<double> C;   // 3 × m, row-major, double precision
    std::vector<FitErrorRow> errors;
    FitDiagnostics diagnostics;
    // Set when the engine failed, or gave a matrix that is not the fit of the problem, and the
    // built-in fit was used instead: why.
    QString engineError;
    // The engine ran and answered, but its matrix is not the fit of the problem.
    bool engineRefused = false;
    FitProblem problem; // what was fitted
};

struct FitOutcome {
    std::optional<FitResult> result;
    QString error; // why nothing was fitted
};

// The matrix fit over the points with accepted data. m = 1 + the highest channel whose data
// mean is > 0 at some such point. Refused with a message when m = 0, when fewer points than
// m have data, or when S·Sᵀ is too ill-conditioned to invert (condition number of S above
// MaxConditionNumber). When the engine fails, or its matrix is not the built-in fit of the
// same points, the built-in fit is used and the result says why.
class MatrixFit {
public:
    static constexpr double MaxConditionNumber = 1e6;
    // An engine solves the same normal equations as the built-in fit, so the two agree to
    // rounding: within this share of each row's largest element of C (and of F). The plate
    // keeps the matrix in single precision, good to about 6e-8 of an element, so an engine
    // within the tolerance gives the plate the same matrix to a few units in its last place,
    // while a wrong answer (a transposed or stale matrix, a misread line) is off by far more.
    // Rounding grows with the square of S's condition number; where points spread so poorly
    // that it could pass the tolerance, the allowance grows with it by EngineRounding.
    static constexpr double EngineTolerance = 1e-6;
    static constexpr double EngineRounding = 1e-14; // per unit of the squared condition number

    // pose(), the engine, complete() in one go.
    static FitOutcome compute(const std::vector<CalPoint>& points, FitEngine& engine);

    // The problem an engine solves; nothing, with the refusal in `error`, when it cannot be.
    static std::optional<FitProblem> pose(const std::vector<CalPoint>& points, QString& error);
    // The result from the engine's products once they are checked against the built-in fit;
    // when the engine gave none (`engineError` says why) or gave another matrix, from the
    // built-in fit with the reason kept in the result.
    static FitOutcome complete(const FitProblem& problem, std::optional<FitProducts> products,
                               const QString& engineError = {});

    // Whether `fit` is still the fit of these points: the same points with data, at the same
    // marks, with the same loads and signals. Any change since makes it stale.
    static bool matches(const FitResult& fit, const std::vector<CalPoint>& points);
};

} // namespace kx
