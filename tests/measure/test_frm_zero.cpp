#include "../support/PrintQString.h"
#include "DialogFixture.h"
#include "measure/frmZero.h"
#include "resources/StringTable.h"
#include "support/NumberFormat.h"

#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QStatusBar>
#include <cmath>

namespace kx {
namespace {

// Every zero acquisition a plate finishes: its sample count and last averages and deviations.
struct ZeroRecorder {
    explicit ZeroRecorder(PlateDevice& plate) {
        QObject::connect(&plate, &PlateDevice::ZeroDone, &context,
                         [this](qint32 n, const ChannelValues& a, const ChannelValues& d) {
                             samples << n;
                             average = a;
                             deviation = d;
                         });
    }
    QObject context;
    QList<qint32> samples;
    ChannelValues average, deviation;
};

class ZeroTest : public test::DialogFixture<frmZero> {
protected:
    void open(PlateDevice* device, const QString& duration = QStringLiteral("5")) {
        openDialog(device);
        QObject::connect(dialog.get(), &frmZero::zeroValueWritten,
                         [this](int channel, const QString& codes) {
                             written << QString::number(channel) + u'=' + codes;
                         });
        dialog->txtDuration->setText(duration);
    }

    bool idle() const {
        return dialog->cmdAcquire->isEnabled() && dialog->cmdOK->isEnabled() &&
               dialog->cmdCancel->isEnabled() && dialog->ProgressBar1->isHidden() &&
               !dialog->StatusBar1->isHidden();
    }

    SimPlate& plate = openDefaultPlates();
    QStringList written;
};

TEST_F(ZeroTest, ADurationThatIsNoNumberStartsNothing) {
    for (const char* typed : {"abc", "1,5", "1,500"}) {
        open(&plate, QLatin1String(typed));
        ZeroRecorder zeros(plate);
        dialog->cmdAcquire->click();
        EXPECT_TRUE(idle()) << typed;
        clock.advance(10000);
        EXPECT_TRUE(zeros.samples.isEmpty()) << typed;
    }
}

TEST_F(ZeroTest, WithoutAPlateItSaysSoAndCannotAcquire) {
    open(nullptr);
    EXPECT_EQ(dialog->lblFreqTxt->text(), QStringLiteral("No Platform"));
    EXPECT_FALSE(dialog->cmdAcquire->isEnabled());
}

TEST_F(ZeroTest, TheSignalToNoiseFollowsTheFirmwareAndAnUnplugClosesTheDialog) {
    SimPlate& older = *driver.plate(QStringLiteral("11093"));
    open(&older);
    dialog->cmdAcquire->click();
    clock.advance(100);
    // The plate reports a channel without noise, as a converter stuck at one code would.
    older.StopAcquisition();
    Q_EMIT older.ZeroDone(320, {8388000.0, 8390000.0, 8389000.0, 8388608.0}, {16.0, 0.0, -1.0, 0.5},
                          {});
    EXPECT_EQ(dialog->lblZeroAveTxt[0]->text(), "8388000");
    EXPECT_EQ(dialog->lblZeroAveTxt[4]->text(), "5.000");
    EXPECT_EQ(dialog->lblZeroSDTxt[4]->text(), "114.4") << "against 2^23 on firmware 1";
    EXPECT_EQ(dialog->lblZeroSDTxt[5]->text(), "144.5");
    EXPECT_EQ(dialog->lblZeroSDTxt[6]->text(), "144.5");

    // Unplugged during the next zero: one box, and the dialog closes half a second later.
    dialog->cmdAcquire->click();
    clock.advance(1000);
    driver.unplug("11093");
    clock.advance(499);
    EXPECT_EQ(unloads, 0);
    clock.advance(1);
    EXPECT_EQ(unloads, 1);
    EXPECT_EQ(prompt.messages, QStringList{strings::text(1920)});
}

// OK without an acquisition, Cancel after one and OK after one: half a second at 1000 Hz
// asks for 500 samples, shows every channel, and only OK writes the averages as zero values.
TEST_F(ZeroTest, OnlyOkAfterAnAcquisitionWritesTheAveragesAsZeroValues) {
    plate.SetSampleFrequency(Which::Current, 1000.0f);
    for (const auto& [acquire, ok] :
         {std::pair{false, true}, std::pair{true, false}, std::pair{true, true}}) {
        SCOPED_TRACE(testing::Message() << "acquire " << acquire << ", ok " << ok);
        open(&plate, QStringLiteral("0.5"));
        EXPECT_EQ(dialog->lblFreqTxt->text(), "1000.000");
        written.clear();
        ZeroRecorder zeros(plate);
        const qint32 before = plate.ZeroValue(0, Which::Current);
        if (acquire) {
            QList<int> progress;
            QObject::connect(&plate, &PlateDevice::ZeroProgress, dialog.get(),
                             [&] { progress << dialog->ProgressBar1->value(); });
            dialog->cmdAcquire->click();
            EXPECT_FALSE(dialog->cmdOK->isEnabled());
            EXPECT_TRUE(dialog->StatusBar1->isHidden());
            EXPECT_EQ(dialog->ProgressBar1->maximum(), 500);
            clock.advance(600);
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
            }
        }
        const int unloadedBefore = unloads;
        (ok ? dialog->cmdOK : dialog->cmdCancel)->click();
        EXPECT_EQ(unloads, unloadedBefore + 1);
        if (!acquire || !ok) {
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

} // namespace
} // namespace kx
