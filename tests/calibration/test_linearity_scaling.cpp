#include "../support/PrintQString.h"
#include "calibration/Calibration.h"
#include "calibration/LinearityScaling.h"
#include "support/NumberFormat.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

// Fz = −(−1·s1) = s1: a step's first signal is its computed Fz.
const CalMatrix FzFromFirstSignal{{{-1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

// Eight steps of 100, 200, 300, 400, 400, 300, 200, 100 N, none taken.
std::vector<LinearityStep> eightSteps() {
    std::vector<LinearityStep> steps(8);
    const float loads[] = {100, 200, 300, 400, 400, 300, 200, 100};
    for (std::size_t i = 0; i < 8; ++i)
        steps[i].appliedLoad = loads[i];
    return steps;
}

void take(LinearityStep& step, double ratio) {
    step.done = true;
    step.mean = {ratio * step.appliedLoad, 0, 0};
}

QString suggestion(const std::vector<LinearityStep>& steps) {
    return formatNumber(LinearityScaling::suggestedValue(FzFromFirstSignal, steps), u"0.0000");
}

TEST(LinearityScaling, ComputedFzIsPositiveForADownwardLoadAndSingle) {
    const CalMatrix m{{{-1000.5f, -999.25f, -1001.0f}, {}, {}}};
    const float fz = LinearityScaling::computedFz(m, {0.08, 0.081, 0.079});
    EXPECT_EQ(fz, static_cast<float>(1000.5 * 0.08 + 999.25 * 0.081 + 1001.0 * 0.079));
}

TEST(LinearityScaling, SuggestedValueFromTheRangeOfRatios) {
    struct Case {
        const char* name;
        std::vector<std::pair<int, double>> taken; // step index, ratio
        const char* suggested;
    } cases[] = {
        {"no step taken", {}, "1.0000"},
        {"0.98 loading, 1.02 unloading", {{0, 0.98}, {7, 1.02}}, "1.0000"},
        {"0.95 and 0.99", {{1, 0.95}, {6, 0.99}}, "1.0309"},
        {"one step", {{2, 0.8}}, "1.2500"},
        {"a ratio above 2 keeps the smallest at 2", {{3, 2.5}}, "0.4444"},
        {"only ratios above 2", {{3, 2.5}, {4, 3.0}}, "0.4000"},
        {"the mid-range of three ratios, not their mean",
         {{0, 0.97}, {7, 1.05}, {1, 0.99}},
         "0.9901"},
        {"an unload taken without its load", {{6, 1.04}}, "0.9615"},
        {"all steps",
         {{0, 1.01}, {1, 1.0}, {2, 0.99}, {3, 1.0}, {4, 1.0}, {5, 1.0}, {6, 1.0}, {7, 1.03}},
         "0.9901"},
    };
    for (const Case& k : cases) {
        std::vector<LinearityStep> steps = eightSteps();
        for (const auto& [index, ratio] : k.taken)
            take(steps[static_cast<std::size_t>(index)], ratio);
        EXPECT_EQ(suggestion(steps), QLatin1String(k.suggested)) << k.name;
    }
}

TEST(LinearityScaling, GridRowsPairEachLoadWithItsUnload) {
    std::vector<LinearityStep> steps = eightSteps();
    take(steps[0], 0.98);  // load 100 N
    take(steps[7], 1.02);  // unload 100 N
    take(steps[6], 1.005); // unload 200 N
    take(steps[2], 0.97);  // load 300 N
    take(steps[5], 1.05);  // unload 300 N
    const std::vector<QStringList> rows = LinearityScaling::gridRows(FzFromFirstSignal, steps);
    ASSERT_EQ(rows.size(), 4u);
    EXPECT_EQ(rows[0], (QStringList{"100.000", "98.000", "102.000", "1.0000"}));
    EXPECT_EQ(rows[1], (QStringList{"200.000", "", "201.000", "1.0050"}));
    EXPECT_EQ(rows[2], (QStringList{"300.000", "291.000", "315.000", "1.0100"}));
    EXPECT_EQ(rows[3], (QStringList{"400.000", "", "", ""}));
}

TEST(LinearityScaling, AnEmptyBoxScalesByOne) {
    EXPECT_EQ(LinearityScaling::valueFromText(QString()), 1.0f);
    EXPECT_EQ(LinearityScaling::valueFromText(QStringLiteral("  ")), 1.0f);
    EXPECT_EQ(LinearityScaling::valueFromText(QStringLiteral("1.0309")), 1.0309f);
    EXPECT_EQ(LinearityScaling::valueFromText(QStringLiteral("abc")), std::nullopt);
    EXPECT_EQ(LinearityScaling::valueFromText(QStringLiteral("inf")), std::nullopt);
    const CalMatrix fitted{{{-1000, 2, 3}, {4, 500, 6}, {7, 8, -250}}};
    EXPECT_EQ(LinearityScaling::scaled(fitted, 2),
              (CalMatrix{{{-2000, 4, 6}, {8, 1000, 12}, {14, 16, -500}}}));
}

TEST(LinearityScaling, CompletionsStoreAcceptedResultsOnly) {
    Calibration c;
    c.record.steps = eightSteps();
    const QDateTime when(QDate(2026, 5, 4), QTime(9, 30));
    DataReading noisy;
    noisy.stdDev = {0.01, 0, 0};
    EXPECT_EQ(LinearityScaling::completeStep(c, 2, noisy, 0.002f, when, 20),
              AcquisitionOutcome::Rejected);
    EXPECT_EQ(c.record.steps, eightSteps());
    EXPECT_FALSE(c.unsavedChanges);

    DataReading quiet;
    quiet.mean = {300.5, 1, 2};
    EXPECT_EQ(LinearityScaling::completeStep(c, 8, quiet, 0.002f, when, 20),
              AcquisitionOutcome::Rejected);
    EXPECT_EQ(LinearityScaling::completeStep(c, 2, quiet, 0.002f, when, 21.5f),
              AcquisitionOutcome::Accepted);
    EXPECT_TRUE(c.record.steps[2].done);
    EXPECT_EQ(c.record.steps[2].temperature, 21.5f);
    EXPECT_EQ(c.record.steps[2].date.toDateTime(), when);
    EXPECT_TRUE(c.unsavedChanges);

    const ZeroReading zero = ZeroReading::fromZeroDone({5, 6, 7}, {1, 1, 1});
    EXPECT_EQ(LinearityScaling::completeZero(c, zero, 1024, when, 19),
              AcquisitionOutcome::Accepted);
    EXPECT_TRUE(c.record.scalingZero.done);
    EXPECT_EQ(c.record.scalingZero.average, (std::array<double, 4>{5, 6, 7, 0}));
    EXPECT_TRUE(c.record.points.empty()); // the points' zeros are not touched
}

} // namespace
} // namespace kx
