#include "support/Rounding.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

constexpr qint32 Max = std::numeric_limits<qint32>::max();

TEST(Rounding, HalvesGoToTheEvenNeighbourAndOutOfRangeSaturates) {
    const std::pair<double, qint32> cases[] = {
        {0.5, 0},         {1.5, 2},      {2.5, 2},    {-1.5, -2},        {-2.5, -2},
        {2.5001, 3},      {-2.5001, -3}, {1e10, Max}, {-1e10, -Max - 1}, {2147483646.5, 2147483646},
        {std::nan(""), 0}};
    for (const auto& [value, expected] : cases)
        EXPECT_EQ(kx::roundHalfEven(value), expected) << value;
    EXPECT_EQ(kx::roundHalfEven(0.2f * 1000.0f), 200); // a duration in seconds, stored in ms
}

TEST(Rounding, PeriodsFromRatesInHertz) {
    const std::pair<double, qint32> cases[] = {{5, 200},  {60, 17}, {8, 125}, {400, 2},
                                               {2000, 0}, {3, 333}, {0, Max}};
    for (const auto& [hertz, expected] : cases)
        EXPECT_EQ(kx::periodMsFromHertz(hertz), expected) << hertz;
}

} // namespace
