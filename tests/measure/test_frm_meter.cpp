#include "../support/PrintQString.h"
#include "DialogBench.h"
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

class MeterTest : public test::ToolFixture<frmMeter> {
protected:
    bool displaying() const { return dialog->cmdDisplay->text() == strings::text(2020); }
};

TEST_F(MeterTest, OpensOnMediumWithThePlateSetUpFromTheSettingsAndPutsItBackOnClose) {
    SaveSettingLong(SettingsRoot::CurrentUser, QLatin1String(kMeterKey),
                    QStringLiteral("Excitation (mV)"), 2500);
    plate.SetZeroValue(2, Which::Current, 1234);
    const float gage = plate.GageVoltage(Which::Current);
    open(&plate);
    EXPECT_EQ(dialog->lblSerialNumber->text(), "20418");
    EXPECT_EQ(dialog->lblExcV->text(), "2.500 V");
    EXPECT_EQ(dialog->mchSpeed->captions(), (QStringList{"Fast", "Medium", "Slow"}));
    EXPECT_EQ(dialog->mchSpeed->Value(), meterspeed::Medium);
    EXPECT_EQ(plate.GageVoltage(Which::Current), 2.5f);
    EXPECT_EQ(plate.SampleFrequency(Which::Current), 60.0f);
    EXPECT_EQ(plate.ZeroValue(2, Which::Current), 0);

    dialog->cmdDisplay->click();
    advance(1000);
    dialog->cmdOK->click();
    EXPECT_EQ(unloaded, 1);
    EXPECT_EQ(plate.GageVoltage(Which::Current), gage);
    EXPECT_EQ(plate.SampleFrequency(Which::Current), 100.0f);
    EXPECT_EQ(plate.ZeroValue(2, Which::Current), 1234);
    EXPECT_EQ(meterSetting("Refresh Rate (Hz)"), 5);
    EXPECT_EQ(meterSetting("Sampling Freq (Hz)"), 60);
    test::ForcesRecorder after(plate, bench.clock);
    advance(1000);
    EXPECT_TRUE(after.samples.empty()) << "nothing streams once the meter is gone";
}

// The read-out changes only when more than the period has passed since its last change, and
// shows the mean of the voltages since then.
TEST_F(MeterTest, SlowAndFastRefreshAtMostEvery400And100Ms) {
    for (const auto& [speed, periodMs] :
         {std::pair{meterspeed::Slow, 400.0}, std::pair{meterspeed::Fast, 100.0}}) {
        open(&plate);
        QTest::mouseClick(
            dialog->mchSpeed->findChild<QRadioButton*>(QStringLiteral("optChoice%1").arg(speed)),
            Qt::LeftButton);
        ASSERT_EQ(dialog->mchSpeed->Value(), speed);
        test::ForcesRecorder samples(plate, bench.clock);
        QStringList texts;
        QObject::connect(&plate, &PlateDevice::ForcesIn, dialog.get(),
                         [&] { texts << dialog->lblData->text(); });
        dialog->cmdDisplay->click();
        advance(4000);
        ASSERT_EQ(texts.size(), static_cast<qsizetype>(samples.samples.size()));
        ASSERT_GT(texts.size(), 200);

        std::size_t lastChange = 0;
        int changes = 0;
        for (std::size_t i = 1; i < samples.samples.size(); ++i) {
            const quint32 since = samples.samples[i].tick - samples.samples[lastChange].tick;
            const bool changed = texts[qsizetype(i)] != texts[qsizetype(i - 1)];
            EXPECT_EQ(changed, since > periodMs) << "sample " << i << ", " << since << " ms";
            if (!changed)
                continue;
            std::array<double, 3> sums{};
            for (std::size_t k = lastChange + 1; k <= i; ++k)
                for (std::size_t c = 0; c < 3; ++c)
                    sums[c] += samples.samples[k].volts[c];
            const double count = static_cast<double>(i - lastChange);
            EXPECT_EQ(texts[qsizetype(i)], meterLine(1, sums[0] / count) + u'\n' +
                                               meterLine(2, sums[1] / count) + u'\n' +
                                               meterLine(3, sums[2] / count));
            lastChange = i;
            ++changes;
        }
        EXPECT_GE(changes, static_cast<int>(3900 / (periodMs + 17)));
        dialog->close();
    }
}

TEST_F(MeterTest, APlateWithoutSerialNumberShowsNotPresent) {
    plate.SetSerialNumber(QString());
    bench.driver.Refresh();
    bench.clock.settle();
    open(&plate);
    EXPECT_EQ(dialog->lblSerialNumber->text(), "Not Present");
}

TEST_F(MeterTest, ClippingAndOverrunMarkTheLabelWithoutAMessageATimeOutEndsTheDisplay) {
    open(&plate);
    dialog->cmdDisplay->click();
    advance(500);
    bench.driver.inject("20418", PlateFault::DataClipped);
    EXPECT_EQ(dialog->lblError->text(), "Clipping!");
    EXPECT_TRUE(dialog->lblError->isVisible());
    bench.driver.inject("20418", PlateFault::BufferOverRun);
    EXPECT_EQ(dialog->lblError->text(), "Overrun!");
    EXPECT_TRUE(prompt.messages.isEmpty());
    bench.driver.inject("20418", PlateFault::WriteTimeout);
    EXPECT_EQ(prompt.messages, QStringList{strings::text(2940)});
    EXPECT_FALSE(displaying());
}

TEST_F(MeterTest, UnpluggedWhileStreamingItClosesHalfASecondAfterOneMessage) {
    open(&plate);
    dialog->cmdDisplay->click();
    advance(500);
    bench.driver.unplug("20418");
    advance(499);
    EXPECT_EQ(unloaded, 0);
    advance(1);
    EXPECT_EQ(unloaded, 1);
    EXPECT_EQ(prompt.messages, QStringList{strings::text(2920)});
}

} // namespace
} // namespace kx
