#include "SyntheticPlate.h"
#include "calibration/BuiltInFitEngine.h"
#include "calibration/MatrixFit.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

using test::SyntheticPlate;
using test::TenPoints;

// A calibration as good as the data can be (1 nV of scatter on signals of about 80 mV), with
// the weight at point 4 (the middle) off its mark by `dx` and read `gain` times too strong.
// Every point stands far out against scatter that small, so only what its error means in
// newtons and millimetres decides the flag.
std::vector<bool> flags(double dx, double gain) {
    const SyntheticPlate plate;
    std::vector<CalPoint> points = plate.grid(TenPoints);
    points[4] = plate.point(TenPoints[4].first, TenPoints[4].second, dx, 0);
    for (double& v : points[4].dataMean)
        v *= gain;
    std::mt19937 random(11);
    std::normal_distribution<double> scatter(0, 1e-9);
    for (CalPoint& p : points)
        for (double& v : p.dataMean)
            v += scatter(random);
    BuiltInFitEngine engine;
    const FitOutcome out = MatrixFit::compute(points, engine);
    EXPECT_TRUE(out.result) << out.error.toStdString();
    return out.result ? out.result->diagnostics.flagged : std::vector<bool>{};
}

TEST(FitOutlierFloor, OnlyErrorsThatMatterOnThePlateAreFlagged) {
    // The middle point's residual is about 0.7 to 0.9 of what was done to it: the fit itself
    // takes up the rest. The floors are 1 mm of centre of pressure and 0.1 % of Fz.
    struct Case {
        const char* name;
        double dx;   // m
        double gain; // the plate's reading over the true one
        bool flagged;
    } cases[] = {
        {"on its mark", 0, 1, false},
        {"0.5 mm off its mark", 5e-4, 1, false},
        {"3 mm off its mark", 3e-3, 1, true},
        {"Fz read 0.05 % strong", 0, 1.0005, false},
        {"Fz read 0.5 % strong", 0, 1.005, true},
    };
    for (const Case& c : cases) {
        std::vector<bool> expected(10, false);
        expected[4] = c.flagged;
        EXPECT_EQ(flags(c.dx, c.gain), expected) << c.name;
    }
}

} // namespace
} // namespace kx
