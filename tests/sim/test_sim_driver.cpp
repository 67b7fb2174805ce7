#include "SimBench.h"
#include "device/PlateError.h"

#include <QStringList>
#include <gtest/gtest.h>

using kx::PlateDevice;
using kx::PlateDriver;
using kx::PlateError;
using kx::SimDriver;
using kx::Which;
using kx::test::SimBench;

namespace {

// The driver's list events as text, in order.
struct ListRecorder {
    explicit ListRecorder(PlateDriver& driver) {
        QObject::connect(&driver, &PlateDriver::PlateListUpdateBegin, &context,
                         [this] { events << QStringLiteral("begin"); });
        QObject::connect(&driver, &PlateDriver::PlateArrived, &context,
                         [this](const QString&, const QString& serial) {
                             events << QStringLiteral("arrived ") + serial;
                         });
        QObject::connect(&driver, &PlateDriver::PlateRemoved, &context,
                         [this](const QString&, const QString& serial) {
                             events << QStringLiteral("removed ") + serial;
                         });
        QObject::connect(&driver, &PlateDriver::PlateNotResponding, &context,
                         [this](const QString&) { events << QStringLiteral("not responding"); });
        QObject::connect(&driver, &PlateDriver::PlateListUpdateDone, &context,
                         [this] { events << QStringLiteral("done"); });
    }
    QStringList take() { return std::exchange(events, {}); }

    QObject context;
    QStringList events;
};

const QStringList FullList{"begin", "arrived 20418", "arrived 11093", "done"};

void reopen(SimBench& bench) {
    bench.driver.ReleaseAll();
    bench.driver.OpenDevices(kx::PlateVendorId, kx::PlateProductId1, kx::PlateProductId2);
    bench.clock.settle();
}

void replug(SimBench& bench, const char* serial) {
    bench.driver.unplug(QString::fromLatin1(serial));
    bench.driver.plugIn(QString::fromLatin1(serial));
    bench.clock.settle();
}

} // namespace

TEST(SimDriver, OpenDevicesEnumeratesAfterTheCallReturns) {
    kx::ManualClock clock;
    SimDriver driver(clock);
    kx::Scenario::defaults().applyTo(driver);
    ListRecorder list(driver);
    driver.OpenDevices(kx::PlateVendorId + 1, 1, 2); // nothing of ours
    clock.settle();
    EXPECT_EQ(list.take(), (QStringList{"begin", "done"}));

    driver.AddDeviceId(kx::PlateVendorId, kx::PlateProductId1, 0);
    driver.AddDeviceId(kx::PlateVendorId, kx::PlateProductId2, 0);
    driver.OpenDevices(kx::PlateVendorId, kx::PlateProductId1, kx::PlateProductId2);
    EXPECT_TRUE(list.events.isEmpty());
    EXPECT_EQ(driver.Count(), 0);
    clock.settle();
    EXPECT_EQ(list.take(), FullList);
    EXPECT_EQ(driver.Plates(), 2);
    EXPECT_EQ(driver.HIDs(), 4); // two plates, a keyboard and a mouse
    EXPECT_EQ(driver.Item(1)->FirmwareMajor(), 2);
    EXPECT_EQ(driver.Item(2)->FirmwareMajor(), 1);
    EXPECT_EQ(driver.Item(QStringLiteral("11093")), driver.Item(2));
    EXPECT_EQ(driver.Item(3), nullptr);
    EXPECT_EQ(driver.Item(QStringLiteral("99999")), nullptr);

    driver.Refresh();
    clock.settle();
    EXPECT_EQ(list.take(), FullList);
    EXPECT_EQ(driver.Count(), 2);
}

TEST(SimDriver, UnplugRaisesRemovalThenPlateRemovedAndReplugReusesThePlate) {
    SimBench bench;
    ListRecorder list(bench.driver);
    PlateDevice* plate = bench.driver.Item(QStringLiteral("20418"));
    QStringList order;
    QObject::connect(plate, &PlateDevice::Removal, &list.context, [&] { order << "removal"; });
    QObject::connect(&bench.driver, &PlateDriver::PlateRemoved, &list.context,
                     [&] { order << "plate removed"; });
    plate->StartAcquisition(true, false, true, false, true);

    bench.driver.unplug(QStringLiteral("20418"));
    bench.driver.unplug(QStringLiteral("20418")); // already gone: nothing happens
    EXPECT_EQ(order, (QStringList{"removal", "plate removed"}));
    EXPECT_EQ(list.take(), QStringList{"removed 20418"});
    EXPECT_EQ(bench.driver.Count(), 1);
    EXPECT_EQ(bench.driver.HIDs(), 3);

    // The object stays valid; its operations fail, except the ones dialogs call while closing.
    EXPECT_THROW(plate->StartZero(10, true), PlateError);
    EXPECT_NO_THROW(plate->StopAcquisition());
    EXPECT_NO_THROW(plate->StopCapture());

    bench.driver.plugIn(QStringLiteral("20418"));
    bench.clock.settle();
    EXPECT_EQ(list.take(), FullList);
    EXPECT_EQ(bench.driver.Item(QStringLiteral("20418")), plate);
}

// Released plates fail until opened again, then keep their current settings; a power cycle
// restores the power-on defaults.
TEST(SimDriver, CurrentSettingsSurviveReleaseButPowerOnRestoresDefaults) {
    SimBench bench;
    PlateDevice* plate = bench.driver.Item(1);
    plate->SetGageVoltage(Which::Current, 1.5f);
    plate->SetZeroValue(0, Which::Current, 1234);
    plate->SetGageVoltage(Which::Default, 4.0f);
    plate->SetSampleFrequency(Which::Default, 500.0f);

    bench.driver.ReleaseAll();
    EXPECT_EQ(bench.driver.Count(), 0);
    EXPECT_THROW(plate->GageVoltage(Which::Current), PlateError);
    reopen(bench);
    EXPECT_EQ(bench.driver.Item(1), plate);
    EXPECT_FLOAT_EQ(plate->GageVoltage(Which::Current), 1.5f);
    EXPECT_EQ(plate->ZeroValue(0, Which::Current), 1234);

    replug(bench, "20418");
    EXPECT_FLOAT_EQ(plate->GageVoltage(Which::Current), 4.0f);
    EXPECT_FLOAT_EQ(plate->SampleFrequency(Which::Current), 500.0f);
    EXPECT_EQ(plate->ZeroValue(0, Which::Current), plate->ZeroValue(0, Which::Default));
}

TEST(SimDriver, WrittenSerialNumberIsReportedFromTheNextEnumeration) {
    SimBench bench;
    ListRecorder list(bench.driver);
    PlateDevice* plate = bench.driver.Item(QStringLiteral("11093"));
    plate->SetSerialNumber(QStringLiteral("11094"));
    EXPECT_EQ(plate->SerialNumber(), "11093");
    reopen(bench);
    EXPECT_EQ(list.take(), (QStringList{"begin", "arrived 20418", "arrived 11094", "done"}));
    EXPECT_EQ(plate->SerialNumber(), "11094");
}

TEST(SimDriver, NotRespondingPlateIsReportedAndLeftOutUntilReplugged) {
    SimBench bench;
    ListRecorder list(bench.driver);
    PlateDevice* plate = bench.driver.Item(QStringLiteral("20418"));
    int removals = 0;
    QObject::connect(plate, &PlateDevice::Removal, &list.context, [&] { ++removals; });
    bench.driver.makeNotResponding(QStringLiteral("20418"));
    EXPECT_EQ(list.take(), QStringList{"not responding"});
    EXPECT_THROW(plate->SampleFrequency(Which::Current), PlateError);

    bench.driver.Refresh();
    bench.clock.settle();
    EXPECT_EQ(list.take(), (QStringList{"begin", "not responding", "arrived 11093", "done"}));
    EXPECT_EQ(bench.driver.Count(), 1);

    replug(bench, "20418");
    EXPECT_EQ(removals, 1);
    EXPECT_EQ(bench.driver.Count(), 2);
    EXPECT_NO_THROW(plate->SampleFrequency(Which::Current));
}

TEST(SimDriver, ChangedUsbVendorTakesEffectAtTheNextPowerOn) {
    SimBench bench;
    PlateDevice* plate = bench.driver.Item(QStringLiteral("11093"));
    kx::UsbIdentity identity = plate->GetUsbIdentity();
    EXPECT_EQ(identity, (kx::UsbIdentity{0xB0, 0x02, 0x0D, 0x01, 0x03, 0x01, 0x00}));
    identity[1] = 0x34;
    plate->SetUsbIdentity(identity);
    EXPECT_EQ(plate->GetUsbIdentity(), identity);
    bench.driver.Refresh();
    bench.clock.settle();
    EXPECT_EQ(bench.driver.Count(), 2);
    replug(bench, "11093");
    EXPECT_EQ(bench.driver.Item(QStringLiteral("11093")), nullptr);
}
