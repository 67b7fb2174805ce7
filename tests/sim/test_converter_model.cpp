#include "sim/ConverterModel.h"
#include "sim/NoiseGenerator.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

using kx::ConverterModel;

TEST(ConverterModel, FrequenciesOfTheProgramAreMetExactly) {
    const std::pair<double, qint16> cases[] = {{9, 8000},  {32, 2250}, {60, 1200},
                                               {64, 1125}, {100, 720}, {1000, 72}};
    for (const auto& [hertz, decimation] : cases) {
        ConverterModel m(1, 720);
        m.setSampleFrequency(hertz);
        EXPECT_EQ(m.turboRate(), 1) << hertz;
        EXPECT_EQ(m.decimationRate(), decimation) << hertz;
        EXPECT_DOUBLE_EQ(m.cutoffFrequency(), 0.262 * hertz);
    }
    // The main window's cut-off limits are the frequency limits times 0.262.
    ConverterModel m;
    m.setCutoffFrequency(double(2.358f));
    EXPECT_FLOAT_EQ(float(m.sampleFrequency()), 9.0f);
    m.setCutoffFrequency(262.0);
    EXPECT_FLOAT_EQ(float(m.sampleFrequency()), 1000.0f);
}

TEST(ConverterModel, RatesDeriveTheFrequenciesWithinTheirLimits) {
    ConverterModel m(1, 720);
    m.setTurboRate(4);
    m.setDecimationRate(1125);
    EXPECT_DOUBLE_EQ(m.sampleFrequency(), 256.0);
    EXPECT_DOUBLE_EQ(m.cutoffFrequency(), 0.262 * 256.0);
    m.setTurboRate(17);
    m.setDecimationRate(19);
    EXPECT_EQ(m.turboRate(), 16);
    EXPECT_EQ(m.decimationRate(), 20);
    m.setTurboRate(8);
    m.setDecimationRate(5760);
    m.setSampleFrequency(512.0); // reachable with the present turbo rate: kept
    EXPECT_EQ(m.turboRate(), 8);
    EXPECT_EQ(m.decimationRate(), 1125);
    m.setSampleFrequency(9.0); // out of reach with turbo 8
    EXPECT_EQ(m.turboRate(), 1);
    EXPECT_EQ(m.decimationRate(), 8000);
}

// What the plate reports is single precision: writing back what was read changes nothing.
TEST(ConverterModel, ReadBackIsStableUnderRewriting) {
    kx::NoiseGenerator random(42);
    for (int i = 0; i < 2000; ++i) {
        ConverterModel m(qint16(1 + random.next() % 16), qint16(20 + random.next() % 7981));
        const bool viaCutoff = i % 2 == 1;
        const double wanted = 9.0 + 991.0 * random.uniform();
        if (viaCutoff)
            m.setCutoffFrequency(0.262 * wanted);
        else
            m.setSampleFrequency(wanted);
        // Nearest representable: within one decimation step at the highest turbo rate whose
        // decimation stays in range.
        const double turbo = std::clamp(std::floor(8000 * wanted / 72000.0), 1.0, 16.0);
        EXPECT_NEAR(m.sampleFrequency(), wanted, wanted * wanted / (turbo * 72000.0));

        const ConverterModel first = m;
        if (viaCutoff)
            m.setCutoffFrequency(float(m.cutoffFrequency()));
        else
            m.setSampleFrequency(float(m.sampleFrequency()));
        EXPECT_EQ(m, first) << wanted;
    }
}
