#include "../support/PrintQString.h"
#include "SyntheticPlate.h"
#include "calibration/BuiltInFitEngine.h"
#include "calibration/CoverageFactor.h"
#include "calibration/FitSummary.h"
#include "calibration/MatrixFit.h"

#include <QRegularExpression>
#include <cmath>
#include <gtest/gtest.h>

namespace kx {
namespace {

using test::SyntheticPlate;
using test::TenPoints;

// Student's t at 97.5 % from published tables; the normal distribution's 1.960 far out.
TEST(CoverageFactor, IsStudentsTAtNinetySevenAndAHalfPercent) {
    const std::pair<int, double> table[] = {{1, 12.706}, {2, 4.303},   {3, 3.182},     {7, 2.365},
                                            {10, 2.228}, {30, 2.042},  {31, 2.040},    {40, 2.021},
                                            {60, 2.000}, {120, 1.980}, {100000, 1.960}};
    for (const auto& [dof, t] : table)
        EXPECT_NEAR(coverageFactor95(dof), t, 0.0006) << dof;
    EXPECT_TRUE(std::isinf(coverageFactor95(0)));
}

// The points of the default plan with these numbers, their signals a few microvolts off the
// ideal plate's.
FitResult fitOf(std::initializer_list<std::size_t> chosen) {
    std::vector<CalPoint> points;
    for (std::size_t i : chosen) {
        points.push_back(SyntheticPlate().point(TenPoints[i].first, TenPoints[i].second));
        for (std::size_t c = 0; c < 3; ++c)
            points.back().dataMean[c] += 1e-5 * double(int((3 * i + c) % 5) - 2);
    }
    BuiltInFitEngine engine;
    return MatrixFit::compute(points, engine).result.value();
}

// The ± line states its coverage; with too few points beyond the three the matrix needs, the
// summary asks for the points a firm figure needs instead of stating a smaller one.
TEST(FitSummary, StatesTheCoverageAndAsksForPointsWhereTooFewGiveNoFirmFigure) {
    const QString figure = QStringLiteral(
        "Matrix known to ±[0-9]+\\.[0-9]{3} % at 95 % \\(k = %1, Student's t on %2 degrees of "
        "freedom\\)\\.");
    const QString fewer = "With only 2 points beyond the 3 the matrix needs, the coverage factor "
                          "is large: take 7 points or more (a point may repeat another's place) "
                          "for a firmer figure.";
    const QString none = "Too few points to say how well the matrix is known: take 7 points or "
                         "more (a point may repeat another's place).";
    struct Case {
        const char* name;
        FitResult fit;
        QString figure; // a pattern; empty when no figure is given
        bool asksForMore;
    } cases[] = {
        {"three points", fitOf({0, 2, 7}), {}, true},
        {"five points", fitOf({0, 2, 4, 6, 8}), figure.arg("4\\.30", "2"), true},
        {"ten points", fitOf({0, 1, 2, 3, 4, 5, 6, 7, 8, 9}), figure.arg("2\\.36", "7"), false},
    };
    for (const Case& k : cases) {
        const QStringList lines = FitSummary::text(k.fit).split(u'\n');
        EXPECT_EQ(
            lines.filter(QRegularExpression(k.figure.isEmpty() ? "Matrix known" : k.figure)).size(),
            k.figure.isEmpty() ? 0 : 1)
            << k.name << ": " << lines.join(u'\n').toStdString();
        const QString& asked = k.figure.isEmpty() ? none : fewer;
        EXPECT_EQ(lines.contains(asked), k.asksForMore) << k.name;
        EXPECT_EQ(lines.filter("take 7 points").size(), k.asksForMore ? 1 : 0) << k.name;
    }

    // A printed report shows each element's ± and says once what they are.
    const QStringList printed =
        FitSummary::text(cases[2].fit, FitSummary::Uncertainty::ShownApart).split(u'\n');
    EXPECT_TRUE(printed.filter("Matrix known").isEmpty());
    EXPECT_TRUE(printed.contains(
        "Each ± is an expanded uncertainty at about 95 % coverage: k = 2.36 (Student's t on 7 "
        "degrees of freedom) times the fit's scatter combined with 0.046 % of the element for "
        "the load cells' curvature, which a fit at one load cannot see."))
        << printed.join(u'\n').toStdString();
}

} // namespace
} // namespace kx
