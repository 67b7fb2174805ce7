// The imperfections of real plates, each measured on a simulated plate through its signals.
#include "PlateMeasure.h"
#include "SimBench.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <gtest/gtest.h>
#include <numbers>
#include <numeric>
#include <vector>

namespace kx::test {
namespace {

constexpr double Pi = std::numbers::pi;

// Only the named imperfection, on an otherwise ideal plate.
SimImperfections only(double SimImperfections::*field, double value) {
    SimImperfections imperfections = SimImperfections::none();
    imperfections.*field = value;
    return imperfections;
}

double standardDeviation(const std::vector<double>& values) {
    const double mean = std::accumulate(values.begin(), values.end(), 0.0) / double(values.size());
    double sum = 0;
    for (double v : values)
        sum += (v - mean) * (v - mean);
    return std::sqrt(sum / double(values.size() - 1));
}

// ---------------------------------------------------------------------------------------
// Where a weight lands and how the top bends it

struct ScatterCase {
    double scatter; // m
    double atLeast;
    double atMost;
};

TEST(SimImperfection, APlacedWeightLandsOffItsPointByTheScatter) {
    const ScatterCase cases[] = {{0.0015, 0.0010, 0.0020}, {0.004, 0.0028, 0.0052}, {0, 0, 1e-4}};
    for (const ScatterCase& c : cases) {
        SimBench bench(onePlate(only(&SimImperfections::placementScatter, c.scatter)));
        SimPlate& plate = bench.plate("1");
        storeTrueMatrix(plate);
        zeroPlate(bench, plate);
        std::vector<double> xs;
        std::vector<double> ys;
        for (int i = 0; i < 40; ++i) {
            plate.loads().placeWeight(25, 0.1, 0.2, plate.now());
            bench.clock.advance(300);
            const Means m = measure(bench, plate, 10);
            xs.push_back(m.copX());
            ys.push_back(m.copY());
            plate.loads().removeAll(plate.now());
            bench.clock.advance(300);
        }
        for (const auto* values : {&xs, &ys}) {
            EXPECT_GE(standardDeviation(*values), c.atLeast) << c.scatter;
            EXPECT_LE(standardDeviation(*values), c.atMost) << c.scatter;
        }
    }
}

// The corners of the top pull the centre of pressure outwards and the middle reads light,
// the same every time: a calibration's error table shows a pattern.
TEST(SimImperfection, TheTopBendsReadingsInAFixedPattern) {
    const double error = 0.0006;
    SimBench bench(onePlate(only(&SimImperfections::topError, error)));
    SimPlate& plate = bench.plate("1");
    storeTrueMatrix(plate);
    zeroPlate(bench, plate);
    const PlateTop top = SimPlate::top();
    const double weight = 25 * plate.loads().gravity();
    const auto at = [&](double x, double y) {
        plate.loads().removeAll(plate.now());
        bench.clock.advance(300);
        plate.loads().placeWeight(25, x, y, plate.now());
        bench.clock.advance(300);
        return measure(bench, plate, 40);
    };
    const double inX = 0.9 * top.halfWidth();
    const double inY = 0.9 * top.halfDepth();
    for (const double sx : {-1.0, 1.0}) {
        for (const double sy : {-1.0, 1.0}) {
            const double x = top.centreX() + sx * inX;
            const double y = top.centreY() + sy * inY;
            const Means first = at(x, y);
            EXPECT_GT((first.copX() - x) * sx, error / 4) << sx << sy;
            EXPECT_LT((first.copX() - x) * sx, error) << sx << sy;
            EXPECT_GT((first.copY() - y) * sy, error / 4) << sx << sy;
            EXPECT_LT((first.copY() - y) * sy, error) << sx << sy;
            const Means again = at(x, y);
            EXPECT_NEAR(again.copX(), first.copX(), 1e-4);
            EXPECT_NEAR(again.copY(), first.copY(), 1e-4);
        }
    }
    const Means middle = at(top.centreX(), top.centreY());
    EXPECT_NEAR(middle.copX(), top.centreX(), 1e-4);
    EXPECT_NEAR(middle.copY(), top.centreY(), 1e-4);
    // Light by topError per half metre in the middle.
    EXPECT_NEAR(-middle.forces[0] / weight, 1 - error / 0.5, 0.2 * error / 0.5);
}

// Each bridge carries a share of a weight anywhere on the top, whatever the seed's matrix.
TEST(SimImperfection, EveryBridgeSignalIsPositiveForAWeightAnywhereOnTheTop) {
    const PlateTop top = SimPlate::top();
    for (const quint64 seed : {1ull, 7ull, 11093ull, 20418ull, 65535ull}) {
        Scenario scenario = onePlate(SimImperfections{});
        scenario.plates[0].seed = seed;
        SimBench bench(scenario);
        SimPlate& plate = bench.plate("1");
        zeroPlate(bench, plate);
        for (int i = 0; i <= 6; ++i) {
            for (int j = 0; j <= 6; ++j) {
                const double x = top.left + (top.right - top.left) * i / 6;
                const double y = top.bottom + (top.top - top.bottom) * j / 6;
                plate.loads().removeAll(plate.now());
                bench.clock.advance(300);
                plate.loads().placeWeight(25, x, y, plate.now());
                bench.clock.advance(300);
                const Means m = measure(bench, plate, 5);
                for (int c = 0; c < 3; ++c)
                    EXPECT_GT(m.volts[size_t(c)], 0.002)
                        << "seed " << seed << " at " << x << ", " << y << " channel " << c;
            }
        }
    }
}

// Out of the box the site's gravity is the calibration's default: 25 kg weigh 244.92 N.
TEST(SimImperfection, TheDefaultSiteHasTheCalibrationsGravity) {
    SimBench bench(idealPlates());
    SimPlate& plate = bench.plate("20418");
    storeTrueMatrix(plate);
    zeroPlate(bench, plate);
    plate.loads().placeWeight(25, 0, 0.178, plate.now());
    bench.clock.advance(300);
    EXPECT_NEAR(-measure(bench, plate, 50).forces[0], 25 * 9.796878, 0.01);
}

// ---------------------------------------------------------------------------------------
// The load cells

// Stacks 25 kg weights one by one in the middle of the top and takes them off again; the
// force read at every step, |Fz| in N, loading then unloading.
std::vector<double> stackAndUnstack(SimBench& bench, SimPlate& plate) {
    storeTrueMatrix(plate);
    zeroPlate(bench, plate);
    std::vector<double> steps;
    for (int k = 0; k < 4; ++k) {
        plate.loads().placeWeight(25, 0, 0.178, plate.now());
        bench.clock.advance(500);
        steps.push_back(-measure(bench, plate, 100).forces[0]);
    }
    for (int k = 0; k < 3; ++k) {
        plate.loads().removeLast(plate.now());
        bench.clock.advance(500);
        steps.push_back(-measure(bench, plate, 100).forces[0]);
    }
    return steps;
}

// A cell bows above its straight line by 4·nonlinearity·u(1 - u) of its full scale (1 kN).
// With a third of the load on each cell, each 25 kg more reads lower by about
// 4·nonlinearity·(25 kg·g / 3 kN) of the force.
TEST(SimImperfection, LoadCellsReadProportionallyLessAsTheLoadGrows) {
    const double nonlinearity = 0.0002;
    SimBench bench(onePlate(only(&SimImperfections::nonlinearity, nonlinearity)));
    SimPlate& plate = bench.plate("1");
    const std::vector<double> steps = stackAndUnstack(bench, plate);
    const double g = plate.loads().gravity();
    const double perStep = 4 * nonlinearity * 25 * g / 3000;
    for (int k = 0; k < 3; ++k) {
        const double drop =
            steps[size_t(k)] / (25 * g * (k + 1)) - steps[size_t(k + 1)] / (25 * g * (k + 2));
        EXPECT_GT(drop, 0.6 * perStep) << k;
        EXPECT_LT(drop, 1.4 * perStep) << k;
    }
    // Without hysteresis the way down reads as the way up.
    EXPECT_NEAR(steps[4], steps[2], 0.01);
}

// Coming down from a peak P a cell reads high by 4·hysteresis·u(P - u)/P: the whole plate by
// hysteresis·P at half the peak and 3/4 of that at a quarter and three quarters of it.
TEST(SimImperfection, UnloadingReadsAboveLoading) {
    const double hysteresis = 0.0002;
    SimBench bench(onePlate(only(&SimImperfections::hysteresis, hysteresis)));
    SimPlate& plate = bench.plate("1");
    const std::vector<double> steps = stackAndUnstack(bench, plate);
    const double peak = 100 * plate.loads().gravity();
    const struct {
        size_t loading, unloading;
        double gap;
    } cases[] = {{2, 4, 0.75 * hysteresis * peak}, // 75 kg
                 {1, 5, hysteresis * peak},        // 50 kg
                 {0, 6, 0.75 * hysteresis * peak}};
    for (const auto& c : cases)
        EXPECT_NEAR(steps[c.unloading] - steps[c.loading], c.gap, 0.2 * c.gap) << c.loading;
}

// A steady load reads more by the creep over half an hour, and nothing at first, however
// long the plate stood idle before.
TEST(SimImperfection, ASteadyLoadCreeps) {
    const double creep = 0.0003;
    SimBench bench(onePlate(only(&SimImperfections::creep, creep)));
    SimPlate& plate = bench.plate("1");
    storeTrueMatrix(plate);
    zeroPlate(bench, plate);
    bench.clock.advance(30 * 60 * 1000);
    plate.loads().placeWeight(50, 0, 0.178, plate.now());
    bench.clock.advance(500);
    const double early = -measure(bench, plate, 50).forces[0];
    bench.clock.advance(30 * 60 * 1000);
    const double halfHour = -measure(bench, plate, 50).forces[0];
    EXPECT_NEAR(halfHour - early, creep * early, 0.15 * creep * early);
    EXPECT_NEAR(early, 50 * plate.loads().gravity(), 0.01);
}

// ---------------------------------------------------------------------------------------
// Noise

// Averaged periodograms of a channel's codes, Hann window, segments of `segment` samples.
class Spectrum {
public:
    Spectrum(const std::vector<double>& codes, size_t segment, double hertz)
        : m_codes(codes)
        , m_segment(segment)
        , m_hertz(hertz)
        , m_window(segment) {
        for (size_t n = 0; n < segment; ++n)
            m_window[n] = 0.5 - 0.5 * std::cos(2 * Pi * double(n) / double(segment));
    }

    // Power density at `frequency` (a bin centre), codes²/Hz, one-sided.
    double density(double frequency) const {
        double power = 0;
        int segments = 0;
        double windowSquares = 0;
        for (size_t start = 0; start + m_segment <= m_codes.size(); start += m_segment) {
            const std::complex<double> x = transform(start, frequency, &windowSquares);
            power += std::norm(x);
            ++segments;
        }
        return 2 * power / segments / (windowSquares / segments * m_hertz);
    }

    // Amplitude of a sine at `frequency`, codes.
    double amplitude(double frequency) const {
        double sum = 0;
        int segments = 0;
        for (size_t start = 0; start + m_segment <= m_codes.size(); start += m_segment) {
            double unused = 0;
            sum += std::abs(transform(start, frequency, &unused));
            ++segments;
        }
        return 2 * sum / segments / (double(m_segment) / 2); // the Hann window's sum is N/2
    }

private:
    std::complex<double> transform(size_t start, double frequency, double* windowSquares) const {
        double mean = 0;
        for (size_t n = 0; n < m_segment; ++n)
            mean += m_codes[start + n];
        mean /= double(m_segment);
        std::complex<double> x = 0;
        std::complex<double> turn = 1;
        const std::complex<double> step = std::polar(1.0, -2 * Pi * frequency / m_hertz);
        for (size_t n = 0; n < m_segment; ++n) {
            const double w = m_window[n];
            *windowSquares += w * w;
            x += w * (m_codes[start + n] - mean) * turn;
            turn *= step;
        }
        return x;
    }

    const std::vector<double>& m_codes;
    size_t m_segment;
    double m_hertz;
    std::vector<double> m_window;
};

// 256 s of plate 20418 at 256 Hz (4096-sample segments of 16 s, bins of 1/16 Hz).
TEST(SimImperfection, NoiseIsFlatAboveACornerOfAFewHertzWithMainsHum) {
    SimBench bench;
    SimPlate& plate = bench.plate("20418");
    plate.SetSampleFrequency(Which::Current, 256.0f);
    ASSERT_FLOAT_EQ(plate.SampleFrequency(Which::Current), 256.0f);
    bench.clock.advance(60000);
    zeroPlate(bench, plate);
    BlockRecorder block(plate);
    const int samples = 65536;
    plate.StartTest(samples, true, true, false, 0, true);
    bench.clock.advance(samples * 1000 / 256 + 10);
    ASSERT_EQ(block.volts.size(), samples);
    const double codesPerVolt = plate.GageVoltage(Which::Current) / SignalChain::CodeVolts;
    const SimImperfections defaults;
    for (int c = 0; c < 3; ++c) {
        std::vector<double> codes;
        for (const Float3& v : block.volts)
            codes.push_back(v[size_t(c)] * codesPerVolt);
        const Spectrum spectrum(codes, 4096, 256);
        // Bins a quarter hertz apart are independent under the Hann window.
        double flat = 0;
        int bins = 0;
        for (double f = 70; f <= 120; f += 0.25, ++bins)
            flat += spectrum.density(f);
        flat /= bins;
        // The density of 120 codes RMS at 100 Hz spread over 50 Hz, at the channel's level.
        const double share = defaults.channelNoise[size_t(c)] * (0.8 + 0.04 * 5);
        EXPECT_NEAR(flat, 120.0 * 120.0 / 50 * share * share, 0.1 * flat) << c;
        // 1/f below the corner of 2 Hz: density ≈ flat·(1 + 2 Hz / f), averaged over bins.
        const struct {
            double from, to, expected;
        } bands[] = {{0.25, 0.5, 1 + 2 / 0.36}, {1.0, 2.0, 1 + 2 / 1.44}, {20, 40, 1.0}};
        for (const auto& band : bands) {
            double sum = 0;
            int n = 0;
            for (double f = band.from; f <= band.to; f += 1.0 / 16, ++n)
                sum += spectrum.density(f);
            EXPECT_NEAR(sum / n / flat, band.expected, 0.35 * band.expected)
                << "channel " << c << " from " << band.from << " Hz";
        }
        // Hum through the converter's sinc³ filter, |sin(πf/fs) / (πf/fs)|³ at 50 Hz.
        const double x = Pi * 50 / 256;
        const double hum =
            defaults.humCodes * defaults.channelNoise[size_t(c)] * std::pow(std::sin(x) / x, 3);
        EXPECT_NEAR(spectrum.amplitude(50), hum, 0.2 * hum) << c;
        EXPECT_LT(spectrum.amplitude(45), 0.3 * hum) << c;
    }
}

struct NoisePoint {
    double hertz;
    ZeroStatistics zero;
};

// The noise test's plan on plate 20418: 60 s zeros at 32 to 512 Hz after warming up.
std::vector<NoisePoint> noiseSurvey(double excitation) {
    SimBench bench;
    SimPlate& plate = bench.plate("20418");
    plate.SetGageVoltage(Which::Current, float(excitation));
    bench.clock.advance(3600 * 1000);
    std::vector<NoisePoint> points;
    for (const double hertz : {32.0, 64.0, 128.0, 256.0, 512.0}) {
        plate.SetSampleFrequency(Which::Current, float(hertz));
        bench.clock.advance(10000);
        points.push_back({hertz, takeZero(bench, plate, qint32(60 * hertz))});
    }
    return points;
}

// The deviation in codes grows about as the square root of the sampling frequency, the
// spare channel stays quiet, and the range of a zero is about six deviations: the range of
// Gaussian samples is 6.6 deviations for 1920 of them, 7.6 for 30720, and the slow 1/f
// wander adds a little.
TEST(SimImperfection, ZeroDeviationGrowsAsTheRootOfTheSamplingFrequency) {
    const std::vector<NoisePoint> survey = noiseSurvey(5.0);
    for (int c = 0; c < 3; ++c) {
        const double slope = std::log(survey.back().zero.deviation[size_t(c)] /
                                      survey.front().zero.deviation[size_t(c)]) /
                             std::log(survey.back().hertz / survey.front().hertz);
        EXPECT_GT(slope, 0.35) << c;
        EXPECT_LT(slope, 0.55) << c;
    }
    for (const NoisePoint& p : survey) {
        const auto& z = p.zero;
        EXPECT_LT(z.deviation[3], 0.5 * std::min({z.deviation[0], z.deviation[1], z.deviation[2]}))
            << p.hertz;
        for (int c = 0; c < 4; ++c) {
            EXPECT_GT(z.range[size_t(c)], 5.0 * z.deviation[size_t(c)]) << p.hertz << " " << c;
            EXPECT_LT(z.range[size_t(c)], 9.5 * z.deviation[size_t(c)]) << p.hertz << " " << c;
        }
    }
}

TEST(SimImperfection, TheExcitationChangesTheNoiseOnlyALittle) {
    const std::vector<NoisePoint> low = noiseSurvey(0.25);
    const std::vector<NoisePoint> high = noiseSurvey(5.0);
    for (size_t i = 0; i < low.size(); ++i) {
        for (int c = 0; c < 3; ++c) {
            const double ratio =
                high[i].zero.deviation[size_t(c)] / low[i].zero.deviation[size_t(c)];
            EXPECT_GT(ratio, 1.05) << low[i].hertz << " " << c;
            EXPECT_LT(ratio, 1.5) << low[i].hertz << " " << c;
        }
    }
}

// ---------------------------------------------------------------------------------------
// Warm-up and settling, on a quiet plate so that a few codes show

std::array<double, 3> zeroAverage(SimBench& bench, SimPlate& plate) {
    const ZeroStatistics z = takeZero(bench, plate, 1000);
    return {z.average[0], z.average[1], z.average[2]};
}

double largestChange(const std::array<double, 3>& from, const std::array<double, 3>& to) {
    double largest = 0;
    for (size_t c = 0; c < 3; ++c)
        largest = std::max(largest, std::abs(to[c] - from[c]));
    return largest;
}

// The thermal zero moves ≥ 0.6e-5 V/V per °C: over a 4 °C warm-up at 5 V that is at least
// 200 codes on the channel that drifts most.
TEST(SimImperfection, TheZeroDriftsDuringTheFirstHourThenSettles) {
    SimBench bench(onePlate(SimImperfections{}, 5));
    SimPlate& plate = bench.plate("1");
    const auto first = zeroAverage(bench, plate);
    bench.clock.advance(3600 * 1000);
    const auto hour = zeroAverage(bench, plate);
    bench.clock.advance(3600 * 1000);
    const auto twoHours = zeroAverage(bench, plate);
    EXPECT_GT(largestChange(first, hour), 200);
    EXPECT_LT(largestChange(hour, twoHours), 0.1 * largestChange(first, hour));
}

// From 1 V to 5 V the gauges warm by selfHeating·(25 - 1) V² = 1.44 °C over minutes.
TEST(SimImperfection, TheZeroSettlesForMinutesAfterAnExcitationStep) {
    SimBench bench(onePlate(SimImperfections{}, 5));
    SimPlate& plate = bench.plate("1");
    plate.SetGageVoltage(Which::Current, 1.0f);
    bench.clock.advance(3 * 3600 * 1000);
    plate.SetGageVoltage(Which::Current, 5.0f);
    const auto start = zeroAverage(bench, plate); // the first 10 s
    bench.clock.advance(50000);
    const auto minute = zeroAverage(bench, plate);
    bench.clock.advance(240000);
    const auto fiveMinutes = zeroAverage(bench, plate);
    bench.clock.advance(1200000);
    const auto settled = zeroAverage(bench, plate);
    const double step = largestChange(start, settled);
    EXPECT_GT(step, 60);
    EXPECT_GT(largestChange(minute, settled), 0.2 * step);
    EXPECT_LT(largestChange(minute, settled), 0.8 * step);
    EXPECT_LT(largestChange(fiveMinutes, settled), 0.1 * step);
}

// A new sampling frequency unsettles the zero by hundreds of codes for a few seconds: the
// noise test's 10 s wait is enough.
TEST(SimImperfection, TheZeroSettlesForSecondsAfterAFrequencyChange) {
    SimBench bench(onePlate(SimImperfections{}, 5));
    SimPlate& plate = bench.plate("1");
    bench.clock.advance(3 * 3600 * 1000);
    plate.SetSampleFrequency(Which::Current, 200.0f);
    const ZeroStatistics early = takeZero(bench, plate, 100); // the first half second
    bench.clock.advance(9500);
    const ZeroStatistics waited = takeZero(bench, plate, 1000);
    bench.clock.advance(30000);
    const ZeroStatistics settled = takeZero(bench, plate, 1000);
    EXPECT_GT(std::abs(early.average[0] - settled.average[0]), 200);
    for (int c = 0; c < 4; ++c)
        EXPECT_NEAR(waited.average[size_t(c)], settled.average[size_t(c)], 10) << c;
}

// ---------------------------------------------------------------------------------------
// The excitation DAC

TEST(SimImperfection, TheExcitationReadsBackAsTheDacSetsIt) {
    // Steps of 5/1024 V: the written value rounded to whole steps.
    const struct {
        float written;
        int steps;
    } cases[] = {{0.25f, 51}, {0.5f, 102}, {0.75f, 154}, {1.3f, 266}, {5.0f, 1024}, {0.01f, 2}};
    SimBench bench;
    SimPlate& plate = bench.plate("20418");
    for (const auto& c : cases) {
        plate.SetGageVoltage(Which::Current, c.written);
        EXPECT_FLOAT_EQ(plate.GageVoltage(Which::Current), float(c.steps * 5.0 / 1024))
            << c.written;
    }
    SimBench ideal(idealPlates());
    ideal.plate("20418").SetGageVoltage(Which::Current, 0.25f);
    EXPECT_EQ(ideal.plate("20418").GageVoltage(Which::Current), 0.25f);
}

} // namespace
} // namespace kx::test
