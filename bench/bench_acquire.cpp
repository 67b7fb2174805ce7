// Per-sample cost of the signals display's ForcesIn path: the plate's event into frmAcquire,
// converted to the shown signal set and added to its three strip charts, with the clock
// moving 1 ms per sample so the charts' refresh timers and the status texts run as they do
// at 1000 Hz. Judged against the 1 ms between samples of a 1000 Hz plate (aim below 1%).
// Also with capture on, the rows going to the capture journal.

#include "Offscreen.h"
#include "RecordingPrompt.h"
#include "RunReporter.h"
#include "TempEnvironment.h"
#include "measure/frmAcquire.h"
#include "sim/SimDriver.h"
#include "sim/SimPlate.h"
#include "support/ManualClock.h"

#include <QApplication>
#include <QPushButton>
#include <QRadioButton>
#include <cmath>
#include <cstdio>
#include <numbers>

namespace {

void forcesIn(benchmark::State& state) {
    kx::test::TempEnvironment environment;
    kx::ManualClock clock;
    kx::test::RecordingPrompt prompt;
    kx::SimDriver driver(clock);
    kx::SimPlateConfig config;
    config.serial = QStringLiteral("1");
    driver.addPlate(config);
    driver.AddDeviceId(kx::PlateVendorId, kx::PlateProductId1, 0);
    driver.AddDeviceId(kx::PlateVendorId, kx::PlateProductId2, 0);
    driver.OpenDevices(kx::PlateVendorId, kx::PlateProductId1, kx::PlateProductId2);
    clock.settle();
    kx::PlateDevice& plate = *driver.plate(QStringLiteral("1"));
    kx::frmAcquire dialog(kx::ToolContext{clock, prompt});
    dialog.setDevice(&plate);
    dialog.optSignal[static_cast<std::size_t>(state.range(0))]->click();
    dialog.resize(1200, 800);
    dialog.show();
    if (state.range(1) != 0) {
        // The plate streams too, at its own 100 Hz: a tenth of a sample more per sample.
        dialog.cmdDisplay->click();
        dialog.cmdCapture->click();
    }

    qint32 n = 0;
    for (auto _ : state) {
        // A person swaying: loaded, so Postural computes its centre of pressure.
        const double t = static_cast<double>(++n) / 1000.0;
        const auto fz = static_cast<float>(-700.0 + 10.0 * std::sin(2 * std::numbers::pi * t));
        const kx::Float3 forces{fz, fz * 0.05f, -fz * 0.1f};
        const kx::Float3 volts{fz * 1e-4f, 2e-5f, -3e-5f};
        Q_EMIT plate.ForcesIn(n, forces, volts);
        clock.advance(1);
    }
}

void clockOnly(benchmark::State& state) {
    kx::ManualClock clock;
    for (auto _ : state)
        clock.advance(1);
}

BENCHMARK(forcesIn)
    ->ArgsProduct({{0, 1, 2}, {0}})
    ->Args({0, 1})
    ->ArgNames({"DisplayType", "Capturing"});
BENCHMARK(clockOnly)->Name("ClockAdvance");

} // namespace

int main(int argc, char** argv) {
    QApplication app(offscreenByDefault(argc), argv);
    RunReporter reporter;
    reporter.runAll(&argc, argv);

    // Processor time: the machine may be shared. The clock's own step is not the dialog's.
    const double clockStep = reporter.cpuSeconds("ClockAdvance");
    const char* names[] = {"Forces", "Voltages", "Postural"};
    for (int type = 0; type < 3; ++type) {
        const double perSample =
            reporter.cpuSeconds("forcesIn/DisplayType:" + std::to_string(type) + "/Capturing:0") -
            clockStep;
        if (perSample > 0)
            std::printf("ForcesIn with three charts, %s: %.0f ns per sample, %.3f%% of the 1 ms "
                        "period of a 1000 Hz plate (aim below 1%%)\n",
                        names[type], perSample * 1e9, perSample / 1e-3 * 100);
    }
    const double capturing = reporter.cpuSeconds("forcesIn/DisplayType:0/Capturing:1") - clockStep;
    if (capturing > 0)
        std::printf("ForcesIn with three charts and capture on, Forces: %.0f ns per sample, %.3f%% "
                    "of the 1 ms period (the journal's rows included)\n",
                    capturing * 1e9, capturing / 1e-3 * 100);
    return 0;
}
