// The imperfections of real plates, each measured on a simulated plate through its signals.
#include "PlateMeasure.h"
#include "SimBench.h"
#include "sim/LoadCells.h"

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

TEST(SimImperfection, APlacedWeightLandsOffItsPointByTheScatter) {
    const struct {
        double scatter, atLeast, atMost; // m
    } cases[] = {{0.0015, 0.0010, 0.0020}, {0.004, 0.0028, 0.0052}, {0, 0, 1e-4}};
    for (const auto& c : cases) {
        ZeroedPlate p(onePlate(only(&SimImperfections::placementScatter, c.scatter)));
        std::vector<double> xs;
        std::vector<double> ys;
        for (int i = 0; i < 40; ++i) {
            const Means m = p.load(25, 0.1, 0.2, 10);
            xs.push_back(m.copX());
            ys.push_back(m.copY());
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
    ZeroedPlate p(onePlate(only(&SimImperfections::topError, error)));
    const PlateTop top = SimPlate::top();
    for (const double sx : {-1.0, 1.0}) {
        for (const double sy : {-1.0, 1.0}) {
            const double x = top.centreX() + sx * 0.9 * top.halfWidth();
            const double y = top.centreY() + sy * 0.9 * top.halfDepth();
            const Means first = p.load(25, x, y, 40);
            const std::pair<double, double> outwards[] = {{(first.copX() - x) * sx, 0},
                                                          {(first.copY() - y) * sy, 1}};
            for (const auto& [pulled, axis] : outwards) {
                EXPECT_GT(pulled, error / 4) << sx << sy << " axis " << axis;
                EXPECT_LT(pulled, error) << sx << sy << " axis " << axis;
            }
            const Means again = p.load(25, x, y, 40);
            EXPECT_NEAR(again.copX(), first.copX(), 1e-4);
            EXPECT_NEAR(again.copY(), first.copY(), 1e-4);
        }
    }
    const Means middle = p.load(25, top.centreX(), top.centreY(), 40);
    EXPECT_NEAR(middle.copX(), top.centreX(), 1e-4);
    EXPECT_NEAR(middle.copY(), top.centreY(), 1e-4);
    // Light by topError per half metre in the middle.
    const double weight = 25 * p.plate.loads().gravity();
    EXPECT_NEAR(-middle.forces[0] / weight, 1 - error / 0.5, 0.2 * error / 0.5);
}

// Each bridge carries a share of a weight anywhere on the top, whatever the seed's matrix.
TEST(SimImperfection, EveryBridgeSignalIsPositiveForAWeightAnywhereOnTheTop) {
    const PlateTop top = SimPlate::top();
    for (const quint64 seed : {1ull, 7ull, 11093ull, 20418ull, 65535ull}) {
        Scenario scenario = onePlate(SimImperfections{});
        scenario.plates[0].seed = seed;
        ZeroedPlate p(scenario);
        for (int i = 0; i <= 6; ++i) {
            for (int j = 0; j <= 6; ++j) {
                const double x = top.left + (top.right - top.left) * i / 6;
                const double y = top.bottom + (top.top - top.bottom) * j / 6;
                const Means m = p.load(25, x, y, 5);
                for (int c = 0; c < 3; ++c)
                    EXPECT_GT(m.volts[size_t(c)], 0.002)
                        << "seed " << seed << " at " << x << ", " << y << " channel " << c;
            }
        }
    }
}

// ---------------------------------------------------------------------------------------
// The load cells

// Stacks four 25 kg weights one by one in the middle of the top and takes three off again;
// the force read at every step, |Fz| in N.
std::vector<double> stackAndUnstack(ZeroedPlate& p) {
    std::vector<double> steps;
    for (int k = 0; k < 7; ++k) {
        if (k < 4)
            p.plate.loads().placeWeight(25, 0, 0.178, p.plate.now());
        else
            p.plate.loads().removeLast(p.plate.now());
        p.bench.clock.advance(500);
        steps.push_back(-measure(p.bench, p.plate, 100).forces[0]);
    }
    return steps;
}

// A cell bows above its straight line by 4·nonlinearity·u(1 - u) of its full scale (1 kN).
// With a third of the load on each cell, each 25 kg more reads lower by about
// 4·nonlinearity·(25 kg·g / 3 kN) of the force.
TEST(SimImperfection, LoadCellsReadProportionallyLessAsTheLoadGrows) {
    const double nonlinearity = 0.0002;
    ZeroedPlate p(onePlate(only(&SimImperfections::nonlinearity, nonlinearity)));
    const std::vector<double> steps = stackAndUnstack(p);
    const double g = p.plate.loads().gravity();
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
// hysteresis·P at half the peak and 3/4 of that at a quarter and three quarters of it. The
// same with the cells' bow and creep as well, as the defaults have them: the bow is the same
// both ways and a few seconds' creep is far below the gap.
TEST(SimImperfection, UnloadingReadsAboveLoading) {
    const double hysteresis = 0.0002;
    SimImperfections cells = SimImperfections::none();
    const SimImperfections defaults;
    cells.nonlinearity = defaults.nonlinearity;
    cells.hysteresis = hysteresis;
    cells.creep = defaults.creep;
    for (const SimImperfections& imperfections :
         {only(&SimImperfections::hysteresis, hysteresis), cells}) {
        ZeroedPlate p(onePlate(imperfections));
        const std::vector<double> steps = stackAndUnstack(p);
        const double peak = 100 * p.plate.loads().gravity();
        const struct {
            size_t loading, unloading;
            double gap;
        } cases[] = {{2, 4, 0.75 * hysteresis * peak}, // 75 kg
                     {1, 5, hysteresis * peak},        // 50 kg
                     {0, 6, 0.75 * hysteresis * peak}};
        for (const auto& c : cases)
            EXPECT_NEAR(steps[c.unloading] - steps[c.loading], c.gap, 0.2 * c.gap)
                << c.loading << (imperfections.creep > 0 ? " with bow and creep" : "");
    }
}

// A steady load reads more by the creep over half an hour, and nothing at first, however
// long the plate stood idle before.
TEST(SimImperfection, ASteadyLoadCreeps) {
    const double creep = 0.0003;
    ZeroedPlate p(onePlate(only(&SimImperfections::creep, creep)));
    p.bench.clock.advance(30 * 60 * 1000);
    const double early = -p.load(50, 0, 0.178, 50).forces[0];
    p.bench.clock.advance(30 * 60 * 1000);
    const double halfHour = -measure(p.bench, p.plate, 50).forces[0];
    EXPECT_NEAR(halfHour - early, creep * early, 0.15 * creep * early);
    EXPECT_NEAR(early, 50 * p.plate.loads().gravity(), 0.01);
}

// The three load-cell imperfections at once, as a plate has them by default, on a cell in
// compression and on one in tension: each step's reading worked out from the stated shapes,
// a bow of 4·nonlinearity·u(1 - u), a gap of 4·hysteresis·u(P - u)/P below the peak P, and
// the creep reaching creep × the load after creepTime under it. Tension mirrors compression.
TEST(SimImperfection, TheLoadCellImperfectionsAddUpOnEitherSide) {
    const SimImperfections defaults;
    const double nl = defaults.nonlinearity;
    const double h = defaults.hysteresis;
    const double creepTime = defaults.creepTime;
    const auto bow = [&](double u) { return 4 * nl * u * (1 - u); };
    const auto gap = [&](double u, double peak) { return 4 * h * u * (peak - u) / peak; };
    const struct {
        double seconds, load, expected;
    } steps[] = {
        {0, 0.6, 0.6 + bow(0.6)},                                                // on, no creep yet
        {creepTime, 0.6, 0.6 + bow(0.6) + defaults.creep * 0.6},                 // crept
        {creepTime, 0.3, 0.3 + bow(0.3) + gap(0.3, 0.6) + defaults.creep * 0.6}, // part off
        {creepTime, 0.6, 0.6 + bow(0.6) + defaults.creep * 0.6}, // back up to the peak
    };
    for (const double side : {1.0, -1.0}) {
        LoadCells cells(defaults);
        for (const auto& step : steps) {
            const Vector3 read = cells.respond({side * step.load, 0, 0}, step.seconds);
            EXPECT_NEAR(read[0], side * step.expected, 1e-12)
                << "load " << side * step.load << " at " << step.seconds << " s";
            EXPECT_EQ(read[1], 0) << "an unloaded cell creeps by nothing";
        }
    }
}

// ---------------------------------------------------------------------------------------
// Noise

// Averaged periodograms of a channel's codes: Hann-windowed segments of `segment` samples,
// each less its mean.
class Spectrum {
public:
    Spectrum(const std::vector<double>& codes, size_t segment, double hertz)
        : m_segment(segment)
        , m_hertz(hertz) {
        for (size_t start = 0; start + segment <= codes.size(); start += segment) {
            const auto from = codes.begin() + std::ptrdiff_t(start);
            const double mean =
                std::accumulate(from, from + std::ptrdiff_t(segment), 0.0) / double(segment);
            for (size_t n = 0; n < segment; ++n)
                m_windowed.push_back((0.5 - 0.5 * std::cos(2 * Pi * double(n) / double(segment))) *
                                     (codes[start + n] - mean));
        }
    }

    // One-sided power density, codes²/Hz, averaged over the bin centres from `from` to `to`,
    // `step` apart; the window's squares sum to 3N/8.
    double density(double from, double to, double step) const {
        double power = 0;
        int bins = 0;
        for (double f = from; f <= to; f += step, ++bins)
            for (const std::complex<double>& x : transforms(f))
                power += std::norm(x);
        return 2 * power / bins / segments() / (3.0 * double(m_segment) / 8 * m_hertz);
    }

    // Amplitude of a sine at a bin centre, codes; the window sums to N/2.
    double amplitude(double frequency) const {
        double sum = 0;
        for (const std::complex<double>& x : transforms(frequency))
            sum += std::abs(x);
        return 2 * sum / segments() / (double(m_segment) / 2);
    }

private:
    double segments() const { return double(m_windowed.size() / m_segment); }

    std::vector<std::complex<double>> transforms(double frequency) const {
        std::vector<std::complex<double>> x(m_windowed.size() / m_segment);
        const std::complex<double> step = std::polar(1.0, -2 * Pi * frequency / m_hertz);
        for (size_t s = 0; s < x.size(); ++s) {
            std::complex<double> sum = 0;
            std::complex<double> turn = 1;
            for (size_t n = 0; n < m_segment; ++n, turn *= step)
                sum += m_windowed[s * m_segment + n] * turn;
            x[s] = sum;
        }
        return x;
    }

    size_t m_segment;
    double m_hertz;
    std::vector<double> m_windowed;
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
        const double flat = spectrum.density(70, 120, 0.25);
        // The density of 120 codes RMS at 100 Hz spread over 50 Hz, at the channel's level.
        const double share = defaults.channelNoise[size_t(c)] * (0.8 + 0.04 * 5);
        EXPECT_NEAR(flat, 120.0 * 120.0 / 50 * share * share, 0.1 * flat) << c;
        // 1/f below the corner of 2 Hz: density ≈ flat·(1 + 2 Hz / f), averaged over bins.
        const struct {
            double from, to, expected;
        } bands[] = {{0.25, 0.5, 1 + 2 / 0.36}, {1.0, 2.0, 1 + 2 / 1.44}, {20, 40, 1.0}};
        for (const auto& band : bands)
            EXPECT_NEAR(spectrum.density(band.from, band.to, 1.0 / 16) / flat, band.expected,
                        0.35 * band.expected)
                << "channel " << c << " from " << band.from << " Hz";
        // Hum through the converter's sinc³ filter, |sin(πf/fs) / (πf/fs)|³ at 50 Hz.
        const double x = Pi * 50 / 256;
        const double hum =
            defaults.humCodes * defaults.channelNoise[size_t(c)] * std::pow(std::sin(x) / x, 3);
        EXPECT_NEAR(spectrum.amplitude(50), hum, 0.2 * hum) << c;
        EXPECT_LT(spectrum.amplitude(45), 0.3 * hum) << c;
    }
}

constexpr double SurveyHertz[] = {32, 64, 128, 256, 512};

// The noise test's plan on plate 20418: 60 s zeros at each survey frequency after warming up.
std::vector<ZeroStatistics> noiseSurvey(double excitation) {
    SimBench bench;
    SimPlate& plate = bench.plate("20418");
    plate.SetGageVoltage(Which::Current, float(excitation));
    bench.clock.advance(3600 * 1000);
    std::vector<ZeroStatistics> zeros;
    for (const double hertz : SurveyHertz) {
        plate.SetSampleFrequency(Which::Current, float(hertz));
        bench.clock.advance(10000);
        zeros.push_back(takeZero(bench, plate, qint32(60 * hertz)));
    }
    return zeros;
}

// The deviation in codes grows about as the square root of the sampling frequency and a
// little with the excitation, the spare channel stays quiet, and the range of a zero is about
// six deviations: the range of Gaussian samples is 6.6 deviations for 1920 of them, 7.6 for
// 30720, and the slow 1/f wander adds a little.
TEST(SimImperfection, ZeroDeviationGrowsAsTheRootOfTheSamplingFrequency) {
    const std::vector<ZeroStatistics> high = noiseSurvey(5.0);
    const std::vector<ZeroStatistics> low = noiseSurvey(0.25);
    for (int c = 0; c < 3; ++c) {
        const double slope = std::log(high.back().deviation[c] / high.front().deviation[c]) /
                             std::log(SurveyHertz[4] / SurveyHertz[0]);
        EXPECT_GT(slope, 0.35) << c;
        EXPECT_LT(slope, 0.55) << c;
    }
    for (size_t i = 0; i < high.size(); ++i) {
        const ChannelValues& deviation = high[i].deviation;
        EXPECT_LT(deviation[3], 0.5 * std::min({deviation[0], deviation[1], deviation[2]})) << i;
        for (int c = 0; c < 4; ++c) {
            EXPECT_GT(high[i].range[c], 5.0 * deviation[c]) << i << " " << c;
            EXPECT_LT(high[i].range[c], 9.5 * deviation[c]) << i << " " << c;
        }
        for (int c = 0; c < 3; ++c) {
            EXPECT_GT(deviation[c] / low[i].deviation[c], 1.05) << i << " " << c;
            EXPECT_LT(deviation[c] / low[i].deviation[c], 1.5) << i << " " << c;
        }
    }
}

// ---------------------------------------------------------------------------------------
// Warm-up and settling, on a quiet plate so that a few codes show

class QuietPlate : public ::testing::Test {
protected:
    ZeroStatistics zero(qint32 samples = 1000) { return takeZero(bench, plate, samples); }

    SimBench bench{onePlate(SimImperfections{}, 5)};
    SimPlate& plate = bench.plate("1");
};

double largestChange(const ZeroStatistics& from, const ZeroStatistics& to) {
    double largest = 0;
    for (int c = 0; c < 3; ++c)
        largest = std::max(largest, std::abs(to.average[c] - from.average[c]));
    return largest;
}

// The thermal zero moves ≥ 0.6e-5 V/V per °C: over a 4 °C warm-up at 5 V that is at least
// 200 codes on the channel that drifts most.
TEST_F(QuietPlate, TheZeroDriftsDuringTheFirstHourThenSettles) {
    const ZeroStatistics first = zero();
    bench.clock.advance(3600 * 1000);
    const ZeroStatistics hour = zero();
    bench.clock.advance(3600 * 1000);
    const ZeroStatistics twoHours = zero();
    EXPECT_GT(largestChange(first, hour), 200);
    EXPECT_LT(largestChange(hour, twoHours), 0.1 * largestChange(first, hour));
}

// From 1 V to 5 V the gauges warm by selfHeating·(25 - 1) V² = 1.44 °C over minutes.
TEST_F(QuietPlate, TheZeroSettlesForMinutesAfterAnExcitationStep) {
    plate.SetGageVoltage(Which::Current, 1.0f);
    bench.clock.advance(3 * 3600 * 1000);
    plate.SetGageVoltage(Which::Current, 5.0f);
    const ZeroStatistics start = zero(); // the first 10 s
    bench.clock.advance(50000);
    const ZeroStatistics minute = zero();
    bench.clock.advance(240000);
    const ZeroStatistics fiveMinutes = zero();
    bench.clock.advance(1200000);
    const ZeroStatistics settled = zero();
    const double step = largestChange(start, settled);
    EXPECT_GT(step, 60);
    EXPECT_GT(largestChange(minute, settled), 0.2 * step);
    EXPECT_LT(largestChange(minute, settled), 0.8 * step);
    EXPECT_LT(largestChange(fiveMinutes, settled), 0.1 * step);
}

// A new sampling frequency unsettles the zero by hundreds of codes for a few seconds: the
// noise test's 10 s wait is enough.
TEST_F(QuietPlate, TheZeroSettlesForSecondsAfterAFrequencyChange) {
    bench.clock.advance(3 * 3600 * 1000);
    plate.SetSampleFrequency(Which::Current, 200.0f);
    const ZeroStatistics early = zero(100); // the first half second
    bench.clock.advance(9500);
    const ZeroStatistics waited = zero();
    bench.clock.advance(30000);
    const ZeroStatistics settled = zero();
    EXPECT_GT(std::abs(early.average[0] - settled.average[0]), 200);
    for (int c = 0; c < 4; ++c)
        EXPECT_NEAR(waited.average[c], settled.average[c], 10) << c;
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
