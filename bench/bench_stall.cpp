// How long the window's thread keeps the window from its events: the real windows, offscreen,
// on the simulated plates and the real clock, with a 1 ms probe timer. For each piece of work
// the longest gap between two of the probe's ticks is reported (aim: none over 50 ms). The idle
// loop's own longest gap is measured first: on a busy machine it is the floor of every figure.
// Start-up is measured by bench_startup.

#include "EventLoopProbe.h"
#include "GuiActions.h"
#include "HourOfCapture.h"
#include "Offscreen.h"
#include "RecordingPrompt.h"
#include "RunReporter.h"
#include "SyntheticPlate.h"
#include "TempEnvironment.h"
#include "app/GeneralInfoPanel.h"
#include "app/frmMain.h"
#include "calibration/CalFileWriter.h"
#include "calibration/frmCalibrate.h"
#include "measure/CaptureJournal.h"
#include "measure/UnsavedCaptureOffer.h"
#include "measure/frmAcquire.h"
#include "noise/NoisePlan.h"
#include "noise/NoiseResultFile.h"
#include "noise/NoiseResultText.h"
#include "noise/NoiseResults.h"
#include "sim/Scenario.h"
#include "sim/SimDriver.h"
#include "sim/SimPlate.h"
#include "support/Folders.h"
#include "support/QtClock.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QPushButton>
#include <cstdio>
#include <map>

namespace {

// The main window on the default simulated plates, shown and settled.
struct Bench {
    Bench() {
        window = std::make_unique<kx::frmMain>(clock, prompt, [this] {
            auto driver = std::make_unique<kx::SimDriver>(clock);
            kx::Scenario::defaults().applyTo(*driver);
            sim = driver.get();
            return driver;
        });
        window->load();
        runUntil([this] { return window->isVisible(); }, 10'000);
        runFor(300);
    }
    kx::SimPlate& plate() const { return *sim->plate(QStringLiteral("20418")); }
    QString documents(const char* name) const {
        return QDir(environment.documentsFolder()).filePath(QLatin1String(name));
    }
    // The longest gap while `work` runs on the window's thread and `ms` more pass, or until
    // `done` once `work` has run.
    double gapDuring(const std::function<void()>& work, const std::function<bool()>& done,
                     qint64 limitMs) {
        bool worked = false;
        probe.start();
        QTimer::singleShot(0, window.get(), [&] {
            work();
            worked = true;
        });
        const bool finished = runUntil([&] { return worked && done(); }, limitMs);
        const double gap = probe.stop();
        if (!finished)
            std::fprintf(stderr, "bench_stall: work not done within %lld ms\n", limitMs);
        return gap;
    }
    double gapFor(const std::function<void()>& work, int ms) {
        QElapsedTimer elapsed;
        elapsed.start();
        return gapDuring(
            work, [&elapsed, ms] { return elapsed.elapsed() >= ms; }, ms + 60'000);
    }

    kx::test::TempEnvironment environment;
    kx::QtClock clock;
    kx::test::RecordingPrompt prompt;
    kx::SimDriver* sim = nullptr;
    std::unique_ptr<kx::frmMain> window;
    EventLoopProbe probe;
};

kx::ToolDialog* shownToolDialog() {
    return kx::test::shownDialog<kx::ToolDialog>();
}

void idle(benchmark::State& state) {
    for (auto _ : state) {
        Bench bench;
        state.counters["gap_ms"] = bench.gapFor([] {}, 3000);
    }
}

// Each tool button: the dialog loads, shows and settles for half a second.
void openDialogs(benchmark::State& state) {
    for (auto _ : state) {
        Bench bench;
        kx::frmMain& w = *bench.window;
        const std::pair<const char*, QPushButton*> tools[] = {
            {"frmZero", w.cmdGetZero},
            {"frmMeter", w.cmdMeter},
            {"frmScale", w.cmdScale},
            {"frmAcquire", w.cmdAcquire},
            {"frmProgramID", w.cmdProgramID},
            {"frmEncoder", w.cmdEncoder},
            {"frmNoise", w.cmdNoise},
            {"frmCalibrate", w.cmdCalibrate},
            {"frmPlateInfoEx", w.frmGeneralInfo->cmdDevInfoEx},
        };
        for (const auto& [name, button] : tools) {
            state.counters[name] = bench.gapFor([button] { button->click(); }, 500);
            if (kx::ToolDialog* dialog = shownToolDialog())
                dialog->close();
            runFor(300);
        }
    }
}

// The signals display at 1000 Hz with its three charts, capturing for ten seconds; the journal
// takes each second's rows to the disk meanwhile.
void streamAndCapture(benchmark::State& state) {
    for (auto _ : state) {
        Bench bench;
        bench.plate().SetSampleFrequency(kx::Which::Current, 1000);
        bench.window->cmdAcquire->click();
        auto* dialog = kx::test::shownDialog<kx::frmAcquire>();
        dialog->resize(1200, 800);
        dialog->cmdDisplay->click();
        runFor(1000);
        state.counters["gap_ms"] = bench.gapFor([dialog] { dialog->cmdCapture->click(); }, 10'000);
        state.counters["rows"] = double(dialog->journal().rowCount());
        dialog->cmdCapture->click();
        runFor(300);
        bench.prompt.answers = {1, 0}; // Discard, Discard
        dialog->cmdOK->click();
    }
}

// An hour's capture left by a crash, offered and saved with its progress box.
void saveHour(benchmark::State& state) {
    for (auto _ : state) {
        Bench bench;
        const QString journal = QDir(kx::UnsavedCapturesFolder()).filePath("hour.kxcj");
        QDir().mkpath(kx::UnsavedCapturesFolder());
        QFile file(journal);
        file.open(QIODevice::WriteOnly);
        file.write(hourOfCapture(-2.5f));
        file.close();
        bench.prompt.answers = {0};
        bench.prompt.fileAnswers = {bench.documents("hour.txt")};
        QElapsedTimer clock;
        clock.start();
        state.counters["gap_ms"] = bench.gapDuring(
            [&bench] { kx::offerUnsavedCaptures(bench.window.get(), bench.prompt); },
            [&journal] { return !QFile::exists(journal); }, 600'000);
        state.counters["seconds"] = double(clock.elapsed()) / 1000;
    }
}

// The calibration dialog on the file of a ten-point calibration: the matrix computed by the
// built-in fit (no Octave on the path) and by Octave, then the report written.
void calibration(benchmark::State& state) {
    for (auto _ : state) {
        Bench bench;
        kx::CalibrationRecord record;
        record.points = kx::test::SyntheticPlate().grid(kx::test::TenPoints);
        record.environment.temperature = 21;
        record.environment.humidity = 40;
        record.environment.pressure = 1000;
        const QString calibrationFile = bench.documents("20418_1.cal");
        if (!kx::saveCalFile(calibrationFile, record))
            state.SkipWithError("the calibration file cannot be written");
        bench.window->cmdCalibrate->click();
        auto* dialog = kx::test::shownDialog<kx::frmCalibrate>();
        bench.prompt.fileAnswers = {calibrationFile};
        dialog->cmdFileName->click();
        const QByteArray path = qgetenv("PATH");
        const auto fit = [&] {
            return bench.gapDuring([dialog] { dialog->cmdMatrix->click(); },
                                   [dialog] { return dialog->cmdMatrix->isEnabled(); }, 120'000);
        };
        qputenv("PATH", "");
        state.counters["builtin_fit_ms"] = fit();
        qputenv("PATH", path);
        state.counters["octave_fit_ms"] = fit();
        bench.prompt.fileAnswers = {bench.documents("report.pdf")};
        state.counters["report_ms"] = bench.gapDuring(
            [dialog] { dialog->cmdReport->click(); },
            [&bench] { return QFile::exists(bench.documents("report.pdf")); }, 60'000);
        state.counters["messages"] = double(bench.prompt.messages.size());
        for (const QString& message : std::as_const(bench.prompt.messages))
            std::fprintf(stderr, "bench_stall: the calibration said: %s\n", qPrintable(message));
    }
}

// The noise test's result file rewritten after a test, for the default plan and for the
// largest plan the profile allows.
void noiseRewrite(benchmark::State& state) {
    for (auto _ : state) {
        Bench bench;
        kx::NoisePlan largest = kx::NoisePlan::defaults();
        largest.channels = kx::NoisePlan::MaxChannels;
        largest.frequencies = QList<float>(kx::NoisePlan::MaxFrequencies, 100.0f);
        largest.excitations = QList<float>(kx::NoisePlan::MaxExcitations, 2.5f);
        for (const auto& [name, plan] : {std::pair{"default_plan_ms", kx::NoisePlan::defaults()},
                                         std::pair{"largest_plan_ms", largest}}) {
            kx::NoiseResults results(plan.channels, plan.frequencyCount(), plan.excitationCount());
            for (qsizetype f = 0; f < plan.frequencyCount(); ++f)
                for (qsizetype e = 0; e < plan.excitationCount(); ++e)
                    results.store(f, e, kx::ChannelValues(plan.channels, 9499.052),
                                  kx::ChannelValues(plan.channels, 1.25),
                                  kx::ChannelValues(plan.channels, 8.5));
            kx::NoiseResultFile file(bench.documents("20418_Noise_1.TXT"));
            state.counters[name] =
                bench.gapFor([&] { (void)file.save(kx::noiseResultFile(plan, results)); }, 300);
        }
    }
}

BENCHMARK(idle)->Iterations(1)->Unit(benchmark::kSecond);
BENCHMARK(openDialogs)->Iterations(1)->Unit(benchmark::kSecond);
BENCHMARK(streamAndCapture)->Iterations(1)->Unit(benchmark::kSecond);
BENCHMARK(saveHour)->Iterations(1)->Unit(benchmark::kSecond);
BENCHMARK(calibration)->Iterations(1)->Unit(benchmark::kSecond);
BENCHMARK(noiseRewrite)->Iterations(1)->Unit(benchmark::kSecond);

} // namespace

int main(int argc, char** argv) {
    QApplication app(offscreenByDefault(argc), argv);
    RunReporter reporter;
    reporter.runAll(&argc, argv);

    std::printf("longest event-loop gaps, ms (aim: none over 50):\n");
    const std::pair<const char*, std::vector<const char*>> figures[] = {
        {"idle", {"gap_ms"}},
        {"openDialogs",
         {"frmZero", "frmMeter", "frmScale", "frmAcquire", "frmProgramID", "frmEncoder", "frmNoise",
          "frmCalibrate", "frmPlateInfoEx"}},
        {"streamAndCapture", {"gap_ms"}},
        {"saveHour", {"gap_ms", "seconds"}},
        {"calibration", {"builtin_fit_ms", "octave_fit_ms", "report_ms"}},
        {"noiseRewrite", {"default_plan_ms", "largest_plan_ms"}},
    };
    for (const auto& [run, counters] : figures)
        for (const char* counter : counters)
            std::printf("  %-18s %-16s %8.1f\n", run, counter, reporter.counter(run, counter));
    return 0;
}
