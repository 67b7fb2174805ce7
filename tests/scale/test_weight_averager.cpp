#include "scale/WeightAverager.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

// A window of three with a reset difference of 5 N, worked by hand: n grows to N, then the
// oldest value leaves the sums as the ring wraps; a step of exactly 5 N from the new mean is
// kept, one beyond it restarts the average, which then grows again from the one sample.
TEST(WeightAverager, GrowsSlidesAndRestartsOnlyBeyondTheResetDifference) {
    const struct {
        float fz;
        qint32 n;
        double sum;
        double sumOfSquares;
    } steps[] = {
        {-100.0f, 1, -100.0, 10000.0},  {-102.0f, 2, -202.0, 20404.0},
        {-104.0f, 3, -306.0, 31220.0},  {-106.0f, 3, -312.0, 32456.0}, // -100 leaves
        {-108.0f, 3, -318.0, 33716.0},                                 // -102 leaves
        {-114.5f, 3, -328.5, 36010.25}, // mean -109.5: exactly 5 N away
        {-120.0f, 1, -120.0, 14400.0},  // mean -114.17: 5.83 N away, restart
        {-121.0f, 2, -241.0, 29041.0},  // the stale -114.5 and -108 are not taken off
        {-122.0f, 3, -363.0, 43925.0},  {-123.0f, 3, -366.0, 44654.0}, // -120 leaves
    };
    WeightAverager average(3, 5.0f);
    for (const auto& step : steps) {
        SCOPED_TRACE(step.fz);
        average.add(step.fz);
        EXPECT_EQ(average.count(), step.n);
        EXPECT_EQ(average.sum(), step.sum);
        EXPECT_EQ(average.sumOfSquares(), step.sumOfSquares);
        EXPECT_EQ(average.weight(), -step.sum / step.n);
    }
}

} // namespace
} // namespace kx
