#include "PrintQString.h"
#include "TempEnvironment.h"
#include "support/Rounding.h"
#include "support/Settings.h"
#include "support/SettingsKeys.h"

#include <QFile>
#include <gtest/gtest.h>
#include <limits>

using namespace kx;

namespace {

constexpr auto kUser = SettingsRoot::CurrentUser;

TEST(Settings, MissingValuesReadAsTheirTrimmedDefaultsAndAreNotWritten) {
    test::TempEnvironment environment;
    EXPECT_EQ(GetSettingString(kUser, kAcquisitionKey, "Min Autoscale Res", " 0.001  "), "0.001");
    EXPECT_EQ(GetSettingLong(kUser, kAcquisitionKey, "Min Fz (mN)", -2500), -2500);
    EXPECT_FALSE(QFile::exists(environment.settingsFile()));
}

TEST(Settings, TextsAreTrimmedAndBlankTextsReadAsTheDefault) {
    test::TempEnvironment environment;
    const std::pair<QString, QString> cases[] = {{"  /data/runs  ", "/data/runs"},
                                                 {"a b", "a b"},
                                                 {"   ", "fallback"},
                                                 {"", "fallback"},
                                                 {"\tx\t", "\tx\t"}, // only spaces are trimmed
                                                 {"0.025", "0.025"}};
    for (const auto& [stored, expected] : cases) {
        SaveSettingString(kUser, kCalibrationKey, "Display Point Radius (m)", stored);
        EXPECT_EQ(
            GetSettingString(kUser, kCalibrationKey, "Display Point Radius (m)", " fallback "),
            expected)
            << stored.toStdString();
    }
}

TEST(Settings, NumbersKeepTheirSigned32BitRange) {
    test::TempEnvironment environment;
    for (const qint32 value : {0, 1, -1, -2500, std::numeric_limits<qint32>::min(),
                               std::numeric_limits<qint32>::max()}) {
        SaveSettingLong(kUser, kMeterKey, "Excitation (mV)", value);
        EXPECT_EQ(GetSettingLong(kUser, kMeterKey, "Excitation (mV)", 12345), value);
    }
}

TEST(Settings, BothBooleanConventionsReadAsTrue) {
    test::TempEnvironment environment;
    SaveSettingLong(kUser, kScaleAutozeroKey, "Enabled", -1);
    SaveSettingLong(kUser, kAcquisitionKey, "Scrolling", 1);
    EXPECT_NE(GetSettingLong(kUser, kScaleAutozeroKey, "Enabled", 0), 0);
    EXPECT_NE(GetSettingLong(kUser, kAcquisitionKey, "Scrolling", 0), 0);
}

TEST(Settings, NumbersAndTextsAreKeptApart) {
    test::TempEnvironment environment;
    SaveSettingString(kUser, kScaleKey, "Display Decimals", "5");
    EXPECT_EQ(GetSettingLong(kUser, kScaleKey, "Display Decimals", 0), 0);
    SaveSettingLong(kUser, kAcquisitionKey, "Last File Path", 5);
    EXPECT_EQ(GetSettingString(kUser, kAcquisitionKey, "Last File Path", "/docs"), "/docs");

    // Saving with the other type replaces the value.
    SaveSettingLong(kUser, kScaleKey, "Display Decimals", 2);
    EXPECT_EQ(GetSettingLong(kUser, kScaleKey, "Display Decimals", 0), 2);
    EXPECT_EQ(GetSettingString(kUser, kScaleKey, "Display Decimals", "none"), "none");
}

TEST(Settings, KeyPathsAndValueNamesIgnoreCase) {
    test::TempEnvironment environment;
    SaveSettingLong(kUser, kScaleKey, "Frequency (Hz)", 64);
    EXPECT_EQ(GetSettingLong(kUser, QString(kScaleKey).toUpper(), "frequency (hz)", 0), 64);
    SaveSettingLong(kUser, QString(kScaleKey).toLower(), "FREQUENCY (HZ)", 128);
    EXPECT_EQ(GetSettingLong(kUser, kScaleKey, "Frequency (Hz)", 0), 128);
}

TEST(Settings, ValuesOfOtherKeysAndNamesSurviveAWrite) {
    test::TempEnvironment environment;
    SaveSettingLong(kUser, kScaleKey, "Average Samples", 3840);
    SaveSettingLong(kUser, kScaleAutozeroKey, "Interval (ms)", 2000);
    SaveSettingString(kUser, kCalibrationKey, "Last File Path", "/cal");
    SaveSettingLong(kUser, kScaleKey, "Zero Duration (ms)", 5000);
    EXPECT_EQ(GetSettingLong(kUser, kScaleKey, "Average Samples", 0), 3840);
    EXPECT_EQ(GetSettingLong(kUser, kScaleAutozeroKey, "Interval (ms)", 0), 2000);
    EXPECT_EQ(GetSettingString(kUser, kCalibrationKey, "Last File Path", ""), "/cal");
    EXPECT_EQ(GetSettingLong(kUser, kScaleKey, "Zero Duration (ms)", 0), 5000);
}

TEST(Settings, FractionalSettingsAreSavedRoundedHalfToEven) {
    test::TempEnvironment environment;
    const std::pair<float, qint32> tares[] = {{1.5f, 2}, {2.5f, 2}, {80.4f, 80}};
    for (const auto& [tare, expected] : tares) {
        SaveSettingLong(kUser, kScaleAutozeroKey, "Min Tare (N)", roundHalfEven(tare));
        EXPECT_EQ(GetSettingLong(kUser, kScaleAutozeroKey, "Min Tare (N)", 1), expected);
    }
}

TEST(Settings, TextsLongerThanTheReadBufferReadAsTheDefault) {
    test::TempEnvironment environment;
    SaveSettingString(kUser, kAcquisitionKey, "Last File Path", QString(512, u'a'));
    EXPECT_EQ(GetSettingString(kUser, kAcquisitionKey, "Last File Path", "d"), QString(512, u'a'));
    SaveSettingString(kUser, kAcquisitionKey, "Last File Path", QString(513, u'a'));
    EXPECT_EQ(GetSettingString(kUser, kAcquisitionKey, "Last File Path", "d"), "d");
}

TEST(Settings, ATextEndsAtItsFirstNul) {
    test::TempEnvironment environment;
    SaveSettingString(kUser, kAcquisitionKey, "Min Autoscale Res",
                      QString::fromLatin1("0.01\0junk", 9));
    EXPECT_EQ(GetSettingString(kUser, kAcquisitionKey, "Min Autoscale Res", "0.001"), "0.01");
}

} // namespace
