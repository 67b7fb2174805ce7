// Memory of a long capture: the real signals display on a simulated plate at 1000 Hz with its
// three charts, capturing for an hour of the manual clock after ten minutes to settle in. The
// resident memory it gains over the hour is judged (aim: under 1 MB an hour). A capture through
// the plate library's own recording also holds that recording in the library until Capture
// OFF, so the library's gain, streaming and recording alone, is measured too and told apart.

#include "Offscreen.h"
#include "RecordingPrompt.h"
#include "RunReporter.h"
#include "TempEnvironment.h"
#include "measure/CaptureJournal.h"
#include "measure/frmAcquire.h"
#include "sim/SimDriver.h"
#include "sim/SimPlate.h"
#include "support/ManualClock.h"

#include <QApplication>
#include <QFile>
#include <QPushButton>
#include <cstdio>
#include <unistd.h>

namespace {

constexpr qint64 SettleMs = 10 * 60 * 1000;
constexpr qint64 HourMs = 60 * 60 * 1000;

// Resident memory of this process in bytes (Linux), 0 where unknown.
double residentBytes() {
    QFile statm("/proc/self/statm");
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> fields = statm.readAll().split(' ');
    return fields.size() > 1 ? double(fields[1].toLongLong() * sysconf(_SC_PAGESIZE)) : 0;
}

// One plate at 1000 Hz, opened as the main window opens it.
struct Bench {
    Bench() {
        kx::SimPlateConfig config;
        config.serial = QStringLiteral("1");
        config.sampleFrequency = 1000;
        driver.addPlate(config);
        driver.AddDeviceId(kx::PlateVendorId, kx::PlateProductId1, 0);
        driver.OpenDevices(kx::PlateVendorId, kx::PlateProductId1, kx::PlateProductId2);
        clock.settle();
        plate = driver.plate(QStringLiteral("1"));
        plate->loads().placePerson(75, 0.02, 0.1, kx::PlateLoads::Stance::Swaying, plate->now());
    }
    // Runs the clock a second at a time, so the display's timers and the journal's flushes
    // come as they would.
    void run(qint64 ms) {
        for (qint64 done = 0; done < ms; done += 1000) {
            clock.advance(1000);
            QCoreApplication::processEvents();
        }
    }
    // Resident bytes gained over an hour once settled.
    double hourlyGain() {
        run(SettleMs);
        const double before = residentBytes();
        run(HourMs);
        return residentBytes() - before;
    }

    kx::test::TempEnvironment environment;
    kx::ManualClock clock;
    kx::test::RecordingPrompt prompt;
    kx::SimDriver driver{clock};
    kx::SimPlate* plate = nullptr;
};

// The display with its charts and a capture on; `drift`: averaged points, which the plate
// library does not record.
void capture(benchmark::State& state, bool drift) {
    for (auto _ : state) {
        Bench bench;
        kx::frmAcquire dialog(kx::ToolContext{bench.clock, bench.prompt});
        dialog.setDevice(bench.plate);
        dialog.resize(1200, 800);
        dialog.show();
        (drift ? dialog.cmdDrift : dialog.cmdDisplay)->click();
        dialog.cmdCapture->click();
        state.counters["bytes_per_hour"] = bench.hourlyGain();
        state.counters["journal_rows"] = double(dialog.journal().rowCount());
        dialog.journal().remove();
    }
}

// The plate library alone: streaming and recording a capture, nobody listening.
void libraryRecording(benchmark::State& state) {
    for (auto _ : state) {
        Bench bench;
        bench.plate->StartAcquisition(true, false, true, false, true);
        bench.plate->StartCapture(true);
        state.counters["bytes_per_hour"] = bench.hourlyGain();
        bench.plate->StopAcquisition();
    }
}

BENCHMARK_CAPTURE(capture, samples, false)
    ->Name("capture/1000Hz")
    ->Iterations(1)
    ->Unit(benchmark::kSecond);
BENCHMARK_CAPTURE(capture, drift, true)
    ->Name("drift/1000Hz")
    ->Iterations(1)
    ->Unit(benchmark::kSecond);
BENCHMARK(libraryRecording)->Name("library/1000Hz")->Iterations(1)->Unit(benchmark::kSecond);

} // namespace

int main(int argc, char** argv) {
    QApplication app(offscreenByDefault(argc), argv);
    RunReporter reporter;
    reporter.runAll(&argc, argv);

    const double mb = 1e6;
    const double total = reporter.counter("capture/1000Hz", "bytes_per_hour");
    const double library = reporter.counter("library/1000Hz", "bytes_per_hour");
    const double drift = reporter.counter("drift/1000Hz", "bytes_per_hour");
    std::printf("capture at 1000 Hz: %.2f MB an hour resident, of which the plate library's own "
                "recording %.2f MB: the program %.2f MB an hour (aim under 1)\n",
                total / mb, library / mb, (total - library) / mb);
    std::printf("drift capture at 1000 Hz: %.2f MB an hour resident (aim under 1)\n", drift / mb);
    return 0;
}
