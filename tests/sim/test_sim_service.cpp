#include "SimBench.h"

#include <gtest/gtest.h>

using kx::Which;
using kx::test::SimBench;

TEST(SimService, StoredTableKeepsMatrixCountersAndDate) {
    SimBench bench;
    kx::SimPlate& plate = bench.plate("20418");
    // Factory calibration: close to the hidden matrix but not equal to it.
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            const double truth = plate.truth().trueMatrix[r][c];
            EXPECT_NEAR(plate.MatrixElement(r, c), truth, 0.03 * std::abs(truth)) << r << c;
            EXPECT_NE(plate.MatrixElement(r, c), float(truth));
        }
    }
    const QDate counterDate = QDate(1899, 12, 30).addDays(qint64(plate.MatrixElement(0, 3)));
    EXPECT_EQ(counterDate, plate.CalibrationRecordDate().date());
}

TEST(SimService, RecordsAndResets) {
    SimBench bench;
    kx::SimPlate& plate = bench.plate("20418");
    const qint64 inService = plate.TimeInService();
    const qint32 enumerations = plate.EnumerationCount();
    bench.clock.advance(3600 * 1000);
    EXPECT_EQ(plate.TimeInService(), inService + 3600);

    // Warm-up over the hour: the plate is warmer, and its extremes follow.
    const float temperature = plate.Temperature();
    EXPECT_GT(temperature, 24.0f);
    EXPECT_LT(temperature, 28.0f);
    EXPECT_GE(plate.MaxTemperature(), temperature);
    EXPECT_LT(plate.MinTemperature(), temperature);

    plate.ExecuteCommand(-1, 157);
    EXPECT_EQ(plate.MaxTemperature(), plate.MinTemperature());
    plate.ExecuteCommand(-1, 158);
    EXPECT_EQ(plate.TimeInService(), 0);
    bench.clock.advance(5000);
    EXPECT_EQ(plate.TimeInService(), 5);

    bench.driver.Refresh();
    bench.clock.settle();
    EXPECT_EQ(plate.EnumerationCount(), enumerations + 1);
    plate.ExecuteCommand(-1, 160);
    EXPECT_EQ(plate.EnumerationCount(), 0);
}

TEST(SimService, OperatorRecordsReplaceTheCalibrationAndInspectionRecords) {
    kx::Scenario scenario = kx::Scenario::defaults();
    scenario.plates[1].calibrated = false;
    SimBench bench(scenario);
    kx::SimPlate& fresh = bench.plate("11093");
    EXPECT_FALSE(fresh.CalibrationRecordDate().isValid());
    EXPECT_FALSE(fresh.InspectionRecordDate().isValid());
    EXPECT_EQ(fresh.MatrixElement(0, 0), 0.0f);
    EXPECT_EQ(fresh.ZeroValue(0, Which::Current), 8388608); // cleared to mid-scale

    const QDateTime when(QDate(2024, 5, 6), QTime(9, 30, 15));
    fresh.SetOperatorRecord2(QStringLiteral("KXI_OP_27.930418.2JD"), when);
    fresh.SetOperatorRecord3(QStringLiteral("KXI_OP_361907254.8KL"), when.addSecs(1));
    EXPECT_EQ(fresh.CalibrationRecordDate(), when);
    EXPECT_EQ(fresh.CalibrationRecordOperator(), "JD");
    EXPECT_EQ(fresh.InspectionRecordDate(), when.addSecs(1));
    EXPECT_EQ(fresh.InspectionRecordOperator(), "KL");
}
