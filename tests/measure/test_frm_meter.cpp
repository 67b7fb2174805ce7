#include "../support/PrintQString.h"
#include "DialogFixture.h"
#include "measure/MeterReadout.h"
#include "measure/MultipleChoice.h"
#include "measure/frmMeter.h"
#include "resources/StringTable.h"
#include "support/Settings.h"
#include "support/SettingsKeys.h"

#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <cmath>

namespace kx {
namespace {

qint32 meterSetting(const char* name) {
    return GetSettingLong(SettingsRoot::CurrentUser, QLatin1String(kMeterKey), QLatin1String(name),
                          12345);
}

class MeterTest : public test::DialogFixture<frmMeter> {
protected:
    bool displaying() const { return dialog->cmdDisplay->text() == strings::text(2020); }
    SimPlate& plate = openDefaultPlates();
};

TEST_F(MeterTest, OpensOnMediumWithThePlateSetUpFromTheSettingsAndPutsItBackOnClose) {
    SaveSettingLong(SettingsRoot::CurrentUser, QLatin1String(kMeterKey),
                    QStringLiteral("Excitation (mV)"), 2500);
    plate.SetZeroValue(2, Which::Current, 1234);
    const float gage = plate.GageVoltage(Which::Current);
    openDialog(&plate);
    EXPECT_EQ(dialog->lblExcV->text(), "2.500 V");
    EXPECT_EQ(dialog->mchSpeed->Value(), meterspeed::Medium);
    EXPECT_EQ(plate.GageVoltage(Which::Current), 2.5f);
    EXPECT_EQ(plate.SampleFrequency(Which::Current), 60.0f);
    EXPECT_EQ(plate.ZeroValue(2, Which::Current), 0);

    dialog->cmdDisplay->click();
    clock.advance(1000);
    dialog->cmdOK->click();
    EXPECT_EQ(unloads, 1);
    EXPECT_EQ(plate.GageVoltage(Which::Current), gage);
    EXPECT_EQ(plate.SampleFrequency(Which::Current), 100.0f);
    EXPECT_EQ(plate.ZeroValue(2, Which::Current), 1234);
    EXPECT_EQ(meterSetting("Refresh Rate (Hz)"), 5);
    EXPECT_EQ(meterSetting("Sampling Freq (Hz)"), 60);
    int after = 0;
    QObject::connect(&plate, &PlateDevice::ForcesIn, [&] { ++after; });
    clock.advance(1000);
    EXPECT_EQ(after, 0) << "nothing streams once the meter is gone";
}

// The read-out changes only when more than the period has passed since its last change (half
// or twice the base 200 ms for Fast and Slow), and then shows the mean of the samples since.
TEST_F(MeterTest, SlowAndFastRefreshAtMostEvery400And100Ms) {
    for (const auto& [speed, periodMs] :
         {std::pair{meterspeed::Slow, 400}, std::pair{meterspeed::Fast, 100}}) {
        openDialog(&plate);
        QTest::mouseClick(
            dialog->mchSpeed->findChild<QRadioButton*>(QStringLiteral("optChoice%1").arg(speed)),
            Qt::LeftButton);
        ASSERT_EQ(dialog->mchSpeed->Value(), speed);
        const auto feed = [&](int afterMs, float volts) {
            clock.advance(afterMs);
            Q_EMIT plate.ForcesIn(0, Float3{}, Float3{volts, -volts, 0});
            return dialog->lblData->text();
        };
        EXPECT_EQ(feed(1000, 0.25f), "Ch1 +0.250000 VDC\nCh2 -0.250000 VDC\nCh3 +0.000000 VDC");
        EXPECT_TRUE(feed(periodMs, 0.5f).startsWith("Ch1 +0.250000 ")) << "exactly one period";
        EXPECT_TRUE(feed(1, 0.125f).startsWith("Ch1 +0.312500 ")) << "the mean of the two";
        dialog->close();
    }
}

TEST_F(MeterTest, APlateWithoutSerialNumberShowsNotPresent) {
    // Fresh from the factory: the library refuses to write an empty number, but a plate may
    // come without one.
    SimPlate* blank = addPlate(QString());
    openPlates();
    openDialog(blank);
    EXPECT_EQ(dialog->lblSerialNumber->text(), "Not Present");
}

TEST_F(MeterTest, ClippingAndOverrunMarkTheLabelATimeOutEndsTheDisplayAnUnplugCloses) {
    openDialog(&plate);
    dialog->cmdDisplay->click();
    clock.advance(500);
    driver.inject("20418", PlateFault::DataClipped);
    EXPECT_EQ(dialog->lblError->text(), "Clipping!");
    EXPECT_TRUE(dialog->lblError->isVisible());
    driver.inject("20418", PlateFault::BufferOverRun);
    EXPECT_EQ(dialog->lblError->text(), "Overrun!");
    EXPECT_TRUE(prompt.messages.isEmpty());
    // The meter keeps streaming under its flag.
    int samples = 0;
    QObject::connect(&plate, &PlateDevice::ForcesIn, dialog.get(), [&] { ++samples; });
    clock.advance(100);
    EXPECT_TRUE(displaying());
    EXPECT_GT(samples, 0);
    driver.inject("20418", PlateFault::WriteTimeout);
    EXPECT_EQ(prompt.messages, QStringList{strings::text(2940)});
    EXPECT_FALSE(displaying());

    dialog->cmdDisplay->click();
    clock.advance(500);
    driver.unplug("20418");
    clock.advance(499);
    EXPECT_EQ(unloads, 0);
    clock.advance(1);
    EXPECT_EQ(unloads, 1) << "closed half a second after the unplug";
    EXPECT_EQ(prompt.messages, (QStringList{strings::text(2940), strings::text(2920)}));
}

} // namespace
} // namespace kx
