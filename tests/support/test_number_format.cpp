#include "PrintQString.h"
#include "support/NumberFormat.h"
#include "support/NumberText.h"

#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>

using kx::formatGeneral;
using kx::formatNumber;

namespace {

struct PatternCase {
    const char* pattern;
    double value;
    const char* expected;
};

class Patterns : public testing::TestWithParam<PatternCase> {};

TEST_P(Patterns, FormatDoubles) {
    const PatternCase& c = GetParam();
    EXPECT_EQ(formatNumber(c.value, QString::fromUtf8(c.pattern)), QString::fromUtf8(c.expected))
        << c.pattern << " " << c.value;
}

INSTANTIATE_TEST_SUITE_P(
    DisplayPatterns, Patterns,
    testing::Values(
        // plain fixed patterns
        PatternCase{"0.000", 1.5, "1.500"}, PatternCase{"0.000", -1.5, "-1.500"},
        PatternCase{"0", 0.4, "0"}, PatternCase{"0", 20.0, "20"}, PatternCase{"0.0", 12.34, "12.3"},
        PatternCase{"0.00", 3.14159, "3.14"}, PatternCase{"0.0000", 1.23456, "1.2346"},
        PatternCase{"0.000000", 0.0012345678, "0.001235"}, PatternCase{"000.000", 5.5, "005.500"},
        PatternCase{"000.000", -5.5, "-005.500"}, PatternCase{"000.000", 1234.5, "1234.500"},
        PatternCase{"00000.000", 12.3456, "00012.346"},
        PatternCase{"000000.000", 0.0, "000000.000"},
        PatternCase{"0000000.000", 98765.4321, "0098765.432"},
        // halves go away from zero, judged on the decimal value
        PatternCase{"0.00", 0.125, "0.13"}, PatternCase{"0.00", -0.125, "-0.13"},
        PatternCase{"0", 2.5, "3"}, PatternCase{"0", -2.5, "-3"}, PatternCase{"0", 0.5, "1"},
        PatternCase{"0.00", 1.005, "1.01"}, PatternCase{"0.000", 1.2345, "1.235"},
        PatternCase{"0.00", 2.675, "2.68"}, PatternCase{"0.000000", 0.0000005, "0.000001"},
        PatternCase{"0.0", 0.05, "0.1"}, PatternCase{"0.0", 0.0499999, "0.0"},
        PatternCase{"0", 999.5, "1000"}, PatternCase{"0.00", 9.995, "10.00"},
        // negative zero is never shown
        PatternCase{"0.000", -0.0001, "0.000"}, PatternCase{"0.000", -0.0, "0.000"},
        PatternCase{"0", -0.49, "0"}, PatternCase{"0.000", -0.0005, "-0.001"},
        // sign sections
        PatternCase{"+0.000000;-0.000000", 0.001234, "+0.001234"},
        PatternCase{"+0.000000;-0.000000", -0.001234, "-0.001234"},
        PatternCase{"+0.000000;-0.000000", 0.0, "+0.000000"},
        PatternCase{"+0.000000;-0.000000", -0.0000001, "+0.000000"},
        PatternCase{"+0.000000;-0.000000", -0.0000005, "-0.000001"},
        PatternCase{"0.0;(0.00)", -1.234, "(1.23)"},
        // literal text around the digits
        PatternCase{"0.00 s", 12.345, "12.35 s"}, PatternCase{"0.00 Hz", 59.999, "60.00 Hz"},
        PatternCase{"0.00 °C", 23.456, "23.46 °C"}, PatternCase{"0.00 °C", -5.0, "-5.00 °C"},
        PatternCase{"0.000 V", 5.0, "5.000 V"}, PatternCase{"0h ", 12.0, "12h "},
        PatternCase{"0m ", 5.0, "5m "}, PatternCase{"0s ", 3.0, "3s "},
        PatternCase{" 0 s ", 3542.0, " 3542 s "}, PatternCase{" 0 s ", -3.0, " -3 s "},
        PatternCase{".00", 0.5, ".50"}, PatternCase{"0.", 5.0, "5."},
        // big values keep every integer digit, with 15 significant ones
        PatternCase{"0.000", 1e20, "100000000000000000000.000"},
        PatternCase{"0", 4294967295.0, "4294967295"},
        PatternCase{"0.000", 123456789012345678.0, "123456789012346000.000"},
        PatternCase{"0.00", 1234567890123.456, "1234567890123.46"},
        PatternCase{"0", 999999999999999.4, "999999999999999"},
        PatternCase{"0", 999999999999999.6, "1000000000000000"},
        PatternCase{"0.000000", 1e-20, "0.000000"},
        // not numbers
        PatternCase{"0.000", std::numeric_limits<double>::quiet_NaN(), "NaN"},
        PatternCase{"0.000", std::numeric_limits<double>::infinity(), "Inf"},
        PatternCase{"+0.0;-0.0", -std::numeric_limits<double>::infinity(), "-Inf"}));

TEST(NumberFormat, SinglesAreTakenWithSevenSignificantDigits) {
    EXPECT_EQ(formatNumber(0.0025f, u"0.000"), "0.003"); // 0.0024999999441206455 as a double
    EXPECT_EQ(formatNumber(static_cast<double>(0.0025f), u"0.000"), "0.002");
    EXPECT_EQ(formatNumber(500.123f, u"0.000000"), "500.123000");
    EXPECT_EQ(formatNumber(0.1f, u"0.000000000"), "0.100000000");
    EXPECT_EQ(formatNumber(16777216.0f, u"0"), "16777220");
    EXPECT_EQ(formatNumber(99999.99f, u"0.0"), "100000.0");
    EXPECT_EQ(formatNumber(-2.5f, u"0"), "-3");
    EXPECT_EQ(formatNumber(-0.0001f, u"0.000"), "0.000");
}

TEST(NumberFormat, IntegersAreFormattedAsDoubles) {
    EXPECT_EQ(formatNumber(42, u"0.000"), "42.000");
    EXPECT_EQ(formatNumber(-7, u"0"), "-7");
    EXPECT_EQ(formatNumber(quint32(4000000000u), u"0"), "4000000000");
}

TEST(NumberFormat, OnePatternServesManyValues) {
    const kx::NumberFormat meter(u"+0.000000;-0.000000");
    EXPECT_EQ(meter.format(0.5f), "+0.500000");
    EXPECT_EQ(meter.format(-0.5f), "-0.500000");
    EXPECT_EQ(meter.format(0.25), "+0.250000");
}

TEST(NumberFormat, GeneralFormIsTheShortestText) {
    const std::pair<float, const char*> singles[] = {{0.25f, "0.25"},
                                                     {0.5f, "0.5"},
                                                     {5.0f, "5"},
                                                     {1000.0f, "1000"},
                                                     {0.1f + 0.2f, "0.3"},
                                                     {-1.5f, "-1.5"},
                                                     {0.0f, "0"},
                                                     {-0.0f, "0"},
                                                     {0.0001f, "0.0001"},
                                                     {0.00001f, "1E-05"},
                                                     {1e7f, "1E+07"},
                                                     {12345678.0f, "1.234568E+07"},
                                                     {1234567.0f, "1234567"},
                                                     {3.4e38f, "3.4E+38"},
                                                     {1.5e-30f, "1.5E-30"}};
    for (const auto& [value, expected] : singles)
        EXPECT_EQ(formatGeneral(value), expected) << value;

    EXPECT_EQ(formatGeneral(0.1 + 0.2), "0.3");
    EXPECT_EQ(formatGeneral(1.0 / 3.0), "0.333333333333333");
    EXPECT_EQ(formatGeneral(123456789012345.0), "123456789012345");
    EXPECT_EQ(formatGeneral(1e15), "1E+15");
    EXPECT_EQ(formatGeneral(2.5e-300), "2.5E-300");
    EXPECT_EQ(formatGeneral(3600), "3600");
    EXPECT_EQ(formatGeneral(-2147483647 - 1), "-2147483648");
    EXPECT_EQ(formatGeneral(std::nan("")), "NaN");
    EXPECT_EQ(formatNumber(0.75, u""), "0.75");

    // The excitation list of the noise test: 0.25 x (index + 1) in single precision.
    for (int i = 0; i < 20; ++i) {
        const float excitation = 0.25f * static_cast<float>(i + 1);
        EXPECT_EQ(formatGeneral(excitation), QString::number(0.25 * (i + 1)));
    }
}

// Away from ties, and with fewer digits than the type's significant ones, the result must be
// what the C library prints; this covers the digit writing over many magnitudes.
template <typename F>
void compareWithCLibrary(int significantDigits, double tieWindow) {
    std::mt19937_64 random(12345);
    std::uniform_real_distribution<double> exponent(-8.0, 12.0);
    std::uniform_int_distribution<int> decimalsOf(0, 8);
    char ours[kx::kMaxNumberChars];
    char theirs[512];
    int compared = 0;
    for (int i = 0; i < 200000; ++i) {
        const int decimals = decimalsOf(random);
        auto value = static_cast<F>(std::pow(10.0, exponent(random)));
        if (i % 2)
            value = -value;
        const double scaled = std::fabs(static_cast<double>(value)) * std::pow(10.0, decimals);
        const double fraction = scaled - std::floor(scaled);
        if (scaled >= std::pow(10.0, significantDigits - 2) ||
            std::fabs(fraction - 0.5) < scaled * tieWindow + 1e-9)
            continue;
        std::string expected(
            theirs, static_cast<std::size_t>(std::snprintf(theirs, sizeof theirs, "%.*f", decimals,
                                                           static_cast<double>(value))));
        if (expected.find_first_not_of("-0.") == std::string::npos && expected[0] == '-')
            expected.erase(0, 1); // we never show a negative zero
        const std::string actual(ours, kx::appendFixed(ours, value, decimals));
        ASSERT_EQ(actual, expected) << "decimals " << decimals;
        ++compared;
    }
    EXPECT_GT(compared, 50000);
}

TEST(AppendFixed, AgreesWithTheCLibraryAwayFromTies) {
    compareWithCLibrary<double>(15, 1e-13);
    compareWithCLibrary<float>(7, 1e-6);
}

TEST(AppendFixed, PadsTheIntegerPartAndAppendsAtTheGivenPlace) {
    char buffer[2 * kx::kMaxNumberChars];
    char* end = kx::appendFixed(buffer, 1.25, 1, 3);
    *end++ = ',';
    end = kx::appendFixed(end, -0.5f, 2, 0);
    EXPECT_EQ(std::string(buffer, end), "001.3,-.50");
}

TEST(AppendFixed, TheLongestTextFitsTheAdvertisedRoom) {
    char buffer[kx::kMaxNumberChars];
    const char* end = kx::appendFixed(buffer, -std::numeric_limits<double>::max(),
                                      kx::kMaxFixedDecimals + 5, kx::kMaxIntegerDigits + 5);
    EXPECT_EQ(static_cast<std::size_t>(end - buffer), kx::kMaxNumberChars);
    EXPECT_EQ(std::string(buffer, 17), "-1797693134862320");
    EXPECT_EQ(std::string(end - kx::kMaxFixedDecimals - 1, end),
              "." + std::string(kx::kMaxFixedDecimals, '0'));
}

} // namespace
