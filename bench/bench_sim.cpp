// Cost of the simulated plates, every imperfection of a real plate on: one sample through the
// physics and the signal chain (and on an ideal plate for comparison), one
// sample end to end (engine, plate, signal, manual clock), and the share of one core that ten
// plates streaming at 1000 Hz take under the real clock.
#include "RunReporter.h"
#include "device/PlateTypes.h"
#include "sim/PlateLoads.h"
#include "sim/PlateTruth.h"
#include "sim/Scenario.h"
#include "sim/SignalChain.h"
#include "sim/SimDriver.h"
#include "sim/SimPlate.h"
#include "support/ManualClock.h"
#include "support/QtClock.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <string>
#include <sys/resource.h>

namespace {

kx::SimPlateConfig plateConfig(int index) {
    kx::SimPlateConfig config;
    config.serial = QString::number(50000 + index);
    config.seed = quint64(index + 1);
    config.sampleFrequency = 1000.0;
    return config;
}

// Every imperfection of a real plate on (the default), or an ideal plate for comparison.
void physicsAndSignalChain(benchmark::State& state, bool ideal) {
    kx::SimPlateConfig config = plateConfig(0);
    if (ideal)
        config.imperfections = kx::SimImperfections::none();
    const kx::PlateTruth truth = kx::PlateTruth::generate(config);
    kx::SignalChain chain(truth, 7);
    chain.setSampleFrequency(1000);
    chain.setResolution(20);
    kx::PlateLoads loads(config.imperfections);
    loads.placePerson(75, 0.02, 0.2, kx::PlateLoads::Stance::Swaying, 0);
    double t = 0;
    for (auto _ : state) {
        t += 0.001;
        benchmark::DoNotOptimize(chain.convert(loads.wrenchAt(t), 5.0, 25.0, t));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(physicsAndSignalChain, real, false);
BENCHMARK_CAPTURE(physicsAndSignalChain, ideal, true);

// A streaming plate with a person on it, driven by a manual clock in steps of 100 ms; one
// handler receives every ForcesIn.
void streamingSample(benchmark::State& state) {
    kx::ManualClock clock;
    kx::SimDriver driver(clock);
    kx::SimPlate* plate = driver.addPlate(plateConfig(0));
    driver.OpenDevices(kx::PlateVendorId, kx::PlateProductId1, kx::PlateProductId2);
    clock.settle();
    plate->loads().placePerson(75, 0.02, 0.2, kx::PlateLoads::Stance::Swaying, 0);
    float sink = 0;
    QObject context;
    QObject::connect(plate, &kx::PlateDevice::ForcesIn, &context,
                     [&sink](qint32, const kx::Float3& f, const kx::Float3&) { sink += f[0]; });
    plate->StartAcquisition(true, false, true, false, true);
    for (auto _ : state)
        clock.advance(100);
    benchmark::DoNotOptimize(sink);
    state.SetItemsProcessed(state.iterations() * 100);
}
BENCHMARK(streamingSample);

double processCpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

struct RealTimeRun {
    double coreShare = 0;
    qint64 samples = 0;
    double seconds = 0;
};

// Ten plates streaming at 1000 Hz on the Qt clock for `seconds` of wall time.
RealTimeRun tenPlatesInRealTime(QCoreApplication& app, int seconds, bool ideal) {
    kx::QtClock clock;
    kx::SimDriver driver(clock, kx::SimDriver::Pacing::Batched);
    QList<kx::SimPlate*> plates;
    for (int i = 0; i < 10; ++i) {
        kx::SimPlateConfig config = plateConfig(i);
        if (ideal)
            config.imperfections = kx::SimImperfections::none();
        plates << driver.addPlate(config);
    }
    driver.OpenDevices(kx::PlateVendorId, kx::PlateProductId1, kx::PlateProductId2);
    QCoreApplication::processEvents();
    RealTimeRun run;
    QObject context;
    for (kx::SimPlate* plate : plates) {
        plate->loads().placePerson(70, 0, 0.2, kx::PlateLoads::Stance::Swaying, plate->now());
        QObject::connect(plate, &kx::PlateDevice::ForcesIn, &context,
                         [&run](qint32, const kx::Float3&, const kx::Float3&) { ++run.samples; });
        plate->StartAcquisition(true, false, true, false, true);
    }
    QElapsedTimer wall;
    wall.start();
    const double cpuBefore = processCpuSeconds();
    QTimer::singleShot(seconds * 1000, &app, &QCoreApplication::quit);
    app.exec();
    run.seconds = double(wall.nsecsElapsed()) / 1e9;
    run.coreShare = (processCpuSeconds() - cpuBefore) / run.seconds;
    return run;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    RunReporter recorder;
    recorder.runAll(&argc, argv);

    const auto nanosecondsPerItem = [&recorder](const std::string& name) {
        const double perSecond = recorder.counter(name, "items_per_second");
        return perSecond > 0 ? 1e9 / perSecond : 0.0;
    };
    const double chainNs = nanosecondsPerItem("physicsAndSignalChain/real");
    const double idealNs = nanosecondsPerItem("physicsAndSignalChain/ideal");
    const double sampleNs = nanosecondsPerItem("streamingSample");
    const RealTimeRun run = tenPlatesInRealTime(app, 3, false);
    const RealTimeRun idealRun = tenPlatesInRealTime(app, 3, true);
    std::printf("\none sample, physics and signal chain: %.0f ns with every imperfection, "
                "%.0f ns on an ideal plate\n",
                chainNs, idealNs);
    std::printf("one sample end to end (manual clock): %.0f ns (target well under 1000 ns)\n",
                sampleNs);
    std::printf("ten plates at 1000 Hz, from that cost: %.2f %% of one core\n",
                10 * 1000 * sampleNs * 1e-9 * 100);
    std::printf("ten plates at 1000 Hz on the real clock: %.2f %% of one core over %.1f s, "
                "%.0f samples/s (target < 1 %%)\n",
                run.coreShare * 100, run.seconds, double(run.samples) / run.seconds);
    std::printf("the same ten plates made ideal: %.2f %% of one core (the rest of the share is "
                "the event loop's)\n",
                idealRun.coreShare * 100);
    return 0;
}
