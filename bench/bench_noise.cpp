// A whole default noise run (one hour of warm-up, 20 excitations x 5 frequencies of 60 s, with
// their settling waits: 4.5 hours of plate time) through frmNoise on a simulated plate and the
// manual clock, advanced in one call. Judged by the ratio of plate time to wall time (aim: the
// run in under 30 s on a shared 2-core machine, a ratio above 540); the result file must be
// the golden one byte for byte, so a faster run is still the same run.

#include "Offscreen.h"
#include "RecordingPrompt.h"
#include "RunReporter.h"
#include "TempEnvironment.h"
#include "noise/frmNoise.h"
#include "sim/SimDriver.h"
#include "sim/SimPlate.h"
#include "support/ManualClock.h"

#include <QApplication>
#include <QFile>
#include <QListWidget>
#include <QPushButton>
#include <cstdio>

namespace {

constexpr qint64 RunMs = 5LL * 3600 * 1000; // past the end of the default run

QByteArray fileBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void defaultRun(benchmark::State& state) {
    const QByteArray golden = fileBytes(QStringLiteral(KX_NOISE_GOLDEN_FILE));
    qint64 plateMs = 0;
    for (auto _ : state) {
        state.PauseTiming();
        kx::test::TempEnvironment environment;
        kx::ManualClock clock;
        kx::test::RecordingPrompt prompt;
        kx::SimDriver driver(clock);
        kx::SimPlateConfig config;
        config.serial = QStringLiteral("1");
        driver.addPlate(config);
        driver.AddDeviceId(kx::PlateVendorId, kx::PlateProductId1, 0);
        driver.OpenDevices(kx::PlateVendorId, kx::PlateProductId1, kx::PlateProductId2);
        clock.settle();
        kx::frmNoise dialog(kx::ToolContext{clock, prompt});
        kx::SimPlate* plate = driver.plate(QStringLiteral("1"));
        dialog.setDevice(plate);
        dialog.show();
        quint32 lastEnd = 0;
        QObject::connect(plate, &kx::PlateDevice::ZeroDone, &dialog,
                         [&] { lastEnd = clock.tickCount(); });
        dialog.cmdAcquire->click();
        const quint32 start = clock.tickCount();
        state.ResumeTiming();

        clock.advance(RunMs);

        state.PauseTiming();
        const char* error = nullptr;
        if (dialog.running() || dialog.lstResults->count() != 100)
            error = "the run did not finish";
        else if (fileBytes(dialog.resultPath()) != golden)
            error = "the result file differs from the golden one";
        plateMs += lastEnd - start;
        dialog.close();
        if (error) {
            state.SkipWithError(error);
            break;
        }
        state.ResumeTiming();
    }
    state.counters["plate_s"] = benchmark::Counter(static_cast<double>(plateMs) / 1000.0,
                                                   benchmark::Counter::kAvgIterations);
}

BENCHMARK(defaultRun)->Unit(benchmark::kSecond)->Iterations(1);

} // namespace

int main(int argc, char** argv) {
    QApplication app(offscreenByDefault(argc), argv);
    RunReporter reporter;
    reporter.runAll(&argc, argv);

    const double wall = reporter.seconds("defaultRun");
    const double plate = reporter.counter("defaultRun", "plate_s");
    if (wall > 0)
        std::printf("Default noise run: %.0f s of plate time in %.2f s of wall time, ratio %.0f "
                    "(aim above 540: under 30 s)\n",
                    plate, wall, plate / wall);
    return 0;
}
