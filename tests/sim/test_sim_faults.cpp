#include "SimBench.h"
#include "device/PlateError.h"

#include <QStringList>
#include <gtest/gtest.h>

using kx::PlateDevice;
using kx::PlateError;
using kx::PlateFault;
using kx::SimPlate;
using kx::Which;
using kx::test::ForcesRecorder;
using kx::test::SimBench;

namespace {

// The plate's device-failure events as text, with the tick at which each arrived.
struct FaultRecorder {
    FaultRecorder(PlateDevice& plate, const kx::Clock& clock) {
        const auto on = [&](auto signal, const char* name) {
            QObject::connect(&plate, signal, &context, [this, name, &clock] {
                events << QString::fromLatin1(name);
                ticks << clock.tickCount();
            });
        };
        on(&PlateDevice::Removal, "Removal");
        on(&PlateDevice::ReadTimeout, "ReadTimeout");
        on(&PlateDevice::WriteTimeout, "WriteTimeout");
        on(&PlateDevice::BufferOverRun, "BufferOverRun");
        on(&PlateDevice::DataClipped, "DataClipped");
    }
    QObject context;
    QStringList events;
    QList<quint32> ticks;
};

} // namespace

TEST(SimFaults, EachDeviceFaultStopsTheAcquisitionAndRaisesItsEvent) {
    const struct {
        PlateFault fault;
        const char* event;
    } cases[] = {{PlateFault::ReadTimeout, "ReadTimeout"},
                 {PlateFault::WriteTimeout, "WriteTimeout"},
                 {PlateFault::BufferOverRun, "BufferOverRun"},
                 {PlateFault::DataClipped, "DataClipped"},
                 {PlateFault::Unplug, "Removal"}};
    for (const auto& c : cases) {
        SimBench bench;
        SimPlate& plate = bench.plate("20418");
        FaultRecorder faults(plate, bench.clock);
        ForcesRecorder samples(plate, bench.clock);
        plate.StartAcquisition(true, false, true, false, true);
        bench.clock.advance(100);
        bench.driver.inject(QStringLiteral("20418"), c.fault);
        EXPECT_EQ(faults.events, QStringList{c.event});
        bench.clock.advance(1000);
        EXPECT_EQ(samples.samples.size(), 10u) << c.event;
    }
}

TEST(SimFaults, ScheduledFaultsFireAtTheirTickOrSampleCount) {
    SimBench bench;
    SimPlate& plate = bench.plate("20418"); // 100 Hz
    FaultRecorder faults(plate, bench.clock);
    ForcesRecorder samples(plate, bench.clock);
    const quint32 start = bench.clock.tickCount();
    plate.faults().atTick(start + 2500, PlateFault::WriteTimeout);
    plate.faults().afterSamples(50, PlateFault::BufferOverRun);

    plate.StartAcquisition(true, false, true, false, true);
    bench.clock.advance(300);
    plate.StartAcquisition(true, false, true, false, true); // each acquisition counts anew
    bench.clock.advance(1000);
    ASSERT_EQ(faults.events, QStringList{"BufferOverRun"});
    EXPECT_EQ(faults.ticks[0], start + 300 + 500);
    EXPECT_EQ(samples.samples.back().number, 50);

    bench.clock.advance(2000);
    ASSERT_EQ(faults.events, (QStringList{"BufferOverRun", "WriteTimeout"}));
    EXPECT_EQ(faults.ticks[1], start + 2500);

    plate.faults().atTick(bench.clock.tickCount() + 100, PlateFault::ReadTimeout);
    plate.faults().clear();
    bench.clock.advance(1000);
    EXPECT_EQ(faults.events.size(), 2);

    // A scheduled unplug goes through the driver like a real one.
    int removed = 0;
    QObject::connect(&bench.driver, &kx::PlateDriver::PlateRemoved, &faults.context,
                     [&] { ++removed; });
    plate.faults().afterSamples(10, PlateFault::Unplug);
    plate.StartAcquisition(true, false, true, false, true);
    bench.clock.advance(1000);
    EXPECT_EQ(faults.events.back(), "Removal");
    EXPECT_EQ(removed, 1);
    EXPECT_FALSE(plate.isPlugged());
}

TEST(SimFaults, SamplingFasterThanTheLinkOverruns) {
    SimBench bench;
    SimPlate& plate = bench.plate("20418");
    plate.SetTurboRate(Which::Current, 16);
    plate.SetDecimationRate(Which::Current, 576); // 2000 Hz
    FaultRecorder faults(plate, bench.clock);
    ForcesRecorder samples(plate, bench.clock);
    plate.StartAcquisition(true, false, true, false, true);
    bench.clock.advance(1000);
    EXPECT_EQ(faults.events, QStringList{"BufferOverRun"});
    EXPECT_EQ(samples.samples.size(), 255u);
}

TEST(SimFaults, ASleepingConverterTimesOut) {
    SimBench bench;
    SimPlate& plate = bench.plate("20418");
    FaultRecorder faults(plate, bench.clock);
    plate.SetConverterSleep(0, true);
    plate.StartZero(100, true, 30, 50);
    bench.clock.advance(999);
    EXPECT_TRUE(faults.events.isEmpty());
    bench.clock.advance(1);
    EXPECT_EQ(faults.events, QStringList{"ReadTimeout"});

    plate.StartZero(100, true, 30, 50);
    plate.StopAcquisition(); // stopped in time: no time-out
    bench.clock.advance(5000);
    EXPECT_EQ(faults.events.size(), 1);
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
    EXPECT_THROW(plate.SetSampleFrequency(Which::Current, 200), PlateError);
    EXPECT_THROW(plate.SetSampleFrequency(Which::Default, 200), PlateError);
    EXPECT_FLOAT_EQ(plate.SampleFrequency(Which::Current), 100.0f); // other calls work
    plate.failures().clear();
    EXPECT_NO_THROW(plate.SetSampleFrequency(Which::Current, 200));

    // Bad arguments are errors of the same kind, with a readable message.
    EXPECT_THROW(plate.ZeroValue(4, Which::Current), PlateError);
    EXPECT_THROW(plate.SetMatrixElement(-1, 0, 1), PlateError);
    try {
        plate.ExecuteCommand(-1, 12);
        FAIL() << "no error";
    } catch (const PlateError& e) {
        EXPECT_TRUE(e.message().contains("12"));
    }
}
