#include "../support/PrintQString.h"
#include "scale/FormatForce.h"

#include <gtest/gtest.h>
#include <ostream>

namespace kx {
namespace {

constexpr double NewtonsPerPound = 4.4482216152605;
constexpr double NewtonsPerOunce = NewtonsPerPound / 16.0;
constexpr double Gravity = 9.80665;

struct ForceCase {
    double newtons;
    qint16 unit;
    qint16 decimals;
    const char* expected;
};

void PrintTo(const ForceCase& c, std::ostream* out) {
    *out << c.newtons << " N, unit " << c.unit << ", " << c.decimals << " decimals";
}

class FormatForceCases : public testing::TestWithParam<ForceCase> {};

TEST_P(FormatForceCases, Text) {
    const ForceCase& c = GetParam();
    EXPECT_EQ(FormatForce(c.newtons, c.unit, c.decimals), QString::fromUtf8(c.expected));
}

INSTANTIATE_TEST_SUITE_P(
    Units, FormatForceCases,
    testing::Values(
        // an exact zero is the unit's plain text, whatever the decimals
        ForceCase{0.0, 1, 0, "0 lbf 0 ozf"}, ForceCase{0.0, 2, 3, "0 ozf"},
        ForceCase{0.0, 3, 2, "0 N"}, ForceCase{0.0, 4, 4, "0 gf"}, ForceCase{0.0, 5, 3, "0 kgf"},
        ForceCase{-0.0, 5, 3, "0 kgf"},
        // kilograms-force get one decimal more, grams-force two fewer, ounces one fewer
        ForceCase{Gravity, 5, 0, "1.0 kgf"}, ForceCase{Gravity, 5, 2, "1.000 kgf"},
        ForceCase{Gravity, 5, -1, "1 kgf"}, ForceCase{Gravity, 4, 0, "1000 gf"},
        ForceCase{Gravity, 4, 3, "1000.0 gf"}, ForceCase{0.01, 4, 3, "1.0 gf"},
        ForceCase{1.0, 2, 0, "4 ozf"}, ForceCase{1.0, 2, 2, "3.6 ozf"},
        ForceCase{12.3456, 3, 2, "12.35 N"}, ForceCase{12.3456, 3, 0, "12 N"},
        // pounds and ounces
        ForceCase{NewtonsPerPound, 1, 0, "1 lbf 0 ozf"}, ForceCase{10.0, 1, 1, "2 lbf 4.0 ozf"},
        ForceCase{31.7 * NewtonsPerOunce, 1, 0, "1 lbf 16 ozf"},
        ForceCase{31.7 * NewtonsPerOunce, 1, 1, "1 lbf 15.7 ozf"},
        ForceCase{5.0 * NewtonsPerOunce, 1, 0, "0 lbf 5 ozf"},
        // negative values keep their sign in every part
        ForceCase{-24.0 * NewtonsPerOunce, 1, 0, "-1 lbf -8 ozf"},
        ForceCase{-10.0, 1, 1, "-2 lbf -4.0 ozf"}, ForceCase{-10.0 * Gravity, 5, 0, "-10.0 kgf"},
        ForceCase{-12.3456, 3, 2, "-12.35 N"}, ForceCase{-1.0, 2, 0, "-4 ozf"},
        // unknown units
        ForceCase{5.0, 6, 2, ""}, ForceCase{5.0, 0, 2, ""}, ForceCase{0.0, 6, 0, ""}));

INSTANTIATE_TEST_SUITE_P(
    HalvesAwayFromZero, FormatForceCases,
    testing::Values(ForceCase{2.5, 3, 0, "3 N"}, ForceCase{-2.5, 3, 0, "-3 N"},
                    ForceCase{0.5, 3, 0, "1 N"}, ForceCase{1.125, 3, 2, "1.13 N"},
                    ForceCase{-1.125, 3, 2, "-1.13 N"}, ForceCase{0.25 * Gravity, 5, 0, "0.3 kgf"},
                    ForceCase{-0.25 * Gravity, 5, 0, "-0.3 kgf"},
                    ForceCase{0.0125 * Gravity, 4, 2, "13 gf"},
                    ForceCase{0.00125 * Gravity, 4, 2, "1 gf"},
                    // single-precision ounces: 2.5 is a half, not its binary neighbour
                    ForceCase{2.5 * NewtonsPerOunce, 2, 1, "3 ozf"},
                    ForceCase{-2.5 * NewtonsPerOunce, 2, 1, "-3 ozf"},
                    ForceCase{16.5 * NewtonsPerOunce, 1, 0, "1 lbf 1 ozf"},
                    ForceCase{-16.5 * NewtonsPerOunce, 1, 0, "-1 lbf -1 ozf"},
                    ForceCase{17.25 * NewtonsPerOunce, 1, 1, "1 lbf 1.3 ozf"}));

TEST(FormatForce, PoundsSaturateInsteadOfWrapping) {
    const QString text = FormatForce(1e9, 1, 0);
    EXPECT_TRUE(text.startsWith(QStringLiteral("32767 lbf "))) << text.toStdString();
}

} // namespace
} // namespace kx
