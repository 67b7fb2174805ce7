#include "PrintQString.h"
#include "maintenance/HexByte.h"
#include "maintenance/ServiceRecordText.h"
#include "maintenance/UsbIdentityPresets.h"

#include <gtest/gtest.h>
#include <optional>

namespace kx {
namespace {

TEST(HexByte, TwoUpperCaseDigitsAndNothingAboveAByte) {
    EXPECT_EQ(formatHexByte(0), "00");
    EXPECT_EQ(formatHexByte(11), "0B");
    for (int value = 0; value <= 255; ++value)
        EXPECT_EQ(parseHexByte(formatHexByte(static_cast<quint8>(value))), value);
    const std::pair<const char*, std::optional<quint8>> texts[] = {
        {"ff", 255},
        {"00000000000000000001", 1},
        // Above a byte, including lengths that would wrap a 32-bit accumulator.
        {"100", std::nullopt},
        {"100000000", std::nullopt},
        {"", std::nullopt},
        {"-1", std::nullopt}};
    for (const auto& [text, expected] : texts)
        EXPECT_EQ(parseHexByte(QString::fromLatin1(text)), expected) << text;
}

TEST(UsbIdentityPresets, FirmwareIsAnUnsignedByte) {
    EXPECT_NE(forcePlatformDefaults(1), forcePlatformDefaults(2));
    EXPECT_EQ(forcePlatformDefaults(0x80), forcePlatformDefaults(2)) << "0x80 is not negative";
}

TEST(ServiceRecordText, TemperatureRoundsAndTimeInServiceSplitsIntoHoursNotDays) {
    EXPECT_EQ(formatTemperature(-5.125f), QString::fromUtf8("-5.13 °C"));
    EXPECT_EQ(formatTimeInService(3599), "0h 59m 59s ");
    EXPECT_EQ(formatTimeInService(3600), "1h 0m 0s ");
    EXPECT_EQ(formatTimeInService(4294967295LL), "1193046h 28m 15s ");
    EXPECT_EQ(formatRecordDate(QDateTime(QDate(2024, 2, 30), QTime(1, 0))), QString());
}

} // namespace
} // namespace kx
