// The profile as the calibration and noise dialogs use it: the calibration settings loaded as
// a dialog opens (on a machine without a profile yet, and on one whose profile is complete),
// saved back as it closes, and the noise plan written back. Every save of the profile reaches
// the disk before it replaces the old file, so the count of saves is what the time follows;
// judged by the time of one dialog's opening, which should be a few milliseconds at most.

#include "RunReporter.h"
#include "TempEnvironment.h"
#include "calibration/CalibrationSettings.h"
#include "noise/NoisePlan.h"
#include "support/IniFile.h"

#include <QFile>
#include <benchmark/benchmark.h>
#include <cstdio>

namespace {

void openOnFreshProfile(benchmark::State& state) {
    const kx::test::TempEnvironment environment;
    const kx::IniFile profile = kx::IniFile::sharedProfile();
    for (auto _ : state) {
        state.PauseTiming();
        QFile::remove(profile.path());
        state.ResumeTiming();
        benchmark::DoNotOptimize(kx::CalibrationSettings::load(profile));
    }
}

void openOnCompleteProfile(benchmark::State& state) {
    const kx::test::TempEnvironment environment;
    const kx::IniFile profile = kx::IniFile::sharedProfile();
    kx::CalibrationSettings::load(profile);
    for (auto _ : state)
        benchmark::DoNotOptimize(kx::CalibrationSettings::load(profile));
}

void closeWithChangedGravity(benchmark::State& state) {
    const kx::test::TempEnvironment environment;
    const kx::IniFile profile = kx::IniFile::sharedProfile();
    kx::CalibrationSettings settings = kx::CalibrationSettings::load(profile);
    bool flip = false;
    for (auto _ : state) {
        settings.Gravity = (flip = !flip) ? 9.8 : 9.81;
        settings.save(profile);
    }
}

void writeNoisePlan(benchmark::State& state) {
    const kx::test::TempEnvironment environment;
    const kx::IniFile profile = kx::IniFile::sharedProfile();
    kx::NoisePlan plan = kx::NoisePlan::defaults();
    bool flip = false;
    for (auto _ : state) {
        plan.testDuration = (flip = !flip) ? 60.0f : 30.0f;
        plan.write(profile);
    }
}

BENCHMARK(openOnFreshProfile)->Unit(benchmark::kMillisecond);
BENCHMARK(openOnCompleteProfile)->Unit(benchmark::kMillisecond);
BENCHMARK(closeWithChangedGravity)->Unit(benchmark::kMillisecond);
BENCHMARK(writeNoisePlan)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    RunReporter reporter;
    reporter.runAll(&argc, argv);
    for (const char* name : {"openOnFreshProfile", "openOnCompleteProfile",
                             "closeWithChangedGravity", "writeNoisePlan"}) {
        if (const double seconds = reporter.seconds(name); seconds > 0)
            std::printf("%s: %.2f ms\n", name, seconds * 1000);
    }
    return 0;
}
