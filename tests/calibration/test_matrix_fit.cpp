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

// Normal noise of `sigma` volts on every data mean, drawn from `random`.
void addNoise(std::vector<CalPoint>& points, std::mt19937& random, double sigma) {
    std::normal_distribution<double> noise(0, sigma);
    for (CalPoint& p : points)
        for (double& v : p.dataMean)
            v += noise(random);
}

Eigen::MatrixXd fitted(const FitResult& r) {
    return Eigen::Map<const Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>>(
        r.C.data(), 3, r.m);
}

TEST(MatrixFit, ExactDataGiveTheHiddenMatrixAndNoErrors) {
    const SyntheticPlate plate;
    BuiltInFitEngine engine;
    const FitOutcome out = MatrixFit::compute(plate.grid(TenPoints), engine);
    ASSERT_TRUE(out.result) << out.error.toStdString();
    const FitResult& r = *out.result;
    EXPECT_EQ(r.m, 3);
    EXPECT_TRUE(fitted(r).isApprox(plate.trueMatrix(), 1e-10));
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            EXPECT_NEAR(r.matrix[i][j], plate.trueMatrix()(i, j), 1e-6 / plate.gain);
    ASSERT_EQ(r.errors.size(), 10u);
    for (const FitErrorRow& e : r.errors) {
        EXPECT_NEAR(e.fz, 0, 1e-9);
        EXPECT_NEAR(e.x, 0, 1e-12);
        EXPECT_NEAR(e.y, 0, 1e-12);
    }
    for (const bool flag : r.diagnostics.flagged)
        EXPECT_FALSE(flag);
}

TEST(MatrixFit, NormalEquationsHoldToRounding) {
    // Noisy signals: C·(S·Sᵀ) = L·Sᵀ must hold whatever the data.
    const SyntheticPlate plate;
    std::vector<CalPoint> points = plate.grid(TenPoints);
    std::mt19937 random(7);
    addNoise(points, random, 1e-4);
    BuiltInFitEngine engine;
    const FitOutcome out = MatrixFit::compute(points, engine);
    ASSERT_TRUE(out.result);
    Eigen::MatrixXd L(3, 10), S(3, 10);
    for (int k = 0; k < 10; ++k)
        for (int i = 0; i < 3; ++i) {
            L(i, k) = points[k].expectedLoad[i];
            S(i, k) = points[k].dataMean[i];
        }
    const Eigen::MatrixXd C = fitted(*out.result);
    EXPECT_TRUE((C * S * S.transpose()).isApprox(L * S.transpose(), 1e-10));
    // The error table is applied minus computed.
    const Eigen::MatrixXd F = C * S;
    EXPECT_NEAR(out.result->errors[3].fz, L(0, 3) - F(0, 3), 1e-9);
    EXPECT_NEAR(out.result->errors[3].x, points[3].x + F(2, 3) / F(0, 3), 1e-12);
    EXPECT_NEAR(out.result->errors[3].y, points[3].y - F(1, 3) / F(0, 3), 1e-12);
}

TEST(MatrixFit, OnlyPointsWithDataEnterAndMissingChannelsAreZeroColumns) {
    const SyntheticPlate plate;
    std::vector<CalPoint> points = plate.grid(TenPoints);
    points[4].dataDone = false; // its zero was taken again after the data
    for (CalPoint& p : points)
        p.dataMean[2] = 0; // channel 3 never positive: m = 2
    BuiltInFitEngine engine;
    const FitOutcome out = MatrixFit::compute(points, engine);
    ASSERT_TRUE(out.result) << out.error.toStdString();
    EXPECT_EQ(out.result->m, 2);
    EXPECT_EQ(out.result->points, (std::vector<int>{0, 1, 2, 3, 5, 6, 7, 8, 9}));
    for (int row = 0; row < 3; ++row)
        EXPECT_EQ(out.result->matrix[row][2], 0.0f);
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
    const std::vector<CalPoint> two = plate.grid({{0, 0}, {0.3, 0.3}});
    // Three points on one line: S has rank 2.
    const std::vector<CalPoint> line = plate.grid({{0, 0}, {0.1, 0.1}, {0.2, 0.2}, {0.3, 0.3}});

    struct Case {
        const char* name;
        const std::vector<CalPoint>& points;
        QString error;
    } cases[] = {
        {"no data", none, strings::text(s::FitNoSignal)},
        {"no positive channel", negative, strings::text(s::FitNoSignal)},
        {"fewer points than channels", two, strings::text(s::FitTooFewPoints).arg(3).arg(2)},
        {"collinear points", line, QString()},
    };
    for (const Case& k : cases) {
        BuiltInFitEngine engine;
        const FitOutcome out = MatrixFit::compute(k.points, engine);
        EXPECT_FALSE(out.result) << k.name;
        if (k.error.isEmpty())
            EXPECT_TRUE(out.error.contains(QStringLiteral("condition number"))) << k.name;
        else
            EXPECT_EQ(out.error, k.error) << k.name;
    }
}

TEST(MatrixFit, ComputedFzOfZeroGivesNaNPositions) {
    const SyntheticPlate plate;
    std::vector<CalPoint> points = plate.grid(TenPoints);
    points[9].dataMean = {0, 0, 0};
    BuiltInFitEngine engine;
    const FitOutcome out = MatrixFit::compute(points, engine);
    ASSERT_TRUE(out.result);
    const FitErrorRow& row = out.result->errors[9];
    EXPECT_NEAR(row.fz, points[9].expectedLoad[0], 1e-6 * 245);
    EXPECT_TRUE(std::isnan(row.x));
    EXPECT_TRUE(std::isnan(row.y));
}

TEST(MatrixFit, AnEngineThatFailsIsNotTrustedAndTheBuiltInFitTakesOver) {
    OctaveFitEngine failing(QStringLiteral("false"));
    ASSERT_TRUE(failing.isAvailable());
    EXPECT_FALSE(OctaveFitEngine(QStringLiteral("kx-no-such-program")).isAvailable());
    const SyntheticPlate plate;
    const FitOutcome out = MatrixFit::compute(plate.grid(TenPoints), failing);
    ASSERT_TRUE(out.result);
    EXPECT_TRUE(out.result->engineError.startsWith(QStringLiteral("false failed")));
    EXPECT_TRUE(fitted(*out.result).isApprox(plate.trueMatrix(), 1e-10));
}

// Signals with noise of a known size, many times over: each element's true error should lie
// within two of its standard uncertainties as often as Student's t with N − m = 7 degrees of
// freedom says, P(|t| ≤ 2) = 0.9195.
TEST(FitDiagnostics, UncertaintiesCoverTheTrueErrorAsOftenAsTheyShould) {
    const SyntheticPlate plate;
    const Eigen::Matrix3d truth = plate.trueMatrix();
    std::mt19937 random(2024);
    int covered = 0;
    int total = 0;
    for (int trial = 0; trial < 400; ++trial) {
        std::vector<CalPoint> points = plate.grid(TenPoints);
        addNoise(points, random, 2e-5);
        BuiltInFitEngine engine;
        const FitOutcome out = MatrixFit::compute(points, engine);
        ASSERT_TRUE(out.result);
        ASSERT_TRUE(out.result->diagnostics.uncertainty);
        const auto& u = *out.result->diagnostics.uncertainty;
        const Eigen::MatrixXd C = fitted(*out.result);
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j) {
                covered += std::abs(C(i, j) - truth(i, j)) <= 2 * u[i][j];
                ++total;
            }
    }
    const double coverage = double(covered) / total;
    EXPECT_GT(coverage, 0.895);
    EXPECT_LT(coverage, 0.945);
}

TEST(FitDiagnostics, NoUncertaintyWithoutDegreesOfFreedom) {
    const SyntheticPlate plate;
    BuiltInFitEngine engine;
    const FitOutcome out =
        MatrixFit::compute(plate.grid({{0, 0}, {0.3, 0.1}, {-0.2, 0.4}}), engine);
    ASSERT_TRUE(out.result);
    EXPECT_FALSE(out.result->diagnostics.uncertainty);
    EXPECT_TRUE(std::isnan(out.result->diagnostics.standardisedResidual[0]));
}

TEST(FitDiagnostics, AWeightOffItsMarkIsThePointFlagged) {
    const SyntheticPlate plate;
    std::mt19937 random(99);
    for (int misplaced = 0; misplaced < 10; ++misplaced) {
        std::vector<CalPoint> points;
        for (int k = 0; k < 10; ++k) {
            const auto [x, y] = TenPoints[k];
            points.push_back(k == misplaced ? plate.point(x, y, 0.02, 0) : plate.point(x, y));
        }
        addNoise(points, random, 2e-5);
        BuiltInFitEngine engine;
        const FitOutcome out = MatrixFit::compute(points, engine);
        ASSERT_TRUE(out.result);
        const FitDiagnostics& d = out.result->diagnostics;
        for (int k = 0; k < 10; ++k)
            EXPECT_EQ(d.flagged[k], k == misplaced) << "misplaced " << misplaced << ", point " << k
                                                    << ": " << d.standardisedResidual[k];
    }
}

TEST(FitDiagnostics, ConditionNumberAndResidualRms) {
    const SyntheticPlate plate;
    std::vector<CalPoint> points = plate.grid(TenPoints);
    points[0].expectedLoad[0] += 1.0; // Fz 1 N off at one point: Fz row residuals only
    BuiltInFitEngine engine;
    const FitOutcome out = MatrixFit::compute(points, engine);
    ASSERT_TRUE(out.result);
    Eigen::MatrixXd S(3, 10);
    for (int k = 0; k < 10; ++k)
        for (int i = 0; i < 3; ++i)
            S(i, k) = points[k].dataMean[i];
    const Eigen::VectorXd sv = Eigen::BDCSVD<Eigen::MatrixXd>(S).singularValues();
    EXPECT_NEAR(out.result->diagnostics.conditionNumber, sv(0) / sv(2), 1e-9 * sv(0) / sv(2));
    EXPECT_GT(out.result->diagnostics.residualRms[0], 0.1);
    EXPECT_LT(out.result->diagnostics.residualRms[0], 1.0);
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
    const SyntheticPlate plate;
    std::vector<CalPoint> points = plate.grid(TenPoints);
    std::mt19937 random(5);
    addNoise(points, random, 1e-4);
    BuiltInFitEngine builtIn;
    const FitOutcome ours = MatrixFit::compute(points, builtIn);
    const FitOutcome theirs = MatrixFit::compute(points, octave);
    ASSERT_TRUE(ours.result && theirs.result);
    EXPECT_TRUE(theirs.result->engineError.isEmpty()) << theirs.result->engineError.toStdString();
    EXPECT_TRUE(fitted(*theirs.result).isApprox(fitted(*ours.result), 1e-9));
    for (std::size_t k = 0; k < ours.result->errors.size(); ++k)
        EXPECT_NEAR(theirs.result->errors[k].fz, ours.result->errors[k].fz, 1e-6);
}

} // namespace
} // namespace kx
