#include "../measure/DialogBench.h"
#include "../support/PrintQString.h"
#include "resources/StringTable.h"
#include "scale/FormatForce.h"
#include "scale/frmScale.h"
#include "support/Clock.h"
#include "support/Settings.h"
#include "support/SettingsKeys.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <gtest/gtest.h>
#include <memory>

namespace kx {
namespace {

constexpr auto User = SettingsRoot::CurrentUser;

void setScale(const char* name, qint32 value) {
    SaveSettingLong(User, QLatin1String(kScaleKey), QLatin1String(name), value);
}
void setAutozero(const char* name, qint32 value) {
    SaveSettingLong(User, QLatin1String(kScaleAutozeroKey), QLatin1String(name), value);
}

class ScaleTest : public ::testing::Test {
protected:
    void open(PlateDevice* device) {
        dialog = std::make_unique<frmScale>(bench.context);
        QObject::connect(dialog.get(), &ToolDialog::unloaded, [this] { ++unloaded; });
        dialog->setDevice(device);
        dialog->show();
    }

    bool displaying() const { return dialog->cmdDisplay->text() == strings::text(3030); }

    // A manual zero on whatever rests on the plate; it ends with the display on.
    void zero() {
        dialog->cmdZero->click();
        ASSERT_TRUE(bench.advanceUntil([this] { return displaying(); }, 6000));
    }

    // The plate stops streaming behind the dialog's back, so that a test can feed it samples
    // of its own through the plate's event.
    void takeOverTheSamples() { plate.StopAcquisition(); }
    void feed(float fz, int afterMs = 16) {
        bench.clock.advance(afterMs);
        Q_EMIT plate.ForcesIn(++fed, Float3{fz, 0.0f, 0.0f}, Float3{});
    }
    // Ends a check the plate started and hands the dialog a block of its own.
    void finishCheck(qint32 count, float fz) {
        plate.StopAcquisition();
        Q_EMIT plate.TestDone(count, QList<Float3>(count, Float3{fz, 0.0f, 0.0f}),
                              QList<Float3>(count, Float3{}));
    }

    QString kgf(double newtons, qint16 decimals) const {
        return FormatForce(newtons, forceunit::Kilograms, decimals);
    }

    test::DialogBench bench;
    SimPlate& plate = bench.plate("20418");
    std::unique_ptr<frmScale> dialog;
    int unloaded = 0;
    qint32 fed = 0;
};

TEST_F(ScaleTest, WithoutAPlateItOnlyCloses) {
    open(nullptr);
    EXPECT_EQ(dialog->windowTitle(), "KX Force Platforms Control Panel - Digital Scale");
    EXPECT_EQ(dialog->StatusBar1Panel1->text(), "No Platform");
    EXPECT_FALSE(dialog->cmdZero->isEnabled());
    EXPECT_FALSE(dialog->cmdDisplay->isEnabled());
    EXPECT_TRUE(dialog->cmdClose->isEnabled());
    EXPECT_FALSE(dialog->tmrPlateZero->isEnabled());
    bench.clock.advance(10000);
    dialog->cmdClose->click();
    EXPECT_EQ(unloaded, 1);
    EXPECT_TRUE(bench.prompt.messages.isEmpty());
    EXPECT_EQ(GetSettingLong(User, QLatin1String(kScaleKey), "Frequency (Hz)", -1), -1)
        << "nothing was read, so nothing is written";
}

TEST_F(ScaleTest, RunsThePlateAtTheScaleFrequencyAndPutsItsOwnBack) {
    setScale("Frequency (Hz)", 125);
    setAutozero("Min Tare (N)", 3);
    open(&plate);
    EXPECT_EQ(dialog->StatusBar1Panel1->text(), "20418");
    EXPECT_EQ(plate.SampleFrequency(Which::Current), 125.0f);
    EXPECT_TRUE(dialog->cmdZero->isEnabled());
    EXPECT_FALSE(dialog->cmdDisplay->isEnabled()) << "no zero or check yet";
    EXPECT_EQ(dialog->focusWidget(), dialog->cmdZero);
    dialog->cmdClose->click();
    EXPECT_EQ(unloaded, 1);
    EXPECT_EQ(plate.SampleFrequency(Which::Current), 100.0f);
    EXPECT_EQ(GetSettingLong(User, QLatin1String(kScaleKey), "Frequency (Hz)", -1), 125);
    EXPECT_EQ(GetSettingLong(User, QLatin1String(kScaleAutozeroKey), "Enabled", 0), -1);
    EXPECT_EQ(GetSettingLong(User, QLatin1String(kScaleAutozeroKey), "Min Tare (N)", 0), 3);
    EXPECT_EQ(GetSettingLong(User, QLatin1String(kScaleAutozeroKey), "Duration (ms)", 0), 200);
}

TEST_F(ScaleTest, AZeroWritesThePlatesZeroValuesAndTheFirstReadingIsExactlyTheSample) {
    setAutozero("Enabled", 0);
    setScale("Display Decimals", 3);
    plate.loads().placeWeight(25.0, 0.1, 0.1, plate.now()); // a tare the zero takes away
    bench.clock.advance(500);
    open(&plate);
    QList<qint32> zeroSamples;
    ChannelValues zeroAverages;
    QObject::connect(
        &plate, &PlateDevice::ZeroDone, dialog.get(),
        [&](qint32 n, const ChannelValues& average, const ChannelValues&, const ChannelValues&) {
            zeroSamples << n;
            zeroAverages = average;
        });
    dialog->cmdZero->click();
    EXPECT_TRUE(dialog->ProgressBar1->isVisible());
    EXPECT_EQ(dialog->ProgressBar1->maximum(), 320) << "5 s at 64 Hz";
    EXPECT_FALSE(dialog->cmdDisplay->isEnabled());
    EXPECT_FALSE(dialog->cmdClose->isEnabled());
    test::ForcesRecorder forces(plate, bench.clock);
    ASSERT_TRUE(bench.advanceUntil([this] { return displaying(); }, 6000));

    ASSERT_EQ(zeroSamples, QList<qint32>{320});
    for (int channel = 0; channel < 4; ++channel)
        EXPECT_EQ(plate.ZeroValue(channel, Which::Current),
                  channel < zeroAverages.size() ? qRound(zeroAverages[channel]) : 0);
    EXPECT_FALSE(dialog->ProgressBar1->isVisible());
    EXPECT_TRUE(dialog->cmdClose->isEnabled());
    EXPECT_EQ(dialog->lblData[0]->palette().color(QPalette::WindowText), QColor(0, 255, 0));

    ASSERT_TRUE(bench.advanceUntil([&] { return !forces.samples.empty(); }, 100));
    const float first = forces.samples[0].forces[0];
    EXPECT_EQ(dialog->lblData[0]->text(), kgf(-static_cast<double>(first), 3));
    EXPECT_EQ(dialog->lblData[1]->text(),
              FormatForce(-static_cast<double>(first), forceunit::PoundsOunces, 3));

    // From there the average takes in every sample.
    bench.clock.advance(1000);
    const auto& samples = forces.samples;
    double sum = 0.0;
    std::size_t shown = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        sum += samples[i].forces[0];
        if (samples[i].tick - samples[0].tick > 500 && shown == 0)
            shown = i + 1;
    }
    ASSERT_GT(shown, 1u);
    double upToShown = 0.0;
    for (std::size_t i = 0; i < shown; ++i)
        upToShown += samples[i].forces[0];
    EXPECT_EQ(dialog->lblData[0]->text(), kgf(-upToShown / static_cast<float>(shown), 3));
}

TEST_F(ScaleTest, TheReadingChangesOnlyMoreThanTheIntervalAfterTheLastChange) {
    setAutozero("Enabled", 0);
    setScale("Display Decimals", 6);
    open(&plate);
    zero();
    // The read-out as it stands after each sample, in order of arrival.
    QList<std::pair<quint32, QString>> readings;
    QObject::connect(&plate, &PlateDevice::ForcesIn, dialog.get(), [&] {
        readings << std::pair{bench.clock.tickCount(), dialog->lblData[0]->text()};
    });
    bench.clock.advance(5000);
    ASSERT_GT(readings.size(), 300);

    quint32 lastUpdate = readings[0].first;
    int exactlyTheInterval = 0;
    int updates = 0;
    for (qsizetype i = 1; i < readings.size(); ++i) {
        const quint32 since = readings[i].first - lastUpdate;
        const bool changed = readings[i].second != readings[i - 1].second;
        EXPECT_EQ(changed, since > 500) << "sample " << i << ", " << since << " ms";
        exactlyTheInterval += since == 500 ? 1 : 0;
        if (changed) {
            lastUpdate = readings[i].first;
            ++updates;
        }
    }
    EXPECT_GT(exactlyTheInterval, 5) << "samples fall exactly on the interval at 64 Hz";
    EXPECT_EQ(updates, 9);
}

TEST_F(ScaleTest, OnlyAStepBeyondTheResetDifferenceRestartsTheAverage) {
    setAutozero("Enabled", 0);
    setScale("Average Reset Difference (N)", 10);
    setScale("Display Decimals", 3);
    open(&plate);
    zero();
    takeOverTheSamples();
    // Four samples at 100 N, then one whose deviation from the mean taking it in is exactly
    // 10 N (a step of 12.5 N), or a little more.
    for (const auto& [step, shownNewtons] :
         {std::pair{-112.5f, 102.5}, std::pair{-112.6f, 112.6}}) {
        feed(-100.0f, 600);
        for (int i = 0; i < 3; ++i)
            feed(-100.0f);
        feed(step, 600);
        EXPECT_EQ(dialog->lblData[0]->text(), kgf(shownNewtons, 3)) << step;
        // Restart the average for the next case.
        feed(-500.0f);
        feed(0.0f);
    }
}

TEST_F(ScaleTest, AnAutomaticCheckOfAFifthOfASecondAt64HzTakes13Samples) {
    open(&plate);
    QList<qint32> blocks;
    QObject::connect(&plate, &PlateDevice::TestDone, dialog.get(),
                     [&](qint32 count) { blocks << count; });
    EXPECT_TRUE(dialog->tmrPlateZero->isEnabled());
    EXPECT_EQ(dialog->tmrPlateZero->interval(), 2000);
    bench.clock.advance(1999);
    EXPECT_TRUE(blocks.isEmpty());
    bench.clock.advance(1);
    EXPECT_FALSE(dialog->tmrPlateZero->isEnabled()) << "off while the check runs";
    EXPECT_FALSE(dialog->cmdClose->isEnabled());
    EXPECT_FALSE(dialog->ProgressBar1->isVisible());
    bench.clock.advance(300);
    EXPECT_EQ(blocks, QList<qint32>{13});
    // The empty plate is not zeroed, but the dialog may now weigh.
    EXPECT_FALSE(dialog->ProgressBar1->isVisible());
    EXPECT_TRUE(dialog->tmrPlateZero->isEnabled());
    EXPECT_TRUE(dialog->cmdDisplay->isEnabled());
    EXPECT_TRUE(dialog->cmdClose->isEnabled());
    bench.clock.advance(2300);
    EXPECT_EQ(blocks, (QList<qint32>{13, 13}));
}

TEST_F(ScaleTest, AnAutomaticCheckZeroesOnlyATareStrictlyBetweenTheBounds) {
    setAutozero("Min Tare (N)", 2);
    setAutozero("Max Tare (N)", 60);
    for (const auto& [load, zeroes] :
         {std::pair{-2.0f, false}, std::pair{60.0f, false}, std::pair{-60.0f, false},
          std::pair{-2.5f, true}, std::pair{59.5f, true}, std::pair{-0.5f, false}}) {
        open(&plate);
        int zeroProgress = 0;
        QObject::connect(&plate, &PlateDevice::ZeroProgress, dialog.get(), [&] { ++zeroProgress; });
        bench.clock.advance(2000);
        finishCheck(13, load);
        EXPECT_TRUE(dialog->cmdDisplay->isEnabled()) << load;
        EXPECT_EQ(dialog->tmrPlateZero->isEnabled(), !zeroes) << load;
        bench.clock.advance(99);
        EXPECT_FALSE(dialog->ProgressBar1->isVisible()) << load;
        bench.clock.advance(1);
        EXPECT_EQ(dialog->ProgressBar1->isVisible(), zeroes) << load;
        bench.clock.advance(600);
        EXPECT_EQ(zeroProgress > 0, zeroes) << load;
        dialog->close();
    }
}

TEST_F(ScaleTest, ABlockOfTheWrongLengthEndsTheCheckWithoutLettingTheScaleWeigh) {
    open(&plate);
    bench.clock.advance(2000);
    finishCheck(12, -20.0f);
    EXPECT_FALSE(dialog->cmdDisplay->isEnabled());
    EXPECT_TRUE(dialog->cmdClose->isEnabled());
    EXPECT_TRUE(dialog->tmrPlateZero->isEnabled());
}

TEST_F(ScaleTest, ATimeOutStopsTheDisplayAndLeavesTheStatusReadyTimeoutOccurred) {
    setAutozero("Enabled", 0);
    open(&plate);
    zero();
    bench.clock.advance(300);
    bench.driver.inject("20418", PlateFault::ReadTimeout);
    EXPECT_EQ(bench.prompt.messages, QStringList{strings::text(3930)});
    EXPECT_EQ(dialog->StatusBar1Panel1->text(), "Ready (Timeout Occurred)");
    EXPECT_FALSE(displaying());
    EXPECT_EQ(dialog->lblData[0]->palette().color(QPalette::WindowText), QColor(255, 128, 0));
    EXPECT_TRUE(dialog->cmdDisplay->isEnabled());
    bench.clock.advance(3000);
    EXPECT_EQ(dialog->StatusBar1Panel1->text(), "Ready (Timeout Occurred)");
    EXPECT_EQ(bench.prompt.messages.size(), 1);
}

TEST_F(ScaleTest, AnOverrunMattersOnlyDuringAZeroAndItsMarkStaysUntilTheNextReading) {
    setAutozero("Enabled", 0);
    open(&plate);
    zero();
    bench.clock.advance(300);
    bench.driver.inject("20418", PlateFault::BufferOverRun);
    EXPECT_TRUE(bench.prompt.messages.isEmpty()) << "ignored while weighing";
    EXPECT_EQ(dialog->StatusBar1Panel1->text(), "20418");

    dialog->cmdZero->click();
    bench.clock.advance(1000);
    bench.driver.inject("20418", PlateFault::BufferOverRun);
    EXPECT_EQ(bench.prompt.messages, QStringList{strings::text(3902)});
    EXPECT_EQ(dialog->StatusBar1Panel1->text(), "Ready (Buffer Overrun)");
    EXPECT_EQ(dialog->lblError->text(), "Overrun!");
    EXPECT_TRUE(dialog->lblError->isVisible());
    EXPECT_FALSE(dialog->ProgressBar1->isVisible());
    EXPECT_TRUE(dialog->cmdClose->isEnabled());
    bench.clock.advance(6000);
    EXPECT_FALSE(displaying()) << "the zero never finished";
    EXPECT_TRUE(dialog->lblError->isVisible());

    zero();
    bench.clock.advance(100);
    EXPECT_FALSE(dialog->lblError->isVisible());
}

TEST_F(ScaleTest, UnpluggedDuringAZeroItReportsOnceAndClosesHalfASecondLater) {
    setAutozero("Enabled", 0);
    open(&plate);
    dialog->cmdZero->click();
    bench.clock.advance(1000);
    bench.driver.unplug("20418");
    EXPECT_EQ(bench.prompt.messages,
              QStringList{"The Force Platform Has Been Disconnected!!!\n\nThis window will now "
                          "Close!"});
    bench.clock.advance(499);
    EXPECT_EQ(unloaded, 0);
    bench.clock.advance(1);
    EXPECT_EQ(unloaded, 1);
    EXPECT_FALSE(dialog->isVisible());
    bench.clock.advance(10000);
    EXPECT_EQ(bench.prompt.messages.size(), 1);
    EXPECT_EQ(GetSettingLong(User, QLatin1String(kScaleKey), "Frequency (Hz)", -1), 64);
}

} // namespace
} // namespace kx
