#include "../support/PrintQString.h"
#include "DialogBench.h"
#include "app/ZeroPanel.h"
#include "app/frmMain.h"
#include "measure/ZeroStatistics.h"
#include "measure/frmZero.h"
#include "resources/StringTable.h"
#include "support/NumberFormat.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QStatusBar>
#include <gtest/gtest.h>
#include <memory>

namespace kx {
namespace {

// Every zero acquisition a plate finishes.
struct ZeroRecorder {
    explicit ZeroRecorder(PlateDevice& plate) {
        QObject::connect(
            &plate, &PlateDevice::ZeroDone, &context,
            [this](qint32 n, const ChannelValues& a, const ChannelValues& d, const ChannelValues&) {
                samples << n;
                average = a;
                deviation = d;
            });
    }
    QObject context;
    QList<qint32> samples;
    ChannelValues average;
    ChannelValues deviation;
};

class ZeroTest : public ::testing::Test {
protected:
    void open(PlateDevice* device, const QString& duration = QStringLiteral("5")) {
        dialog = std::make_unique<frmZero>(bench.context);
        QObject::connect(dialog.get(), &ToolDialog::unloaded, [this] { ++unloaded; });
        QObject::connect(dialog.get(), &frmZero::zeroValueWritten,
                         [this](int channel, const QString& codes) {
                             written << QString::number(channel) + u'=' + codes;
                         });
        dialog->txtDuration->setText(duration);
        dialog->setDevice(device);
        dialog->show();
    }

    bool idle() const {
        return dialog->cmdAcquire->isEnabled() && dialog->cmdOK->isEnabled() &&
               dialog->cmdCancel->isEnabled() && dialog->ProgressBar1->isHidden() &&
               !dialog->StatusBar1->isHidden();
    }

    QStringList readOuts() const {
        QStringList texts;
        for (int i = 0; i < 2 * frmZero::Channels; ++i)
            texts << dialog->lblZeroAveTxt[i]->text() << dialog->lblZeroSDTxt[i]->text();
        return texts;
    }

    test::DialogBench bench;
    SimPlate& plate = bench.plate("20418");
    std::unique_ptr<frmZero> dialog;
    int unloaded = 0;
    QStringList written;
};

TEST_F(ZeroTest, ADurationThatIsNoNumberStartsNothing) {
    open(&plate, QStringLiteral("abc"));
    ZeroRecorder zeros(plate);
    dialog->cmdAcquire->click();
    EXPECT_TRUE(idle());
    bench.clock.advance(10000);
    EXPECT_TRUE(zeros.samples.isEmpty());
}

TEST_F(ZeroTest, HalfASecondAt1000HzAsksFor500SamplesAndShowsEveryChannel) {
    plate.SetSampleFrequency(Which::Current, 1000.0f);
    open(&plate, QStringLiteral("0.5"));
    EXPECT_EQ(dialog->lblFreqTxt->text(), "1000.000");
    ZeroRecorder zeros(plate);
    QList<int> progress;
    QObject::connect(&plate, &PlateDevice::ZeroProgress, dialog.get(),
                     [&] { progress << dialog->ProgressBar1->value(); });
    dialog->cmdAcquire->click();
    EXPECT_FALSE(dialog->cmdAcquire->isEnabled());
    EXPECT_FALSE(dialog->cmdOK->isEnabled());
    EXPECT_FALSE(dialog->cmdCancel->isEnabled());
    EXPECT_TRUE(dialog->StatusBar1->isHidden());
    EXPECT_FALSE(dialog->ProgressBar1->isHidden());
    EXPECT_EQ(dialog->ProgressBar1->maximum(), 500);
    EXPECT_EQ(dialog->ProgressBar1->value(), 0);
    bench.clock.advance(600);

    ASSERT_EQ(zeros.samples, QList<qint32>{500});
    EXPECT_EQ(progress.size(), 10);
    EXPECT_EQ(progress.back(), 500);
    EXPECT_TRUE(idle());
    ASSERT_EQ(zeros.average.size(), 4);
    for (int i = 0; i < 4; ++i) {
        const double a = zeros.average[i];
        const double s = zeros.deviation[i];
        EXPECT_EQ(dialog->lblZeroAveTxt[i]->text(), formatNumber(a, u"0"));
        EXPECT_EQ(dialog->lblZeroAveTxt[4 + i]->text(),
                  formatNumber(a * 10.0 / 16777216.0, u"0.000"));
        EXPECT_EQ(dialog->lblZeroSDTxt[i]->text(), formatNumber(s, u"0.0"));
        EXPECT_EQ(dialog->lblZeroSDTxt[4 + i]->text(),
                  formatNumber(20.0 * std::log10(16777216.0 / s), u"0.0"));
        EXPECT_GT(s, 0.0);
    }
}

TEST_F(ZeroTest, TheSignalToNoiseFollowsTheFirmwareAndAChannelWithoutNoiseShowsTheFullRange) {
    SimPlate& older = bench.plate("11093");
    open(&older);
    dialog->cmdAcquire->click();
    bench.clock.advance(100);
    // The plate reports a channel without noise, as a converter stuck at one code would.
    older.StopAcquisition();
    Q_EMIT older.ZeroDone(320, {8388000.0, 8390000.0, 8389000.0, 8388608.0}, {16.0, 0.0, -1.0, 0.5},
                          {});
    EXPECT_EQ(dialog->lblZeroAveTxt[0]->text(), "8388000");
    EXPECT_EQ(dialog->lblZeroAveTxt[4]->text(), "5.000");
    EXPECT_EQ(dialog->lblZeroSDTxt[4]->text(), "114.4") << "against 2^23 on firmware 1";
    EXPECT_EQ(dialog->lblZeroSDTxt[5]->text(), "144.5");
    EXPECT_EQ(dialog->lblZeroSDTxt[6]->text(), "144.5");
    EXPECT_EQ(dialog->lblZeroSDTxt[7]->text(), "144.5");
    EXPECT_EQ(dialog->lblZeroSDTxt[3]->text(), "0.5");

    older.SetResolution(16);
    dialog->cmdAcquire->click();
    bench.clock.advance(100);
    older.StopAcquisition();
    Q_EMIT older.ZeroDone(320, {0.0, 0.0, 0.0}, {0.0, 0.0, 0.0}, {});
    EXPECT_EQ(dialog->lblZeroSDTxt[4]->text(), "96.3");
    EXPECT_EQ(dialog->lblZeroSDTxt[7]->text(), "144.5") << "a channel not reported keeps its text";
}

TEST_F(ZeroTest, OkAfterNoAcquisitionWritesNothing) {
    open(&plate);
    QList<qint32> before;
    for (int channel = 0; channel < 4; ++channel)
        before << plate.ZeroValue(channel, Which::Current);
    dialog->cmdOK->click();
    EXPECT_EQ(unloaded, 1);
    EXPECT_TRUE(written.isEmpty());
    for (int channel = 0; channel < 4; ++channel)
        EXPECT_EQ(plate.ZeroValue(channel, Which::Current), before[channel]);
}

TEST_F(ZeroTest, OkTakesTheAveragesAsThePlatesZeroValuesCancelDoesNot) {
    for (const bool ok : {false, true}) {
        open(&plate);
        ZeroRecorder zeros(plate);
        const qint32 before = plate.ZeroValue(0, Which::Current);
        dialog->cmdAcquire->click();
        bench.clock.advance(6000);
        ASSERT_EQ(zeros.average.size(), 4);
        (ok ? dialog->cmdOK : dialog->cmdCancel)->click();
        EXPECT_EQ(unloaded, ok ? 2 : 1);
        if (!ok) {
            EXPECT_TRUE(written.isEmpty());
            EXPECT_EQ(plate.ZeroValue(0, Which::Current), before);
            continue;
        }
        QStringList expected;
        for (int channel = 0; channel < 4; ++channel) {
            const QString codes = formatNumber(zeros.average[channel], u"0");
            expected << QString::number(channel) + u'=' + codes;
            EXPECT_EQ(plate.ZeroValue(channel, Which::Current), codes.toInt());
        }
        EXPECT_EQ(written, expected);
    }
}

TEST_F(ZeroTest, ClippingStopsTheZeroAndKeepsTheEarlierResults) {
    open(&plate);
    dialog->cmdAcquire->click();
    bench.clock.advance(6000);
    const QStringList earlier = readOuts();
    ASSERT_FALSE(earlier[0].isEmpty());

    dialog->cmdAcquire->click();
    bench.clock.advance(1000);
    bench.driver.inject("20418", PlateFault::DataClipped);
    EXPECT_EQ(bench.prompt.messages, QStringList{strings::text(1910)});
    EXPECT_TRUE(bench.prompt.messages[0].contains("nothing is in contact with the plate"));
    EXPECT_TRUE(dialog->cmdAcquire->isEnabled());
    EXPECT_TRUE(dialog->cmdCancel->isEnabled());
    EXPECT_FALSE(dialog->cmdOK->isEnabled());
    EXPECT_TRUE(dialog->ProgressBar1->isHidden());
    EXPECT_EQ(readOuts(), earlier);
    bench.clock.advance(6000);
    EXPECT_EQ(readOuts(), earlier);

    // The user can start again.
    dialog->cmdAcquire->click();
    bench.clock.advance(6000);
    EXPECT_TRUE(idle());
}

TEST_F(ZeroTest, WithoutAPlateItSaysNoPlatform) {
    open(nullptr);
    EXPECT_EQ(dialog->windowTitle(), "KX Force Platforms Control Panel - Device Zero");
    EXPECT_EQ(dialog->lblFreqTxt->text(), "No Platform");
    EXPECT_FALSE(dialog->cmdAcquire->isEnabled());
    dialog->cmdOK->click();
    EXPECT_EQ(unloaded, 1);
}

TEST_F(ZeroTest, UnpluggedDuringAZeroItClosesHalfASecondAfterOneMessage) {
    open(&plate);
    dialog->cmdAcquire->click();
    bench.clock.advance(1000);
    bench.driver.unplug("20418");
    EXPECT_EQ(bench.prompt.messages, QStringList{strings::text(1920)});
    bench.clock.advance(500);
    EXPECT_EQ(unloaded, 1);
    EXPECT_EQ(bench.prompt.messages.size(), 1);
}

// The main window opens the dialog with a duration of 5 s, and OK puts the new zero values
// into the main window's boxes as well as into the plate.
TEST(ZeroFromTheMainWindow, OkFillsTheMainWindowsZeroBoxes) {
    test::TempEnvironment environment;
    test::RecordingPrompt prompt;
    ManualClock clock(1000);
    frmMain window(clock, prompt, [&] {
        auto driver = std::make_unique<SimDriver>(clock);
        Scenario::defaults().applyTo(*driver);
        return driver;
    });
    window.load();
    clock.advance(1000);
    ASSERT_TRUE(window.cmdGetZero->isEnabled());
    window.cmdGetZero->click();
    frmZero* dialog = nullptr;
    for (QWidget* top : QApplication::topLevelWidgets()) {
        if (auto* zero = qobject_cast<frmZero*>(top); zero && zero->isVisible())
            dialog = zero;
    }
    ASSERT_NE(dialog, nullptr);
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(dialog->txtDuration->text(), "5");
    dialog->cmdAcquire->click();
    clock.advance(6000);
    const QString codes = dialog->lblZeroAveTxt[1]->text();
    ASSERT_FALSE(codes.isEmpty());
    dialog->cmdOK->click();
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(window.frmZero->txtZeroCurr[1]->text(), codes);
    EXPECT_EQ(window.selectedDevice()->ZeroValue(1, Which::Current), codes.toInt());
    EXPECT_TRUE(prompt.messages.isEmpty());
}

} // namespace
} // namespace kx
