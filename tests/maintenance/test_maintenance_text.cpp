#include "PrintQString.h"
#include "maintenance/HexByte.h"
#include "maintenance/ServiceRecordText.h"
#include "maintenance/UsbIdentityPresets.h"

#include <QLocale>
#include <gtest/gtest.h>
#include <optional>

namespace kx {

namespace {

TEST(HexByte, TwoUpperCaseDigits) {
    EXPECT_EQ(formatHexByte(0), "00");
    EXPECT_EQ(formatHexByte(5), "05");
    EXPECT_EQ(formatHexByte(11), "0B");
    EXPECT_EQ(formatHexByte(176), "B0");
    EXPECT_EQ(formatHexByte(255), "FF");
}

TEST(HexByte, ParsesEveryByteItFormats) {
    for (int value = 0; value <= 255; ++value)
        EXPECT_EQ(parseHexByte(formatHexByte(static_cast<quint8>(value))), value);
}

struct ParseCase {
    const char* text;
    std::optional<quint8> expected;
};

class HexByteParse : public testing::TestWithParam<ParseCase> {};

TEST_P(HexByteParse, ValueOrNothing) {
    const ParseCase& c = GetParam();
    EXPECT_EQ(parseHexByte(QString::fromLatin1(c.text)), c.expected) << c.text;
}

INSTANTIATE_TEST_SUITE_P(
    Texts, HexByteParse,
    testing::Values(ParseCase{"FF", 255}, ParseCase{"ff", 255}, ParseCase{"b0", 0xB0},
                    ParseCase{"7", 7}, ParseCase{"0FF", 255}, ParseCase{"00000000000000000001", 1},
                    // Above a byte, including lengths that would wrap a 32-bit accumulator.
                    ParseCase{"100", std::nullopt}, ParseCase{"1FF", std::nullopt},
                    ParseCase{"100000000", std::nullopt},
                    ParseCase{"FFFFFFFFFFFFFFFFFFFF", std::nullopt},
                    // Not hexadecimal digits at all.
                    ParseCase{"", std::nullopt}, ParseCase{"G1", std::nullopt},
                    ParseCase{" 1", std::nullopt}, ParseCase{"-1", std::nullopt},
                    ParseCase{"&H1", std::nullopt}, ParseCase{"0x1", std::nullopt}));

TEST(UsbIdentityPresets, ForcePlatformProductFollowsTheFirmwareGeneration) {
    const UsbIdentity first{0xB0, 0x02, 0x0D, 0x01, 0x03, 0x01, 0x00};
    const UsbIdentity second{0xB0, 0x02, 0x0D, 0x02, 0x03, 0x01, 0x00};
    EXPECT_EQ(forcePlatformDefaults(0), first);
    EXPECT_EQ(forcePlatformDefaults(1), first);
    EXPECT_EQ(forcePlatformDefaults(2), second);
    EXPECT_EQ(forcePlatformDefaults(3), second);
    // An unsigned byte: 0x80 and up are not negative versions.
    EXPECT_EQ(forcePlatformDefaults(0x80), second);
    EXPECT_EQ(forcePlatformDefaults(0xFF), second);
}

TEST(UsbIdentityPresets, SecondPlateTypeIsTheSameOnEveryFirmware) {
    EXPECT_EQ(secondPlateDefaults(), (UsbIdentity{0xB0, 0x02, 0x0D, 0x01, 0x04, 0x01, 0x00}));
}

struct TimeCase {
    qint64 seconds;
    const char* expected;
};

class TimeInService : public testing::TestWithParam<TimeCase> {};

TEST_P(TimeInService, HoursMinutesSecondsEachFollowedByABlank) {
    EXPECT_EQ(formatTimeInService(GetParam().seconds), QString::fromLatin1(GetParam().expected));
}

INSTANTIATE_TEST_SUITE_P(Seconds, TimeInService,
                         testing::Values(TimeCase{0, "0h 0m 0s "}, TimeCase{59, "0h 0m 59s "},
                                         TimeCase{60, "0h 1m 0s "}, TimeCase{3599, "0h 59m 59s "},
                                         TimeCase{3600, "1h 0m 0s "}, TimeCase{43503, "12h 5m 3s "},
                                         // Hours are not folded into days.
                                         TimeCase{100 * 3600 + 1, "100h 0m 1s "},
                                         TimeCase{4294967295LL, "1193046h 28m 15s "}));

TEST(Temperature, TwoDecimalsAndTheUnit) {
    EXPECT_EQ(formatTemperature(23.5f), QString::fromUtf8("23.50 °C"));
    EXPECT_EQ(formatTemperature(0.0f), QString::fromUtf8("0.00 °C"));
    EXPECT_EQ(formatTemperature(-5.125f), QString::fromUtf8("-5.13 °C"));
    EXPECT_EQ(formatTemperature(41.004f), QString::fromUtf8("41.00 °C"));
}

class RecordDate : public testing::Test {
protected:
    void SetUp() override { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }
    void TearDown() override { QLocale::setDefault(m_saved); }

private:
    QLocale m_saved;
};

TEST_F(RecordDate, LongDateDashLongTime) {
    EXPECT_EQ(formatRecordDate(QDateTime(QDate(2024, 1, 31), QTime(15, 4, 5))),
              "Wednesday, January 31, 2024 - 3:04:05 PM");
}

TEST_F(RecordDate, NoDateNoText) {
    EXPECT_EQ(formatRecordDate(QDateTime()), QString());
    EXPECT_EQ(formatRecordDate(QDateTime(QDate(2024, 2, 30), QTime(1, 0))), QString());
}

} // namespace
} // namespace kx
