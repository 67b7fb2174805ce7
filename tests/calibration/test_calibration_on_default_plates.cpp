// A calibration on site, as the default plates would have it on a loading rig: the stored
// matrix leaves the centre of pressure well inside what the factory's did.
#include "CalibrationSimBench.h"
#include "calibration/BuiltInFitEngine.h"
#include "calibration/MatrixFit.h"
#include "sim/MatrixErrors.h"
#include "sim/Scenario.h"

#include <gtest/gtest.h>
#include <iostream>

namespace kx {
namespace {

using test::CalibrationSimBench;

// What OK writes: the fitted matrix into the plate's table.
void store(SimPlate& plate, const CalMatrix& matrix) {
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            plate.SetMatrixElement(r, c, matrix[std::size_t(r)][std::size_t(c)]);
}

TEST(CalibrationOnDefaultPlates, TenPointsBringTheCentreOfPressureWithinSevenTenthsOfAMillimetre) {
    for (const SimPlateConfig& config : Scenario::defaults().plates) {
        CalibrationSimBench bench(config);
        SimPlate& plate = *bench.plate;
        const Matrix3& truth = plate.truth().trueMatrix;
        const double load = bench.settings.Load;
        const std::optional<MatrixErrors> factory =
            MatrixErrors::overTop(truth, plate.storedMatrix(), load);
        ASSERT_TRUE(factory);

        bench.walkThePoints();
        BuiltInFitEngine engine;
        const FitOutcome fit = MatrixFit::compute(bench.calibration.record.points, engine);
        ASSERT_TRUE(fit.result) << fit.error.toStdString();
        store(plate, fit.result->matrix);
        const std::optional<MatrixErrors> calibrated =
            MatrixErrors::overTop(truth, plate.storedMatrix(), load);
        ASSERT_TRUE(calibrated);

        const std::string serial = config.serial.toStdString();
        std::cout << serial << ": centre of pressure " << factory->copRms * 1000 << " mm RMS ("
                  << factory->copWorst * 1000 << " worst) from the factory, "
                  << calibrated->copRms * 1000 << " mm (" << calibrated->copWorst * 1000
                  << ") calibrated; Fz " << factory->fzRms << " N then " << calibrated->fzRms
                  << " N RMS at 25 kg\n";
        EXPECT_GE(factory->copRms, 0.001) << serial;
        EXPECT_LE(factory->copRms, 0.002) << serial;
        EXPECT_LE(calibrated->copRms, 0.0007) << serial;
    }
}

} // namespace
} // namespace kx
