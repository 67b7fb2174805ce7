#include "PrintQString.h"
#include "TempEnvironment.h"
#include "support/Settings.h"
#include "support/SettingsKeys.h"

#include <QFile>
#include <gtest/gtest.h>
#include <limits>

using namespace kx;

namespace {

constexpr auto kUser = SettingsRoot::CurrentUser;

class Settings : public testing::Test {
protected:
    test::TempEnvironment m_environment;
};

TEST_F(Settings, MissingValuesReadAsTheirTrimmedDefaultsAndAreNotWritten) {
    EXPECT_EQ(GetSettingString(kUser, kAcquisitionKey, "Min Autoscale Res", " 0.001  "), "0.001");
    EXPECT_EQ(GetSettingLong(kUser, kAcquisitionKey, "Min Fz (mN)", -2500), -2500);
    EXPECT_FALSE(QFile::exists(m_environment.settingsFile()));
}

// Texts longer than the read buffer (512) read as the default; a text ends at its first NUL.
TEST_F(Settings, TextsAreTrimmedAndUnreadableOrBlankTextsReadAsTheDefault) {
    const std::pair<QString, QString> cases[] = {{"  /data/runs  ", "/data/runs"},
                                                 {"   ", "fallback"},
                                                 {"", "fallback"},
                                                 {"\tx\t", "\tx\t"}, // only spaces are trimmed
                                                 {QString(512, u'a'), QString(512, u'a')},
                                                 {QString(513, u'a'), "fallback"},
                                                 {QString::fromLatin1("0.01\0junk", 9), "0.01"}};
    for (const auto& [stored, expected] : cases) {
        SaveSettingString(kUser, kCalibrationKey, "Display Point Radius (m)", stored);
        EXPECT_EQ(
            GetSettingString(kUser, kCalibrationKey, "Display Point Radius (m)", " fallback "),
            expected)
            << stored.toStdString();
    }
}

// -1 and 1 are both kept: the two boolean conventions.
TEST_F(Settings, NumbersKeepTheirSigned32BitRange) {
    for (const qint32 value :
         {0, 1, -1, std::numeric_limits<qint32>::min(), std::numeric_limits<qint32>::max()}) {
        SaveSettingLong(kUser, kMeterKey, "Excitation (mV)", value);
        EXPECT_EQ(GetSettingLong(kUser, kMeterKey, "Excitation (mV)", 12345), value);
    }
}

TEST_F(Settings, NumbersAndTextsAreKeptApart) {
    SaveSettingString(kUser, kScaleKey, "Display Decimals", "5");
    EXPECT_EQ(GetSettingLong(kUser, kScaleKey, "Display Decimals", 0), 0);
    SaveSettingLong(kUser, kScaleKey, "Display Decimals", 2); // the other type replaces it
    EXPECT_EQ(GetSettingLong(kUser, kScaleKey, "Display Decimals", 0), 2);
    EXPECT_EQ(GetSettingString(kUser, kScaleKey, "Display Decimals", "none"), "none");
}

TEST_F(Settings, KeysIgnoreCaseAndAWriteKeepsEveryOtherValue) {
    SaveSettingLong(kUser, kScaleKey, "Frequency (Hz)", 64);
    SaveSettingLong(kUser, kScaleAutozeroKey, "Interval (ms)", 2000);
    SaveSettingString(kUser, kCalibrationKey, "Last File Path", "/cal");
    SaveSettingLong(kUser, QString(kScaleKey).toLower(), "FREQUENCY (HZ)", 128);
    EXPECT_EQ(GetSettingLong(kUser, QString(kScaleKey).toUpper(), "frequency (hz)", 0), 128);
    EXPECT_EQ(GetSettingLong(kUser, kScaleAutozeroKey, "Interval (ms)", 0), 2000);
    EXPECT_EQ(GetSettingString(kUser, kCalibrationKey, "Last File Path", ""), "/cal");
}

} // namespace
