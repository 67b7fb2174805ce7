#include "PrintQString.h"
#include "support/DateFormat.h"
#include "support/NumberFormat.h"
#include "support/NumberText.h"
#include "support/Rounding.h"

#include <QLocale>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>
#include <tuple>

using kx::formatGeneral;
using kx::formatNumber;

namespace {

TEST(NumberFormat, DisplayPatterns) {
    constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
    constexpr double Inf = std::numeric_limits<double>::infinity();
    // clang-format off
    const std::tuple<const char*, double, const char*> cases[] = {
        // fixed patterns, padded integer parts
        {"0.000", -1.5, "-1.500"}, {"000.000", -5.5, "-005.500"}, {"000.000", 1234.5, "1234.500"},
        // halves go away from zero, judged on the decimal value
        {"0.00", 0.125, "0.13"}, {"0", -2.5, "-3"}, {"0.00", 1.005, "1.01"},
        {"0.0", 0.0499999, "0.0"}, {"0.00", 9.995, "10.00"},
        // negative zero is never shown
        {"0.000", -0.0001, "0.000"}, {"0.000", -0.0, "0.000"}, {"0.000", -0.0005, "-0.001"},
        // sign sections
        {"+0.000000;-0.000000", 0.001234, "+0.001234"},
        {"+0.000000;-0.000000", -0.0000001, "+0.000000"}, {"0.0;(0.00)", -1.234, "(1.23)"},
        // literal text around the digits
        {"0.00 °C", -5.0, "-5.00 °C"}, {".00", 0.5, ".50"}, {"0.", 5.0, "5."},
        // big values keep every integer digit, with 15 significant ones
        {"0.000", 123456789012345678.0, "123456789012346000.000"},
        {"0.000", NaN, "NaN"}, {"+0.0;-0.0", -Inf, "-Inf"}};
    // clang-format on
    for (const auto& [pattern, value, expected] : cases)
        EXPECT_EQ(formatNumber(value, QString::fromUtf8(pattern)), QString::fromUtf8(expected))
            << pattern << " " << value;
}

TEST(NumberFormat, SinglesRoundOnTheirOwnDigits) {
    EXPECT_EQ(formatNumber(0.0025f, u"0.000"), "0.003"); // 0.0024999999441206455 as a double
    EXPECT_EQ(formatNumber(static_cast<double>(0.0025f), u"0.000"), "0.002");
}

TEST(NumberFormat, GeneralFormIsTheShortestText) {
    // clang-format off
    const std::pair<float, const char*> singles[] = {{0.1f + 0.2f, "0.3"}, {-0.0f, "0"},
        {0.00001f, "1E-05"}, {1234567.0f, "1234567"}, {12345678.0f, "1.234568E+07"}};
    // clang-format on
    for (const auto& [value, expected] : singles)
        EXPECT_EQ(formatGeneral(value), expected) << value;
    EXPECT_EQ(formatGeneral(1.0 / 3.0), "0.333333333333333");
    EXPECT_EQ(formatGeneral(1e15), "1E+15");
}

// Values whose decision sits where the type's significant digits meet the decimals asked for.
TEST(AppendFixed, RoundsOnSignificantDigitsNearTies) {
    const auto text = [](auto value, int decimals) {
        char buffer[kx::kMaxNumberChars];
        return std::string(buffer, kx::appendFixed(buffer, value, decimals));
    };
    // clang-format off
    const std::tuple<float, int, const char*> singles[] = {
        {0.1249995f, 6, "0.125000"}, {0.1249994f, 6, "0.124999"}, {-0.0000004f, 6, "0.000000"},
        {-0.0000005f, 6, "-0.000001"}, {999999.9f, 6, "999999.900000"}, {1234567.5f, 0, "1234568"}};
    const std::tuple<double, int, const char*> doubles[] = {
        {999999999.9999995, 6, "1000000000.000000"}, {999999999.999999, 6, "999999999.999999"},
        {-0.0000005, 6, "-0.000001"}, {-0.00000049999, 6, "0.000000"}, {0.1234565, 6, "0.123457"}};
    // clang-format on
    for (const auto& [value, decimals, expected] : singles)
        EXPECT_EQ(text(value, decimals), expected) << value;
    for (const auto& [value, decimals, expected] : doubles)
        EXPECT_EQ(text(value, decimals), expected) << value;
}

// The value's exact decimal expansion rounded by hand, half away from zero: first to the
// type's significant digits, then to the decimals asked for.
std::string referenceFixed(double value, int significantDigits, int decimals) {
    char exact[160];
    std::snprintf(exact, sizeof exact, "%.100f", std::fabs(value));
    std::string digits(exact);
    const std::size_t point = digits.find('.');
    digits.erase(point, 1);
    // Rounds up at `keep` when the digit there is 5 or more, and zeroes what follows.
    const auto roundAt = [&](std::size_t keep) {
        const bool up = keep < digits.size() && digits[keep] >= '5';
        for (std::size_t i = keep; i < digits.size(); ++i)
            digits[i] = '0';
        for (std::size_t i = keep; up && i-- > 0;) {
            if (digits[i] != '9') {
                ++digits[i];
                return;
            }
            digits[i] = '0';
        }
        if (up) // carried out of the first digit
            digits.insert(digits.begin(), '1');
        return;
    };
    std::size_t integerDigits = point;
    const std::size_t first = digits.find_first_not_of('0');
    if (first != std::string::npos) {
        const std::size_t before = digits.size();
        roundAt(first + static_cast<std::size_t>(significantDigits));
        integerDigits += digits.size() - before;
    }
    const std::size_t before = digits.size();
    roundAt(integerDigits + static_cast<std::size_t>(decimals));
    integerDigits += digits.size() - before;
    std::string integer = digits.substr(0, integerDigits);
    integer.erase(0, std::min(integer.find_first_not_of('0'), integer.size() - 1));
    std::string text = integer;
    if (decimals > 0)
        text += "." + digits.substr(integerDigits, static_cast<std::size_t>(decimals));
    if (std::signbit(value) && text.find_first_not_of("0.") != std::string::npos)
        text.insert(0, "-");
    return text;
}

// Random values over the magnitudes a capture holds, and values with short binary fractions,
// whose decimal expansions end early and so sit on ties of both roundings.
template <typename F>
void matchesTheExactExpansion(int significantDigits, int count) {
    using Bits = std::conditional_t<sizeof(F) == 4, std::uint32_t, std::uint64_t>;
    std::mt19937_64 random(99);
    std::uniform_int_distribution<Bits> bits(std::bit_cast<Bits>(F(5e-10)),
                                             std::bit_cast<Bits>(F(2e9)));
    std::uniform_int_distribution<std::int64_t> mantissa(1, std::int64_t{1}
                                                                << std::numeric_limits<F>::digits);
    std::uniform_int_distribution<int> binaryPlaces(0, 30);
    std::uniform_int_distribution<int> decimalsOf(0, 9);
    char buffer[kx::kMaxNumberChars];
    for (int i = 0; i < count; ++i) {
        F value = i % 2 ? std::bit_cast<F>(bits(random))
                        : std::ldexp(static_cast<F>(mantissa(random)), -binaryPlaces(random));
        if (i % 3 == 0)
            value = -value;
        const int decimals = i % 4 ? 6 : decimalsOf(random);
        const std::string actual(buffer, kx::appendFixed(buffer, value, decimals));
        ASSERT_EQ(actual, referenceFixed(value, significantDigits, decimals))
            << std::hexfloat << value << " with " << decimals << " decimals";
    }
}

TEST(AppendFixed, MatchesTheExactExpansionRoundedTwice) {
    matchesTheExactExpansion<float>(7, 400000);
    matchesTheExactExpansion<double>(15, 200000);
}

TEST(AppendFixed, ZeroWithoutIntegerDigitsOrDecimalsIsNoText) {
    char buffer[kx::kMaxNumberChars];
    EXPECT_EQ(std::string(buffer, kx::appendFixed(buffer, 0.4, 0, 0)), "");
    EXPECT_EQ(std::string(buffer, kx::appendFixed(buffer, -0.4f, 0, 0)), "");
    EXPECT_EQ(std::string(buffer, kx::appendFixed(buffer, 0.5f, 0, 0)), "1");
    EXPECT_EQ(formatNumber(0.0, u"x"), "x");
}

TEST(AppendFixed, TheLongestTextFitsTheAdvertisedRoom) {
    char buffer[kx::kMaxNumberChars];
    const char* end = kx::appendFixed(buffer, -std::numeric_limits<double>::max(),
                                      kx::kMaxFixedDecimals + 5, kx::kMaxIntegerDigits + 5);
    EXPECT_EQ(static_cast<std::size_t>(end - buffer), kx::kMaxNumberChars);
    EXPECT_EQ(std::string(buffer, 17), "-1797693134862320");
}

TEST(Rounding, HalvesGoToTheEvenNeighbourAndOutOfRangeSaturates) {
    constexpr qint32 Max = std::numeric_limits<qint32>::max();
    const std::pair<double, qint32> cases[] = {{0.5, 0},          {1.5, 2},         {2.5, 2},
                                               {-2.5, -2},        {2.5001, 3},      {1e10, Max},
                                               {-1e10, -Max - 1}, {std::nan(""), 0}};
    for (const auto& [value, expected] : cases)
        EXPECT_EQ(kx::roundHalfEven(value), expected) << value;
    EXPECT_EQ(kx::roundHalfEven(0.2f * 1000.0f), 200); // a duration in seconds, stored in ms
    const std::pair<double, qint32> periods[] = {{60, 17}, {3, 333}, {2000, 0}, {0, Max}};
    for (const auto& [hertz, expected] : periods)
        EXPECT_EQ(kx::periodMsFromHertz(hertz), expected) << hertz;
}

struct LocaleGuard {
    explicit LocaleGuard(const QLocale& locale) { QLocale::setDefault(locale); }
    ~LocaleGuard() { QLocale::setDefault(saved); }
    QLocale saved;
};

TEST(DateFormat, FollowsTheUserLocaleAndReadsBackWithTheCentury) {
    LocaleGuard locale(QLocale(QLocale::German, QLocale::Germany));
    EXPECT_EQ(kx::formatShortDate(QDate(2024, 1, 31)), "31.01.2024");
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    EXPECT_EQ(kx::formatLongDate(QDate(2024, 1, 31)), "Wednesday, January 31, 2024");
    EXPECT_EQ(kx::formatLongTime(QTime(15, 4, 5)), "3:04:05 PM");
    for (const QDate date : {QDate(1999, 12, 31), QDate(2031, 7, 4)})
        EXPECT_EQ(kx::parseShortDate(kx::formatShortDate(date)), date);
    const std::pair<const char*, QDate> read[] = {
        {" 3/9/2025 ", QDate(2025, 3, 9)},
        {"2026-11-23", QDate(2026, 11, 23)},
        {"11/23/26", QDate(2026, 11, 23)},
        {"1/1/29", QDate(2029, 1, 1)},
        {"12/31/30", QDate(1930, 12, 31)},
        {"2/29/24", QDate(2024, 2, 29)},
        {"not a date", QDate()},
        {"2026-13-01", QDate()},
        {"2/30/2024", QDate()},
    };
    for (const auto& [text, expected] : read)
        EXPECT_EQ(kx::parseShortDate(QString::fromLatin1(text)), expected) << text;
}

} // namespace
