#include "support/Rounding.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

TEST(Rounding, HalvesGoToTheEvenNeighbour) {
    const std::pair<double, qint32> cases[] = {{0.5, 0},
                                               {1.5, 2},
                                               {2.5, 2},
                                               {3.5, 4},
                                               {-0.5, 0},
                                               {-1.5, -2},
                                               {-2.5, -2},
                                               {2.4999, 2},
                                               {2.5001, 3},
                                               {-2.5001, -3},
                                               {1e10, std::numeric_limits<qint32>::max()},
                                               {-1e10, std::numeric_limits<qint32>::min()},
                                               {2147483646.5, 2147483646},
                                               {std::nan(""), 0}};
    for (const auto& [value, expected] : cases)
        EXPECT_EQ(kx::roundHalfEven(value), expected) << value;
}

TEST(Rounding, TaresSavedAsWholeNewtons) {
    EXPECT_EQ(kx::roundHalfEven(1.5f), 2);
    EXPECT_EQ(kx::roundHalfEven(2.5f), 2);
    EXPECT_EQ(kx::roundHalfEven(0.2f * 1000.0f), 200); // a duration in seconds, stored in ms
}

TEST(Rounding, PeriodsFromRatesInHertz) {
    const std::pair<double, qint32> cases[] = {
        {5, 200},  {60, 17}, {8, 125},
        {400, 2},  {64, 16}, {1000, 1},
        {2000, 0}, {3, 333}, {0, std::numeric_limits<qint32>::max()}};
    for (const auto& [hertz, expected] : cases)
        EXPECT_EQ(kx::periodMsFromHertz(hertz), expected) << hertz;
}

} // namespace
