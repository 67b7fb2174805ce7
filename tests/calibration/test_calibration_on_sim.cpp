#include "../support/PrintQString.h"
#include "CalibrationSimBench.h"
#include "calibration/BuiltInFitEngine.h"
#include "calibration/MatrixFit.h"

#include <cmath>
#include <gtest/gtest.h>

namespace kx {
namespace {

using test::CalibrationSimBench;

FitResult fit(CalibrationSimBench& bench) {
    BuiltInFitEngine engine;
    const FitOutcome out = MatrixFit::compute(bench.calibration.record.points, engine);
    if (!out.result)
        throw std::runtime_error(out.error.toStdString());
    return *out.result;
}

// Largest error of any element relative to the largest element of its row.
double worstRelativeError(const FitResult& r, const Matrix3& truth) {
    double worst = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        double largest = 0;
        for (std::size_t j = 0; j < 3; ++j)
            largest = std::max(largest, std::abs(truth[i][j]));
        for (std::size_t j = 0; j < 3; ++j)
            worst = std::max(worst, std::abs(r.C[3 * i + j] - truth[i][j]) / largest);
    }
    return worst;
}

TEST(CalibrationOnSim, TenPointsFindTheHiddenMatrixAndTheScaleStaysAtOne) {
    for (const quint64 seed : {1u, 2u, 3u}) {
        CalibrationSimBench bench(seed, false);
        bench.walkThePoints();
        const FitResult r = fit(bench);
        ASSERT_EQ(r.m, 3);
        ASSERT_EQ(r.points.size(), 10u);
        const double load = bench.settings.Load;
        const double matrixError = worstRelativeError(r, bench.plate->truth().trueMatrix);
        EXPECT_LT(matrixError, 0.0005) << seed;
        double worstFz = 0;
        double worstCop = 0;
        for (const FitErrorRow& e : r.errors) {
            EXPECT_LT(std::abs(e.fz), 0.0005 * load) << "seed " << seed << " point " << e.point;
            EXPECT_LT(std::abs(e.x), 1e-4) << "seed " << seed << " point " << e.point;
            EXPECT_LT(std::abs(e.y), 1e-4) << "seed " << seed << " point " << e.point;
            worstFz = std::max(worstFz, std::abs(e.fz));
            worstCop = std::max({worstCop, std::abs(e.x), std::abs(e.y)});
        }
        std::cout << "seed " << seed << ": matrix " << matrixError * 100 << " %, Fz "
                  << worstFz / load * 100 << " % of the load, centre of pressure "
                  << worstCop * 1000 << " mm\n";
        for (const bool flagged : r.diagnostics.flagged)
            EXPECT_FALSE(flagged) << seed;

        bench.calibration.matrix = r.matrix;
        bench.runLinearity(0.0, 0.18);
        const float suggested =
            LinearityScaling::suggestedValue(r.matrix, bench.calibration.record.steps);
        EXPECT_NEAR(suggested, 1.0f, 0.0005f) << seed;
        for (const QStringList& row :
             LinearityScaling::gridRows(r.matrix, bench.calibration.record.steps))
            EXPECT_NEAR(row[3].toDouble(), 1.0, 0.0006) << row.join(u' ').toStdString();
    }
}

// Over many plates, each element's true error lies within two of its standard uncertainties
// as often as Student's t with N − m = 7 degrees of freedom allows: P(|t| ≤ 2) = 0.92. The
// weights are put down by hand (1.5 mm scatter): on a centring rig the top's fixed flex
// pattern, the same on every plate, weighs more than the scatter and the coverage falls to
// about 0.87.
TEST(CalibrationOnSim, UncertaintiesAreHonestOverManyPlates) {
    int covered = 0;
    int total = 0;
    int falseFlags = 0;
    for (quint64 seed = 100; seed < 140; ++seed) {
        SimPlateConfig handPlaced = test::proofPlateConfig(seed, true);
        handPlaced.imperfections.placementScatter = 0.0015;
        CalibrationSimBench bench(handPlaced);
        bench.walkThePoints();
        const FitResult r = fit(bench);
        falseFlags += static_cast<int>(
            std::count(r.diagnostics.flagged.begin(), r.diagnostics.flagged.end(), true));
        ASSERT_TRUE(r.diagnostics.uncertainty);
        const Matrix3& truth = bench.plate->truth().trueMatrix;
        for (std::size_t i = 0; i < 3; ++i)
            for (std::size_t j = 0; j < 3; ++j) {
                covered += std::abs(r.C[3 * i + j] - truth[i][j]) <=
                           2 * (*r.diagnostics.uncertainty)[i][j];
                ++total;
            }
    }
    const double coverage = double(covered) / total;
    std::cout << "coverage of 2 u: " << coverage << " over " << total << " elements\n";
    EXPECT_GT(coverage, 0.87);
    EXPECT_LT(coverage, 0.97);
    EXPECT_LE(falseFlags, 3); // of 40 sound calibrations
}

TEST(CalibrationOnSim, AWeightTwoCentimetresOffItsMarkIsFlagged) {
    for (const int misplaced : {0, 4, 7}) {
        CalibrationSimBench bench(200 + static_cast<quint64>(misplaced), true);
        std::vector<std::pair<double, double>> offsets(10, {0.0, 0.0});
        offsets[static_cast<std::size_t>(misplaced)] = {0.02, 0.0};
        bench.walkThePoints(offsets);
        const FitResult r = fit(bench);
        for (std::size_t k = 0; k < 10; ++k)
            EXPECT_EQ(r.diagnostics.flagged[k], static_cast<int>(k) == misplaced)
                << "misplaced " << misplaced << ", point " << k << ": "
                << r.diagnostics.standardisedResidual[k];
    }
}

} // namespace
} // namespace kx
