#include "../support/PrintQString.h"
#include "SyntheticPlate.h"
#include "calibration/BuiltInFitEngine.h"
#include "calibration/MatrixFit.h"
#include "calibration/OctaveFitEngine.h"
#include "resources/StringTable.h"

#include <cmath>
#include <gtest/gtest.h>

namespace kx {
namespace {

using test::SyntheticPlate;
using test::TenPoints;

// Normal noise of `sigma` volts on every data mean.
std::vector<CalPoint> withNoise(std::vector<CalPoint> points, unsigned seed, double sigma) {
    std::mt19937 random(seed);
    std::normal_distribution<double> noise(0, sigma);
    for (CalPoint& p : points)
        for (double& v : p.dataMean)
            v += noise(random);
    return points;
}

Eigen::MatrixXd fitted(const FitResult& r) {
    return Eigen::Map<const Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>>(
        r.C.data(), 3, r.m);
}

FitOutcome fit(const std::vector<CalPoint>& points) {
    BuiltInFitEngine engine;
    return MatrixFit::compute(points, engine);
}

// Noisy signals: C·(S·Sᵀ) = L·Sᵀ whatever the data, the error table is applied minus
// computed, and the diagnostics follow from S and the residuals as defined.
TEST(MatrixFit, NormalEquationsErrorTableAndDiagnostics) {
    const std::vector<CalPoint> points = withNoise(SyntheticPlate().grid(TenPoints), 7, 1e-4);
    const FitOutcome out = fit(points);
    ASSERT_TRUE(out.result);
    const FitResult& r = *out.result;
    Eigen::MatrixXd L(3, 10), S(3, 10);
    for (int k = 0; k < 10; ++k)
        for (int i = 0; i < 3; ++i) {
            L(i, k) = points[std::size_t(k)].expectedLoad[std::size_t(i)];
            S(i, k) = points[std::size_t(k)].dataMean[std::size_t(i)];
        }
    const Eigen::MatrixXd C = fitted(r);
    EXPECT_TRUE((C * S * S.transpose()).isApprox(L * S.transpose(), 1e-10));
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            EXPECT_EQ(r.matrix[std::size_t(i)][std::size_t(j)], float(C(i, j)));
    const Eigen::MatrixXd F = C * S;
    for (int k : {0, 3}) {
        const FitErrorRow& e = r.errors[std::size_t(k)];
        EXPECT_NEAR(e.fz, L(0, k) - F(0, k), 1e-9);
        EXPECT_NEAR(e.x, points[std::size_t(k)].x + F(2, k) / F(0, k), 1e-12);
        EXPECT_NEAR(e.y, points[std::size_t(k)].y - F(1, k) / F(0, k), 1e-12);
    }
    const Eigen::VectorXd sv = Eigen::BDCSVD<Eigen::MatrixXd>(S).singularValues();
    EXPECT_NEAR(r.diagnostics.conditionNumber, sv(0) / sv(2), 1e-9 * sv(0) / sv(2));
    // Expanded uncertainty: Student's t at 97.5 % on N − m = 7 degrees of freedom (2.3646)
    // times the root of the fit's part, the row's residual variance over 7 times the diagonal
    // of (S·Sᵀ)⁻¹, and the cells' curvature, 0.08 % / √3 of the element, squared and summed.
    const Eigen::MatrixXd R = L - F;
    const Eigen::MatrixXd Qi = (S * S.transpose()).inverse();
    ASSERT_TRUE(r.diagnostics.uncertainty);
    EXPECT_EQ(r.diagnostics.degreesOfFreedom, 7);
    EXPECT_NEAR(r.diagnostics.coverageFactor, 2.3646, 1e-4);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            const double curvature = 0.0008 / std::sqrt(3.0) * C(i, j);
            const double u =
                2.3646 * std::sqrt(R.row(i).squaredNorm() / 7 * Qi(j, j) + curvature * curvature);
            EXPECT_NEAR((*r.diagnostics.uncertainty)[std::size_t(i)][std::size_t(j)], u, 1e-4 * u);
        }
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(r.diagnostics.residualRms[std::size_t(i)],
                    std::sqrt(R.row(i).squaredNorm() / 10), 1e-9);
}

TEST(MatrixFit, OnlyPointsWithDataEnterAndMissingChannelsAreZeroColumns) {
    std::vector<CalPoint> points = SyntheticPlate().grid(TenPoints);
    points[4].dataDone = false; // its zero was taken again after the data
    for (CalPoint& p : points)
        p.dataMean[2] = 0; // channel 3 never positive: m = 2
    const FitOutcome out = fit(points);
    ASSERT_TRUE(out.result) << out.error.toStdString();
    EXPECT_EQ(out.result->m, 2);
    EXPECT_EQ(out.result->points, (std::vector<int>{0, 1, 2, 3, 5, 6, 7, 8, 9}));
    for (int row = 0; row < 3; ++row)
        EXPECT_EQ(out.result->matrix[std::size_t(row)][2], 0.0f);
    EXPECT_EQ(out.result->C.size(), 6u);
}

TEST(MatrixFit, RefusesWhatCannotBeFitted) {
    namespace s = strings::calibrate;
    const SyntheticPlate plate;
    std::vector<CalPoint> none = plate.grid(TenPoints);
    for (CalPoint& p : none)
        p.dataDone = false;
    std::vector<CalPoint> negative = plate.grid(TenPoints);
    for (CalPoint& p : negative)
        p.dataMean = {-0.1, 0, -0.2};
    struct Case {
        const char* name;
        std::vector<CalPoint> points;
        QString error;
    } cases[] = {
        {"no data", none, strings::text(s::FitNoSignal)},
        {"no positive channel", negative, strings::text(s::FitNoSignal)},
        {"fewer points than channels", plate.grid({{0, 0}, {0.3, 0.3}}),
         strings::text(s::FitTooFewPoints).arg(3).arg(2)},
        // Points on one line: S has rank 2. A tenth of a micron off it, S·Sᵀ still inverts but
        // the condition number of S is 4e7.
        {"collinear points", plate.grid({{0, 0}, {0.1, 0.1}, {0.2, 0.2}, {0.3, 0.3}}), QString()},
        {"nearly collinear points", plate.grid({{0, 0}, {0.1, 0.1}, {0.2, 0.2}, {0.3, 0.3 + 1e-7}}),
         QString()},
    };
    for (const Case& k : cases) {
        const FitOutcome out = fit(k.points);
        EXPECT_FALSE(out.result) << k.name;
        if (k.error.isEmpty())
            EXPECT_TRUE(out.error.contains(QStringLiteral("condition number"))) << k.name;
        else
            EXPECT_EQ(out.error, k.error) << k.name;
    }
}

TEST(MatrixFit, ComputedFzOfZeroGivesNaNPositions) {
    std::vector<CalPoint> points = SyntheticPlate().grid(TenPoints);
    points[9].dataMean = {0, 0, 0};
    const FitOutcome out = fit(points);
    ASSERT_TRUE(out.result);
    const FitErrorRow& row = out.result->errors[9];
    EXPECT_NEAR(row.fz, points[9].expectedLoad[0], 1e-6 * 245);
    EXPECT_TRUE(std::isnan(row.x));
    EXPECT_TRUE(std::isnan(row.y));
}

TEST(FitDiagnostics, NoUncertaintyWithoutDegreesOfFreedom) {
    const FitOutcome out = fit(SyntheticPlate().grid({{0, 0}, {0.3, 0.1}, {-0.2, 0.4}}));
    ASSERT_TRUE(out.result);
    EXPECT_FALSE(out.result->diagnostics.uncertainty);
    EXPECT_TRUE(std::isnan(out.result->diagnostics.standardisedResidual[0]));
}

// Exact data through an engine that fails: the built-in fit takes over and finds the hidden
// matrix, with no point flagged.
TEST(MatrixFit, AnEngineThatFailsIsNotTrustedAndTheBuiltInFitTakesOver) {
    OctaveFitEngine failing(QStringLiteral("false"));
    ASSERT_TRUE(failing.isAvailable());
    EXPECT_FALSE(OctaveFitEngine(QStringLiteral("kx-no-such-program")).isAvailable());
    const SyntheticPlate plate;
    const FitOutcome out = MatrixFit::compute(plate.grid(TenPoints), failing);
    ASSERT_TRUE(out.result) << out.error.toStdString();
    EXPECT_TRUE(out.result->engineError.startsWith(QStringLiteral("false failed")));
    EXPECT_FALSE(out.result->engineRefused) << "it gave no matrix to refuse";
    EXPECT_EQ(out.result->m, 3);
    EXPECT_TRUE(fitted(*out.result).isApprox(plate.trueMatrix(), 1e-10));
    for (const bool flag : out.result->diagnostics.flagged)
        EXPECT_FALSE(flag);
}

TEST(OctaveFitEngine, SendsTheFitCommandsAsTheyAre) {
    Eigen::MatrixXd L(3, 1), S(1, 1);
    L << -245, 10, 20;
    S << 0.25;
    const QByteArray script = OctaveFitEngine::script(L, S);
    EXPECT_TRUE(script.startsWith("clear all\n"));
    EXPECT_TRUE(script.contains("L = [-245; 10; 20];\n"));
    EXPECT_TRUE(script.contains("S = [0.25];\n"));
    EXPECT_TRUE(script.contains("\nC=(L*S')/(S*S');\nF=C*S;\n"));
}

TEST(OctaveFitEngine, GivesTheSameFitAsTheBuiltInOne) {
    OctaveFitEngine octave;
    if (!octave.isAvailable())
        GTEST_SKIP() << "octave-cli is not installed";
    const std::vector<CalPoint> points = withNoise(SyntheticPlate().grid(TenPoints), 5, 1e-4);
    const FitOutcome ours = fit(points);
    const FitOutcome theirs = MatrixFit::compute(points, octave);
    ASSERT_TRUE(ours.result && theirs.result);
    EXPECT_TRUE(theirs.result->engineError.isEmpty()) << theirs.result->engineError.toStdString();
    EXPECT_TRUE(fitted(*theirs.result).isApprox(fitted(*ours.result), 1e-9));
    for (std::size_t k = 0; k < ours.result->errors.size(); ++k)
        EXPECT_NEAR(theirs.result->errors[k].fz, ours.result->errors[k].fz, 1e-6);
}

} // namespace
} // namespace kx
