// The digital scale's cost per plate sample with the default moving window (N = 3840, one
// minute at 64 Hz) and with a window a hundred times longer: the dialog's ForcesIn handler on
// a simulated plate, and the moving average alone. Judged by the ratio of the two costs, which
// should stay near 1: the window is a ring, so its length must not show.

#include "Offscreen.h"
#include "RunReporter.h"
#include "device/ToolContext.h"
#include "scale/WeightAverager.h"
#include "scale/frmScale.h"
#include "sim/Scenario.h"
#include "sim/SimDriver.h"
#include "sim/SimPlate.h"
#include "support/ManualClock.h"
#include "support/Prompt.h"
#include "support/Settings.h"
#include "support/SettingsKeys.h"

#include <QApplication>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int SmallWindow = 3840;
constexpr int LargeWindow = 384000;

// Fz as a scale sees it: people stepping on and off, with noise.
const std::vector<float>& loads() {
    static const std::vector<float> all = [] {
        std::mt19937 random(11);
        std::normal_distribution<float> noise(0.0f, 0.3f);
        std::vector<float> values(1 << 20);
        float level = 0.0f;
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (i % 20000 == 0)
                level = level == 0.0f ? -std::uniform_real_distribution<float>(200, 1200)(random)
                                      : 0.0f;
            values[i] = level + noise(random);
        }
        return values;
    }();
    return all;
}

class SilentPrompt final : public kx::Prompt {
public:
    void critical(const QString& text) override {
        std::fprintf(stderr, "unexpected message: %s\n", qPrintable(text));
    }
    int ask(const kx::Question& question) override { return question.escapeChoice; }
    std::optional<QString> saveFileName(const kx::FileDialogRequest&) override { return {}; }
    std::optional<QString> openFileName(const kx::FileDialogRequest&) override { return {}; }
    void beep() override {}
    bool playSound(const QString&) override { return true; }
};

void averagerAdd(benchmark::State& state) {
    kx::WeightAverager averager(static_cast<qint32>(state.range(0)), 5.0f);
    const std::vector<float>& values = loads();
    std::size_t i = 0;
    for (auto _ : state) {
        averager.add(values[i]);
        i = (i + 1) & (values.size() - 1);
        benchmark::DoNotOptimize(averager.sum());
    }
    state.SetItemsProcessed(state.iterations());
}

// The dialog on a simulated plate at 64 Hz, a sample every 15.625 ms, so the read-out is
// rewritten on one sample in 32 as in use.
void scaleForcesIn(benchmark::State& state) {
    QTemporaryDir settings;
    qputenv("KX_SETTINGS_FILE", settings.filePath(QStringLiteral("settings.ini")).toLocal8Bit());
    const auto user = kx::SettingsRoot::CurrentUser;
    kx::SaveSettingLong(user, QLatin1String(kx::kScaleKey), QStringLiteral("Average Samples"),
                        static_cast<qint32>(state.range(0)));
    kx::SaveSettingLong(user, QLatin1String(kx::kScaleAutozeroKey), QStringLiteral("Enabled"), 0);

    kx::ManualClock clock(1000);
    SilentPrompt prompt;
    kx::SimDriver driver(clock);
    kx::Scenario::defaults().applyTo(driver);
    driver.OpenDevices(kx::PlateVendorId, kx::PlateProductId1, kx::PlateProductId2);
    clock.settle();
    kx::SimPlate& plate = *driver.plate(QStringLiteral("20418"));
    kx::frmScale dialog(kx::ToolContext{clock, prompt});
    dialog.setDevice(&plate);
    dialog.show();

    const std::vector<float>& values = loads();
    std::size_t i = 0;
    qint32 number = 0;
    qint64 elapsedUs = 0;
    for (auto _ : state) {
        elapsedUs += 15625;
        clock.advance(elapsedUs / 1000 - (elapsedUs - 15625) / 1000);
        Q_EMIT plate.ForcesIn(++number, kx::Float3{values[i], 0.0f, 0.0f}, kx::Float3{});
        i = (i + 1) & (values.size() - 1);
    }
    state.SetItemsProcessed(state.iterations());
    dialog.close();
    qunsetenv("KX_SETTINGS_FILE");
}

// The machine is shared: the medians of five runs each.
BENCHMARK(averagerAdd)
    ->Arg(SmallWindow)
    ->Arg(LargeWindow)
    ->Name("WeightAverager::add")
    ->Repetitions(5)
    ->ReportAggregatesOnly();
BENCHMARK(scaleForcesIn)
    ->Arg(SmallWindow)
    ->Arg(LargeWindow)
    ->Name("frmScale/ForcesIn")
    ->Repetitions(5)
    ->ReportAggregatesOnly();

} // namespace

int main(int argc, char** argv) {
    QApplication app(offscreenByDefault(argc), argv);
    RunReporter reporter;
    reporter.runAll(&argc, argv);
    for (const char* name : {"frmScale/ForcesIn", "WeightAverager::add"}) {
        const double small =
            1e9 * reporter.cpuSeconds(std::string(name) + "/" + std::to_string(SmallWindow));
        const double large =
            1e9 * reporter.cpuSeconds(std::string(name) + "/" + std::to_string(LargeWindow));
        if (small > 0 && large > 0)
            std::printf("%s per sample: N = %d %.1f ns, N = %d %.1f ns, ratio %.2f\n", name,
                        SmallWindow, small, LargeWindow, large, large / small);
    }
    return 0;
}
