#include "scale/WeightAverager.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace kx {
namespace {

// The moving window as a plain array that shifts by one place per sample, step by step as the
// scale's averaging rule reads. The ring buffer must match it exactly.
class ShiftingWindow {
public:
    ShiftingWindow(int length, float resetDifference)
        : window(static_cast<std::size_t>(length), 0.0f)
        , D(resetDifference) {}

    void add(float x) {
        const int N = static_cast<int>(window.size());
        if (n >= N) {
            S -= window[N - 1];
            Q -= static_cast<double>(window[N - 1]) * window[N - 1];
        }
        std::copy_backward(window.begin(), window.end() - 1, window.end());
        window[0] = x;
        S += x;
        Q += static_cast<double>(x) * x;
        if (n < N)
            ++n;
        if (std::abs(x - S / static_cast<float>(n)) > D) {
            n = 1;
            S = x;
            Q = static_cast<double>(x) * x;
        }
    }

    std::vector<float> window;
    int n = 0;
    double S = 0.0;
    double Q = 0.0;
    float D;
};

// Fz of a plate under changing loads: levels held for a random time of up to a few windows,
// with noise, the odd spike, and steps of exactly the reset difference.
class LoadSequence {
public:
    LoadSequence(unsigned seed, int windowLength)
        : random(seed)
        , longestHold(4 * windowLength + 50)
        , spikeOdds(8 * windowLength + 100) {}

    float next() {
        if (remaining-- <= 0) {
            remaining = std::uniform_int_distribution<int>(1, longestHold)(random);
            switch (std::uniform_int_distribution<int>(0, 4)(random)) {
            case 0:
                level = 0.0f;
                break;
            case 1:
                level -= 5.0f; // exactly the reset difference
                break;
            default:
                level = -std::uniform_real_distribution<float>(0.5f, 1500.0f)(random);
            }
        }
        float x = level + std::normal_distribution<float>(0.0f, 0.4f)(random);
        if (std::uniform_int_distribution<int>(1, spikeOdds)(random) == 1)
            x += std::uniform_real_distribution<float>(-30.0f, 30.0f)(random);
        return x;
    }

    std::mt19937 random;
    int longestHold;
    int spikeOdds;
    float level = 0.0f;
    int remaining = 0;
};

void expectSameWindow(const WeightAverager& ring, const ShiftingWindow& shifting) {
    for (int age = 0; age < ring.length(); ++age)
        ASSERT_EQ(ring.at(age), shifting.window[static_cast<std::size_t>(age)]) << age;
}

class AveragerMatchesShiftingWindow : public testing::TestWithParam<int> {};

TEST_P(AveragerMatchesShiftingWindow, OverLongRandomSequences) {
    const int length = GetParam();
    for (const unsigned seed : {1u, 2u, 3u}) {
        WeightAverager ring(length, 5.0f);
        ShiftingWindow shifting(length, 5.0f);
        LoadSequence loads(seed * 7919u + static_cast<unsigned>(length), length);
        std::mt19937 zeros(seed);
        const int samples = std::max(200000, 60 * length);
        int restarts = 0;
        int full = 0;
        for (int i = 0; i < samples; ++i) {
            // Now and then a zero forgets the average but not the window.
            if (std::uniform_int_distribution<int>(0, 49999)(zeros) == 0) {
                ring.reset();
                shifting.n = 0;
            }
            const float x = loads.next();
            const int before = ring.count();
            ring.add(x);
            shifting.add(x);
            restarts += ring.count() < std::min(before + 1, length) ? 1 : 0;
            full += before == length ? 1 : 0;
            ASSERT_EQ(ring.count(), shifting.n) << "sample " << i;
            ASSERT_EQ(ring.sum(), shifting.S) << "sample " << i;
            ASSERT_EQ(ring.sumOfSquares(), shifting.Q) << "sample " << i;
            ASSERT_EQ(ring.weight(), -shifting.S / static_cast<float>(shifting.n));
            if (i % 9973 == 0) {
                ASSERT_NO_FATAL_FAILURE(expectSameWindow(ring, shifting)) << "sample " << i;
            }
        }
        // The sequence must exercise both the restarts and the full window (a window of one
        // never restarts: its mean is its sample).
        EXPECT_GT(restarts, length > 1 ? 20 : -1);
        EXPECT_GT(full, samples / 4);
    }
}

INSTANTIATE_TEST_SUITE_P(WindowLengths, AveragerMatchesShiftingWindow,
                         testing::Values(1, 2, 3, 17, 64, 3840));

} // namespace
} // namespace kx
