#pragma once

#include "calibration/MatrixFit.h"

#include <QString>

namespace kx {

// How well a matrix fit can be trusted, told in words a technician acts on: how many points
// and channels, whether the points were spread well enough, the scatter left, how well the
// matrix elements are known and which points do not fit.
class FitSummary {
public:
    enum class Spread { Good, Fair, Poor };
    // The condition number of S below 100 is good, below 1000 fair; above, the points lie too
    // close to a line for the moments to be told apart from the force.
    static Spread spread(double conditionNumber);

    // Fewer degrees of freedom than this leave the scatter too poorly known for a figure a
    // technician can work with: Student's t is above 2.8, and the summary asks for more points.
    static constexpr int MinDegreesOfFreedom = 4;

    // The largest expanded uncertainty of an element relative to the largest magnitude in its
    // row, in percent; nothing when the fit has no uncertainties.
    static std::optional<double> largestRelativeUncertainty(const FitResult& fit);

    // One line per finding. Where each element's uncertainty is shown beside it (a printed
    // report), the line on the largest one gives way to one on what the ± values are.
    enum class Uncertainty { Summarised, ShownApart };
    static QString text(const FitResult& fit, Uncertainty uncertainty = Uncertainty::Summarised);
};

} // namespace kx
