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
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>
#include <memory>

namespace kx {
namespace {

constexpr auto User = SettingsRoot::CurrentUser;

qint32 meterSetting(const char* name) {
    return GetSettingLong(User, QLatin1String(kMeterKey), QLatin1String(name), 12345);
}

class MeterTest : public ::testing::Test {
protected:
    void open(PlateDevice* device) {
        dialog = std::make_unique<frmMeter>(bench.context);
        QObject::connect(dialog.get(), &ToolDialog::unloaded, [this] { ++unloaded; });
        dialog->setDevice(device);
        dialog->show();
    }

    bool displaying() const { return dialog->cmdDisplay->text() == strings::text(2020); }

    test::DialogBench bench;
    SimPlate& plate = bench.plate("20418");
    std::unique_ptr<frmMeter> dialog;
    int unloaded = 0;
};

TEST_F(MeterTest, OpensOnMediumWithThePlateSetUpFromTheSettingsAndPutsItBackOnClose) {
    SaveSettingLong(User, QLatin1String(kMeterKey), QStringLiteral("Excitation (mV)"), 2500);
    plate.SetZeroValue(2, Which::Current, 1234);
    const float gage = plate.GageVoltage(Which::Current);
    open(&plate);
    EXPECT_EQ(dialog->windowTitle(), "KX Force Platforms Control Panel - Channel Signals Meter");
    EXPECT_EQ(dialog->lblSerialNumber->text(), "20418");
    EXPECT_EQ(dialog->lblFirmware->text(), "2.3");
    EXPECT_EQ(dialog->lblExcV->text(), "2.500 V");
    EXPECT_EQ(dialog->mchSpeed->captions(), (QStringList{"Fast", "Medium", "Slow"}));
    EXPECT_EQ(dialog->mchSpeed->Value(), meterspeed::Medium);
    EXPECT_EQ(plate.GageVoltage(Which::Current), 2.5f);
    EXPECT_EQ(plate.SampleFrequency(Which::Current), 60.0f);
    for (int channel = 0; channel < 4; ++channel)
        EXPECT_EQ(plate.ZeroValue(channel, Which::Current), 0);

    dialog->cmdDisplay->click();
    EXPECT_TRUE(displaying());
    bench.clock.advance(1000);
    dialog->cmdOK->click();
    EXPECT_EQ(unloaded, 1);
    EXPECT_EQ(plate.GageVoltage(Which::Current), gage);
    EXPECT_EQ(plate.SampleFrequency(Which::Current), 100.0f);
    EXPECT_EQ(plate.ZeroValue(2, Which::Current), 1234);
    EXPECT_EQ(meterSetting("Refresh Rate (Hz)"), 5);
    EXPECT_EQ(meterSetting("Excitation (mV)"), 2500);
    EXPECT_EQ(meterSetting("Sampling Freq (Hz)"), 60);

    // Nothing streams once the meter is gone.
    test::ForcesRecorder after(plate, bench.clock);
    bench.clock.advance(1000);
    EXPECT_TRUE(after.samples.empty());
}

TEST_F(MeterTest, AnOlderPlateShowsTheConvertersOwnSignals) {
    SimPlate& older = bench.plate("11093");
    open(&older);
    EXPECT_EQ(dialog->lblFirmware->text(), "1.7");
    EXPECT_EQ(dialog->lblExcV->text(), "-5.000 V");
    for (int channel = 0; channel < 4; ++channel)
        EXPECT_EQ(older.ZeroValue(channel, Which::Current), 8388608) << "mid-scale";
    dialog->cmdDisplay->click();
    bench.clock.advance(1000);
    // An unloaded bridge reads a few millivolts per volt against the converter's own zero.
    const QStringList lines = dialog->lblData->text().split(u'\n');
    ASSERT_EQ(lines.size(), 3);
    for (const QString& line : lines) {
        const QStringList parts = line.split(u' ');
        ASSERT_EQ(parts.size(), 3) << line.toStdString();
        EXPECT_LT(std::abs(parts[1].toDouble()), 0.05) << line.toStdString();
        EXPECT_EQ(parts[2], "VDC");
    }
}

// The read-out changes only when more than the period has passed since its last change, and
// shows the mean of the voltages since then.
void expectReadOutsEvery(test::DialogBench& bench, frmMeter& dialog, SimPlate& plate,
                         double periodMs) {
    test::ForcesRecorder samples(plate, bench.clock);
    QStringList texts;
    QObject::connect(&plate, &PlateDevice::ForcesIn, &dialog,
                     [&] { texts << dialog.lblData->text(); });
    dialog.cmdDisplay->click();
    bench.clock.advance(4000);
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
}

TEST_F(MeterTest, SlowRefreshesAtMostEvery400Ms) {
    open(&plate);
    dialog->mchSpeed->findChild<QRadioButton*>("optChoice2")->click();
    EXPECT_EQ(dialog->mchSpeed->Value(), meterspeed::Slow);
    expectReadOutsEvery(bench, *dialog, plate, 400.0);
}

TEST_F(MeterTest, FastRefreshesAtMostEvery100Ms) {
    open(&plate);
    dialog->mchSpeed->setValue(meterspeed::Fast);
    expectReadOutsEvery(bench, *dialog, plate, 100.0);
}

TEST_F(MeterTest, APlateWithoutSerialNumberShowsNotPresent) {
    plate.SetSerialNumber(QString());
    bench.driver.Refresh();
    bench.clock.settle();
    open(&plate);
    EXPECT_EQ(dialog->lblSerialNumber->text(), "Not Present");
}

TEST_F(MeterTest, ClippingMarksTheLabelWithoutAMessage) {
    open(&plate);
    dialog->cmdDisplay->click();
    bench.clock.advance(500);
    bench.driver.inject("20418", PlateFault::DataClipped);
    EXPECT_TRUE(bench.prompt.messages.isEmpty());
    EXPECT_EQ(dialog->lblError->text(), "Clipping!");
    EXPECT_TRUE(dialog->lblError->isVisible());
    bench.driver.inject("20418", PlateFault::BufferOverRun);
    EXPECT_EQ(dialog->lblError->text(), "Overrun!");
    EXPECT_TRUE(bench.prompt.messages.isEmpty());
}

TEST_F(MeterTest, ATimeOutEndsTheDisplayAfterItsMessage) {
    open(&plate);
    dialog->cmdDisplay->click();
    bench.clock.advance(500);
    bench.driver.inject("20418", PlateFault::WriteTimeout);
    EXPECT_EQ(bench.prompt.messages, QStringList{strings::text(2940)});
    EXPECT_FALSE(displaying());
    dialog->cmdDisplay->click();
    EXPECT_TRUE(displaying());
}

TEST_F(MeterTest, UnpluggedWhileStreamingItClosesHalfASecondAfterOneMessage) {
    open(&plate);
    dialog->cmdDisplay->click();
    bench.clock.advance(500);
    bench.driver.unplug("20418");
    bench.clock.advance(499);
    EXPECT_EQ(unloaded, 0);
    bench.clock.advance(1);
    EXPECT_EQ(unloaded, 1);
    EXPECT_EQ(bench.prompt.messages, QStringList{strings::text(2920)});
}

TEST(MultipleChoice, CaptionsEndInABarAndValueIsTheChosenIndex) {
    MultipleChoice choice;
    choice.setCaptions(QStringLiteral("Fast|Medium|Slow|"));
    EXPECT_EQ(choice.captions(), (QStringList{"Fast", "Medium", "Slow"}));
    EXPECT_EQ(choice.Value(), 0);
    QSignalSpy changes(&choice, &MultipleChoice::valueChanged);
    choice.setValue(2);
    choice.setValue(2);
    choice.setValue(3);
    choice.setValue(-1);
    EXPECT_EQ(choice.Value(), 2);
    EXPECT_EQ(changes.size(), 1);
    choice.show();
    QTest::mouseClick(choice.findChild<QRadioButton*>("optChoice1"), Qt::LeftButton);
    EXPECT_EQ(choice.Value(), 1);
    EXPECT_TRUE(choice.findChild<QRadioButton*>("optChoice1")->isChecked());
    EXPECT_FALSE(choice.findChild<QRadioButton*>("optChoice2")->isChecked());
    EXPECT_EQ(choice.property("Value").toInt(), 1);
}

} // namespace
} // namespace kx
