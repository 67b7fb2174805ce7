#include "SimBench.h"
#include "device/PlateError.h"

#include <gtest/gtest.h>

namespace kx::test {
namespace {

const QStringList FullList{"begin", "arrived 20418", "arrived 11093", "done"};

void replug(SimBench& bench, const char* serial) {
    bench.driver.unplug(QString::fromLatin1(serial));
    bench.driver.plugIn(QString::fromLatin1(serial));
    bench.clock.settle();
}

TEST(SimDriver, OpenDevicesEnumeratesAfterTheCallReturns) {
    ManualClock clock;
    SimDriver driver(clock);
    Scenario::defaults().applyTo(driver);
    EventLog list(driver, clock);
    driver.OpenDevices(PlateVendorId + 1, 1, 2); // nothing of ours
    clock.settle();
    EXPECT_EQ(list.take(), (QStringList{"begin", "done"}));

    driver.AddDeviceId(PlateVendorId, PlateProductId1, 0);
    driver.AddDeviceId(PlateVendorId, PlateProductId2, 0);
    driver.OpenDevices(PlateVendorId, PlateProductId1, PlateProductId2);
    EXPECT_TRUE(list.events.isEmpty());
    EXPECT_EQ(driver.Count(), 0);
    clock.settle();
    EXPECT_EQ(list.take(), FullList);
    EXPECT_EQ(driver.HIDs(), 2) << "other HID devices only where a scenario puts them";
    driver.setOtherHidDevices(2); // a keyboard and a mouse
    EXPECT_EQ(driver.HIDs(), 4);
    EXPECT_EQ(driver.Item(1)->FirmwareMajor(), 2);
    EXPECT_EQ(driver.Item(QStringLiteral("11093")), driver.Item(2));
    EXPECT_EQ(driver.Item(3), nullptr);

    driver.Refresh();
    clock.settle();
    EXPECT_EQ(list.take(), FullList);
    EXPECT_EQ(driver.Count(), 2);
}

TEST(SimDriver, UnplugRaisesRemovalThenPlateRemovedAndReplugReusesThePlate) {
    SimBench bench;
    PlateDevice* plate = bench.driver.Item(QStringLiteral("20418"));
    EventLog log(bench.driver, bench.clock, plate);
    plate->StartAcquisition(true, false, true, false, true);

    bench.driver.unplug(QStringLiteral("20418"));
    bench.driver.unplug(QStringLiteral("20418")); // already gone: nothing happens
    EXPECT_EQ(log.take(), (QStringList{"Removal at 0", "removed 20418"}));
    EXPECT_EQ(bench.driver.Count(), 1);
    bench.clock.settle();
    EXPECT_EQ(log.take(), (QStringList{"begin", "arrived 11093", "done"}))
        << "the remaining plates are listed again";

    // The object stays valid; its operations fail, except the ones dialogs call while closing.
    EXPECT_THROW(plate->StartZero(10, true), PlateError);
    EXPECT_NO_THROW(plate->StopAcquisition());
    EXPECT_NO_THROW(plate->StopCapture());

    bench.driver.plugIn(QStringLiteral("20418"));
    bench.clock.settle();
    EXPECT_EQ(log.take(), FullList);
    EXPECT_EQ(bench.driver.Item(QStringLiteral("20418")), plate);
}

// Released plates fail until opened again, then keep their current settings; a power cycle
// restores the power-on defaults.
TEST(SimDriver, CurrentSettingsSurviveReleaseButPowerOnRestoresDefaults) {
    SimBench bench;
    PlateDevice* plate = bench.driver.Item(1);
    // Both whole steps of the excitation DAC (5/1024 V), so they read back exactly.
    plate->SetGageVoltage(Which::Current, 1.25f);
    plate->SetGageVoltage(Which::Default, 3.75f);

    bench.driver.ReleaseAll();
    EXPECT_THROW(plate->GageVoltage(Which::Current), PlateError);
    bench.driver.OpenDevices(PlateVendorId, PlateProductId1, PlateProductId2);
    bench.clock.settle();
    EXPECT_EQ(bench.driver.Item(1), plate);
    EXPECT_FLOAT_EQ(plate->GageVoltage(Which::Current), 1.25f);

    replug(bench, "20418");
    EXPECT_FLOAT_EQ(plate->GageVoltage(Which::Current), 3.75f);
}

TEST(SimDriver, NotRespondingPlateIsReportedAndLeftOutUntilReplugged) {
    SimBench bench;
    EventLog list(bench.driver, bench.clock);
    PlateDevice* plate = bench.driver.Item(QStringLiteral("20418"));
    bench.driver.makeNotResponding(QStringLiteral("20418"));
    EXPECT_EQ(list.take(), QStringList{"not responding"});
    EXPECT_THROW(plate->SampleFrequency(Which::Current), PlateError);

    bench.driver.Refresh();
    bench.clock.settle();
    EXPECT_EQ(list.take(), (QStringList{"begin", "not responding", "arrived 11093", "done"}));
    EXPECT_EQ(bench.driver.Count(), 1);

    replug(bench, "20418");
    EXPECT_EQ(bench.driver.Count(), 2);
    EXPECT_NO_THROW(plate->SampleFrequency(Which::Current));
}

// A time-out or a removal ends the stream; an overrun or clipping only reports, and the
// dialog decides whether to stop.
TEST(SimFaults, EachDeviceFaultRaisesItsEventAndOnlyTimeOutsAndRemovalStopTheStream) {
    const struct {
        PlateFault fault;
        const char* event;
        size_t samplesAfter;
    } cases[] = {{PlateFault::ReadTimeout, "ReadTimeout", 10},
                 {PlateFault::WriteTimeout, "WriteTimeout", 10},
                 {PlateFault::BufferOverRun, "BufferOverRun", 110},
                 {PlateFault::DataClipped, "DataClipped", 110},
                 {PlateFault::Unplug, "Removal", 10}};
    for (const auto& c : cases) {
        SimBench bench;
        SimPlate& plate = bench.plate("20418");
        EventLog log(bench.driver, bench.clock, &plate);
        ForcesRecorder samples(plate, bench.clock);
        plate.StartAcquisition(true, false, true, false, true);
        bench.clock.advance(100);
        bench.driver.inject(QStringLiteral("20418"), c.fault);
        bench.clock.advance(1000);
        EXPECT_EQ(log.failures(), QStringList{QStringLiteral("%1 at 100").arg(c.event)});
        EXPECT_EQ(samples.samples.size(), c.samplesAfter) << c.event;
    }
}

TEST(SimFaults, ScheduledFaultsFireAtTheirTickOrSampleCount) {
    SimBench bench;
    SimPlate& plate = bench.plate("20418"); // 100 Hz
    EventLog log(bench.driver, bench.clock, &plate);
    ForcesRecorder samples(plate, bench.clock);
    plate.faults().atTick(log.start + 2500, PlateFault::WriteTimeout);
    plate.faults().afterSamples(50, PlateFault::BufferOverRun);

    plate.StartAcquisition(true, false, true, false, true);
    bench.clock.advance(300);
    plate.StartAcquisition(true, false, true, false, true); // each acquisition counts anew
    bench.clock.advance(1000);
    EXPECT_EQ(log.take(), QStringList{"BufferOverRun at 800"});
    EXPECT_EQ(samples.samples.back().number, 100) << "the overrun leaves the stream running";
    bench.clock.advance(2000);
    EXPECT_EQ(log.take(), QStringList{"WriteTimeout at 2500"});

    // A scheduled unplug goes through the driver like a real one.
    plate.faults().afterSamples(10, PlateFault::Unplug);
    plate.StartAcquisition(true, false, true, false, true);
    bench.clock.advance(1000);
    EXPECT_EQ(log.take(),
              (QStringList{"Removal at 3400", "removed 20418", "begin", "arrived 11093", "done"}));
}

TEST(SimFaults, PlannedFailuresAndBadArgumentsThrowWithTheirMessage) {
    SimBench bench;
    SimPlate& plate = bench.plate("20418");
    plate.failures().failNextCall(QStringLiteral("USB transfer failed"));
    try {
        plate.GageVoltage(Which::Current);
        FAIL() << "no error";
    } catch (const PlateError& e) {
        EXPECT_EQ(e.message(), "USB transfer failed");
    }
    EXPECT_NO_THROW(plate.GageVoltage(Which::Current)); // only the next call

    plate.failures().failEveryCall(QStringLiteral("SetSampleFrequency"), QStringLiteral("busy"));
    EXPECT_THROW(plate.SetSampleFrequency(Which::Default, 200), PlateError);
    EXPECT_FLOAT_EQ(plate.SampleFrequency(Which::Current), 100.0f); // other calls work
    plate.failures().clear();
    EXPECT_NO_THROW(plate.SetSampleFrequency(Which::Current, 200));
    EXPECT_THROW(plate.ZeroValue(4, Which::Current), PlateError); // bad arguments too
}

TEST(SimService, StoredTableKeepsMatrixAndCountersUntilReset) {
    SimBench bench;
    SimPlate& plate = bench.plate("20418");
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

    const qint64 inService = plate.TimeInService();
    const qint32 enumerations = plate.EnumerationCount();
    bench.clock.advance(3600 * 1000);
    EXPECT_EQ(plate.TimeInService(), inService + 3600);
    plate.ExecuteCommand(-1, 157);
    EXPECT_EQ(plate.MaxTemperature(), plate.MinTemperature());
    plate.ExecuteCommand(-1, 158);
    EXPECT_EQ(plate.TimeInService(), 0);
    bench.driver.Refresh();
    bench.clock.settle();
    EXPECT_EQ(plate.EnumerationCount(), enumerations + 1);
    plate.ExecuteCommand(-1, 160);
    EXPECT_EQ(plate.EnumerationCount(), 0);
}

TEST(SimService, OperatorRecordsReplaceTheCalibrationAndInspectionRecords) {
    Scenario scenario = Scenario::defaults();
    scenario.plates[1].calibrated = false;
    SimBench bench(scenario);
    SimPlate& fresh = bench.plate("11093");
    EXPECT_FALSE(fresh.CalibrationRecordDate().isValid());
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

} // namespace
} // namespace kx::test
