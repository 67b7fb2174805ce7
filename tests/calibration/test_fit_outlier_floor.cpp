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
    std::vector<CalPoint> points;
    std::mt19937 random(11);
    std::normal_distribution<double> scatter(0, 1e-9);
    for (int k = 0; k < 10; ++k) {
        const auto [x, y] = TenPoints[std::size_t(k)];
        CalPoint p = k == 4 ? plate.point(x, y, dx, 0) : plate.point(x, y);
        for (double& v : p.dataMean)
            v = v * (k == 4 ? gain : 1.0) + scatter(random);
        points.push_back(p);
    }
    BuiltInFitEngine engine;
    const FitOutcome out = MatrixFit::compute(points, engine);
    EXPECT_TRUE(out.result) << out.error.toStdString();
    return out.result ? out.result->diagnostics.flagged : std::vector<bool>(10, false);
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
        {"0.02 mm off its mark", 2e-5, 1, false},
        {"0.5 mm off its mark", 5e-4, 1, false},
        {"3 mm off its mark", 3e-3, 1, true},
        {"2 cm off its mark", 0.02, 1, true},
        {"Fz read 0.05 % strong", 0, 1.0005, false},
        {"Fz read 0.5 % strong", 0, 1.005, true},
    };
    for (const Case& c : cases) {
        const std::vector<bool> flagged = flags(c.dx, c.gain);
        ASSERT_EQ(flagged.size(), 10u) << c.name;
        for (std::size_t k = 0; k < flagged.size(); ++k)
            EXPECT_EQ(flagged[k], k == 4 && c.flagged) << c.name << ", point " << k;
    }
}

} // namespace
} // namespace kx
