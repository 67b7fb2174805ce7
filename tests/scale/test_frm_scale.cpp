#include "../support/PrintQString.h"
#include "DialogFixture.h"
#include "resources/StringTable.h"
#include "scale/FormatForce.h"
#include "scale/frmScale.h"
#include "support/Settings.h"
#include "support/SettingsKeys.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <gtest/gtest.h>

namespace kx {
namespace {

constexpr auto User = SettingsRoot::CurrentUser;

void setScale(const char* name, qint32 value) {
    SaveSettingLong(User, QLatin1String(kScaleKey), QLatin1String(name), value);
}
void setAutozero(const char* name, qint32 value) {
    SaveSettingLong(User, QLatin1String(kScaleAutozeroKey), QLatin1String(name), value);
}
qint32 stored(const char* key, const char* name) {
    return GetSettingLong(User, QLatin1String(key), QLatin1String(name), -1);
}

class ScaleTest : public test::DialogFixture<frmScale> {
protected:
    bool displaying() const { return dialog->cmdDisplay->text() == strings::text(3030); }

    // A manual zero on whatever rests on the plate; it ends with the display on.
    void zero() {
        dialog->cmdZero->click();
        ASSERT_TRUE(advanceUntil([this] { return displaying(); }, 6000));
    }

    // Feeds a sample of the test's own through the plate's event, `afterMs` after the last.
    void feed(float fz, int afterMs = 16) {
        clock.advance(afterMs);
        Q_EMIT plate.ForcesIn(0, Float3{fz, 0.0f, 0.0f}, Float3{});
    }
    // Ends a check the plate started and hands the dialog a block of its own.
    void finishCheck(qint32 count, float fz) {
        plate.StopAcquisition();
        Q_EMIT plate.TestDone(count, QList<Float3>(count, Float3{fz, 0.0f, 0.0f}),
                              QList<Float3>(count, Float3{}));
    }

    SimPlate& plate = openDefaultPlates();
};

TEST_F(ScaleTest, WithoutAPlateItOnlyCloses) {
    openDialog(nullptr);
    EXPECT_EQ(dialog->StatusBar1Panel1->text(), "No Platform");
    EXPECT_FALSE(dialog->cmdZero->isEnabled());
    EXPECT_FALSE(dialog->cmdDisplay->isEnabled());
    clock.advance(10000);
    dialog->cmdClose->click();
    EXPECT_EQ(unloads, 1);
    EXPECT_TRUE(prompt.messages.isEmpty());
    EXPECT_EQ(stored(kScaleKey, "Frequency (Hz)"), -1) << "nothing was read, so nothing written";
}

TEST_F(ScaleTest, RunsThePlateAtTheScaleFrequencyAndPutsItsOwnBack) {
    setScale("Frequency (Hz)", 125);
    openDialog(&plate);
    EXPECT_EQ(plate.SampleFrequency(Which::Current), 125.0f);
    EXPECT_FALSE(dialog->cmdDisplay->isEnabled()) << "no zero or check yet";
    dialog->cmdClose->click();
    EXPECT_EQ(plate.SampleFrequency(Which::Current), 100.0f);
    EXPECT_EQ(stored(kScaleKey, "Frequency (Hz)"), 125);
    EXPECT_EQ(stored(kScaleAutozeroKey, "Duration (ms)"), 200);
}

// A zero takes the tare away into the plate's zero values. The first reading is exactly the
// next sample; readings change only more than the display interval (500 ms) after the last
// change; and only a step beyond the reset difference restarts the average.
TEST_F(ScaleTest, AZeroThenReadingsThrottledAndRestartedOnlyBeyondTheResetDifference) {
    setAutozero("Enabled", 0);
    setScale("Display Decimals", 6);
    setScale("Average Reset Difference (N)", 10);
    plate.loads().placeWeight(25.0, 0.1, 0.1, plate.now()); // a tare the zero takes away
    clock.advance(500);
    openDialog(&plate);
    ChannelValues zeroAverages;
    QObject::connect(&plate, &PlateDevice::ZeroDone, dialog.get(),
                     [&](qint32, const ChannelValues& average) { zeroAverages = average; });
    dialog->cmdZero->click();
    EXPECT_EQ(dialog->ProgressBar1->maximum(), 320) << "5 s at 64 Hz";
    EXPECT_FALSE(dialog->cmdClose->isEnabled());
    ASSERT_TRUE(advanceUntil([this] { return displaying(); }, 6000));
    ASSERT_FALSE(zeroAverages.isEmpty());
    for (int channel = 0; channel < zeroAverages.size(); ++channel)
        EXPECT_EQ(plate.ZeroValue(channel, Which::Current), qRound(zeroAverages[channel]));

    QList<float> forces;
    QObject::connect(&plate, &PlateDevice::ForcesIn, dialog.get(),
                     [&](qint32, const Float3& f) { forces << f[0]; });
    ASSERT_TRUE(advanceUntil([&] { return !forces.isEmpty(); }, 100));
    const double first = -static_cast<double>(forces[0]);
    EXPECT_EQ(dialog->lblData[0]->text(), FormatForce(first, forceunit::Kilograms, 6));
    EXPECT_EQ(dialog->lblData[1]->text(), FormatForce(first, forceunit::PoundsOunces, 6));

    plate.StopAcquisition(); // from here the test feeds the samples
    feed(-100.0f, 600);
    EXPECT_EQ(dialog->lblData[0]->text(), FormatForce(100, forceunit::Kilograms, 6));
    feed(-200.0f, 500); // restarts the average at 200 N
    EXPECT_EQ(dialog->lblData[0]->text(), FormatForce(100, forceunit::Kilograms, 6))
        << "exactly the interval after the last change";
    feed(-200.0f, 1);
    EXPECT_EQ(dialog->lblData[0]->text(), FormatForce(200, forceunit::Kilograms, 6));
    // Four samples at 100 N, then one whose deviation from the mean taking it in is exactly
    // 10 N (a step of 12.5 N), or a little more (12.75 N).
    for (const auto& [step, shownNewtons] :
         {std::pair{-112.5f, 102.5}, std::pair{-112.75f, 112.75}}) {
        feed(-500.0f); // a restart, far from 100 N
        feed(-100.0f, 600);
        for (int i = 0; i < 3; ++i)
            feed(-100.0f);
        feed(step, 600);
        EXPECT_EQ(dialog->lblData[0]->text(), FormatForce(shownNewtons, forceunit::Kilograms, 6))
            << step;
    }
}

// Every two seconds a check of 0.2 s at 64 Hz (13 samples, 12.8 rounded) zeroes only a tare
// strictly between the bounds.
TEST_F(ScaleTest, AnAutomaticCheckZeroesOnlyATareStrictlyBetweenTheBounds) {
    setAutozero("Min Tare (N)", 2);
    setAutozero("Max Tare (N)", 60);
    for (const auto& [load, zeroes] : {std::pair{-2.0f, false}, std::pair{-60.0f, false},
                                       std::pair{-2.5f, true}, std::pair{-0.5f, false}}) {
        openDialog(&plate);
        int zeroProgress = 0;
        QObject::connect(&plate, &PlateDevice::ZeroProgress, dialog.get(), [&] { ++zeroProgress; });
        clock.advance(1999);
        EXPECT_TRUE(dialog->cmdClose->isEnabled()) << "no check before the interval";
        clock.advance(1);
        EXPECT_FALSE(dialog->cmdClose->isEnabled()) << "a check runs";
        finishCheck(13, load);
        EXPECT_TRUE(dialog->cmdDisplay->isEnabled()) << "the dialog may weigh after any check";
        EXPECT_EQ(dialog->tmrPlateZero->isEnabled(), !zeroes) << load;
        clock.advance(99);
        EXPECT_FALSE(dialog->ProgressBar1->isVisible()) << load;
        clock.advance(1);
        EXPECT_EQ(dialog->ProgressBar1->isVisible(), zeroes) << load;
        clock.advance(600);
        EXPECT_EQ(zeroProgress > 0, zeroes) << load;
        dialog->close();
    }
}

TEST_F(ScaleTest, ATimeOutStopsTheDisplayAndAnUnplugClosesHalfASecondAfterItsBox) {
    setAutozero("Enabled", 0);
    openDialog(&plate);
    zero();
    clock.advance(300);
    driver.inject("20418", PlateFault::ReadTimeout);
    EXPECT_EQ(prompt.messages, QStringList{strings::text(3930)});
    EXPECT_FALSE(displaying());
    EXPECT_TRUE(dialog->cmdDisplay->isEnabled());
    clock.advance(3000);
    EXPECT_EQ(dialog->StatusBar1Panel1->text(), "Ready (Timeout Occurred)");

    dialog->cmdZero->click();
    clock.advance(1000);
    driver.unplug("20418");
    clock.advance(499);
    EXPECT_EQ(unloads, 0);
    clock.advance(1);
    EXPECT_EQ(unloads, 1);
    clock.advance(10000);
    EXPECT_EQ(prompt.messages, (QStringList{strings::text(3930), strings::text(3920)}));
    EXPECT_EQ(stored(kScaleKey, "Frequency (Hz)"), 64);
}

} // namespace
} // namespace kx
