// The long procedures at speed, through their real dialogs on a default plate: the default
// noise-test plan on the program's clock at ×1000 and a ten-point calibration at ×100, both
// over the real clock with the event loop running. Each is run again on the same clock at ×1
// over a manual clock (the hours a real run at ×1 would take), and the result files must be
// the same byte for byte. The dialogs are driven through their controls, found by name, by
// steps that run on the plates' clock, as a technician's hands would be.

#include "Offscreen.h"
#include "RecordingPrompt.h"
#include "RunReporter.h"
#include "TempEnvironment.h"
#include "calibration/CalibrationSettings.h"
#include "calibration/frmCalibrate.h"
#include "noise/frmNoise.h"
#include "sim/Scenario.h"
#include "sim/SimDriver.h"
#include "sim/SimPlate.h"
#include "support/ManualClock.h"
#include "support/QtClock.h"
#include "support/ScaledClock.h"

#include <QApplication>
#include <QDir>
#include <QEventLoop>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTimer>
#include <cstdio>
#include <functional>
#include <memory>
#include <vector>

namespace {

// Both runs of a procedure share the calendar, so that the dates they file are the same.
const QDateTime Origin(QDate(2024, 3, 14), QTime(9, 30));
constexpr int StepMs = 250;         // of the plates' clock, between two looks at the dialog
constexpr int WallLimitMs = 60'000; // a run on the real clock that takes longer has failed

struct RunResult {
    QByteArray file;
    double plateSeconds = 0;
    double wallSeconds = 0;
    double achievedSpeed = 0;
    bool finished = false;
};

// One run's world: a private environment, the program's clock over `base`, the default plates.
// The clock runs at ×1 while the world and its dialog are made, so that the time they take
// does not count at speed.
struct World {
    explicit World(kx::Clock& base)
        : clock(base, 1, Origin)
        , driver(clock, kx::SimDriver::Pacing::Batched) {
        kx::Scenario::defaults().applyTo(driver);
        driver.OpenDevices(kx::PlateVendorId, kx::PlateProductId1, kx::PlateProductId2);
        plate = driver.plate(QStringLiteral("20418"));
    }

    // Made on the plates' clock, at the first step: both runs then make it at the same moment
    // of plate time, whatever the setting up took on the wall clock.
    template <typename Dialog>
    Dialog& open() {
        auto* dialog = new Dialog(kx::ToolContext{clock, prompt});
        dialogs.emplace_back(dialog);
        return *dialog;
    }

    QByteArray resultFile(const QString& pattern) const {
        const QDir folder(environment.documentsFolder());
        const QStringList found = folder.entryList({pattern}, QDir::Files);
        if (found.size() != 1)
            return {};
        QFile file(folder.filePath(found.front()));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    kx::test::TempEnvironment environment;
    kx::ScaledClock clock;
    kx::test::RecordingPrompt prompt;
    kx::SimDriver driver;
    kx::SimPlate* plate = nullptr;
    std::vector<std::unique_ptr<QWidget>> dialogs;
};

template <typename T>
T* control(const QWidget& dialog, const char* name) {
    T* found = dialog.findChild<T*>(QLatin1String(name));
    if (!found)
        std::fprintf(stderr, "no control %s\n", name);
    return found;
}

// Calls `step` every StepMs of the world's clock until it says the procedure is done; on the
// real clock under the event loop, on a manual one by advancing it. The first step, which
// opens the dialog, runs at ×1 (a dialog reads and writes its settings as it opens, on the
// wall clock at any speed); the rest at `speed`, and they are what is measured.
void drive(World& world, kx::Clock& base, kx::ManualClock* manual, double speed,
           const std::function<bool()>& step, RunResult& result) {
    QObject hands;
    kx::Timer* look = world.clock.createTimer(&hands);
    QEventLoop loop;
    quint32 start = 0;
    quint32 wallStart = 0;
    bool opened = false;
    QObject::connect(look, &kx::Timer::timeout, [&] {
        const bool done = step();
        if (!opened) {
            opened = true;
            world.clock.setSpeed(speed);
            start = world.clock.tickCount();
            wallStart = base.tickCount();
        }
        if (!done)
            return;
        look->stop();
        result.finished = true;
        result.plateSeconds = quint32(world.clock.tickCount() - start) / 1000.0;
        result.wallSeconds = quint32(base.tickCount() - wallStart) / 1000.0;
        loop.quit();
    });
    look->start(StepMs);
    if (manual) {
        const quint32 began = world.clock.tickCount();
        while (!result.finished && quint32(world.clock.tickCount() - began) < 24u * 3600 * 1000) {
            manual->advance(60'000);
            QCoreApplication::processEvents();
        }
    } else {
        QTimer::singleShot(WallLimitMs, &loop, &QEventLoop::quit);
        loop.exec();
    }
    if (result.wallSeconds > 0)
        result.achievedSpeed = result.plateSeconds / result.wallSeconds;
}

// The default plan of the noise test (an hour's warm-up, 20 excitations × 5 frequencies of a
// minute each, with their settling waits).
RunResult noiseTest(kx::Clock& base, double speed, kx::ManualClock* manual = nullptr) {
    World world(base);
    kx::frmNoise* dialog = nullptr;
    QPushButton* acquire = nullptr;
    bool started = false;
    RunResult result;
    drive(
        world, base, manual, speed,
        [&] {
            if (!dialog) {
                dialog = &world.open<kx::frmNoise>();
                dialog->setDevice(world.plate);
                dialog->show();
                acquire = control<QPushButton>(*dialog, "cmdAcquire");
                return acquire == nullptr;
            }
            if (!started) {
                acquire->click();
                started = true;
                return false;
            }
            return acquire->isEnabled(); // again, once the run is over
        },
        result);
    result.file = world.resultFile(QStringLiteral("*_Noise_*.TXT"));
    if (!result.finished || result.file.isEmpty())
        std::fprintf(stderr, "noise test unfinished after %.0f s of plate time: %s\n",
                     result.plateSeconds, qPrintable(world.prompt.events.join(u'|')));
    return result;
}

// Ten points by the calibration's own numbering: the zero on the empty plate, the weight
// carried to the point, the data, Next; then the matrix, the conditions and Save.
RunResult calibration(kx::Clock& base, double speed, kx::ManualClock* manual = nullptr) {
    World world(base);
    kx::frmCalibrate* dialog = nullptr;
    const auto click = [&dialog](const char* name) {
        if (QPushButton* button = control<QPushButton>(*dialog, name))
            button->click();
    };
    const auto type = [&dialog](const char* name, const char* text) {
        if (QLineEdit* box = control<QLineEdit>(*dialog, name))
            box->setText(QLatin1String(text));
    };
    kx::SimPlate& plate = *world.plate;
    // What the hands do, in order; each waits until the dialog is idle (Get Zero enabled).
    std::vector<std::function<void()>> moves;
    moves.push_back([&] {
        dialog = &world.open<kx::frmCalibrate>();
        type("txtDuration", "2");
        dialog->setDevice(world.plate);
        dialog->show();
    });
    for (const kx::PointXY& point : kx::CalibrationSettings::defaultPoints()) {
        moves.push_back([&] { plate.unload(); });
        moves.push_back([&] { click("cmdZero"); });
        moves.push_back([&plate, point] { plate.placeWeight(25, point.x, point.y); });
        moves.push_back([&] { click("cmdData"); });
        moves.push_back([&] { click("cmdNext"); });
    }
    moves.push_back([&] { plate.unload(); });
    moves.push_back([&] { click("cmdMatrix"); });
    moves.push_back([&] {
        type("txtOpNow", "JD7");
        type("txtCTemp", "22.5");
        type("txtCRH", "41");
        type("txtCPres", "1013.2");
        click("cmdFileSave");
    });
    std::size_t done = 0;
    RunResult result;
    drive(
        world, base, manual, speed,
        [&] {
            const QPushButton* zero = dialog ? control<QPushButton>(*dialog, "cmdZero") : nullptr;
            if (dialog && (!zero || !zero->isEnabled()))
                return !zero;
            if (done == moves.size())
                return true;
            moves[done++]();
            return false;
        },
        result);
    result.file = world.resultFile(QStringLiteral("*.cal"));
    return result;
}

RunResult noiseAtSpeedRun;
RunResult calibrationAtSpeedRun;

void reportRun(benchmark::State& state, const RunResult& run) {
    if (!run.finished || run.file.isEmpty())
        state.SkipWithError("the run did not finish with a result file");
    state.counters["plate_s"] = run.plateSeconds;
    state.counters["achieved"] = run.achievedSpeed;
}

void noiseTestAt1000(benchmark::State& state) {
    kx::QtClock wall;
    for (auto _ : state)
        noiseAtSpeedRun = noiseTest(wall, 1000);
    reportRun(state, noiseAtSpeedRun);
}

void calibrationAt100(benchmark::State& state) {
    kx::QtClock wall;
    for (auto _ : state)
        calibrationAtSpeedRun = calibration(wall, 100);
    reportRun(state, calibrationAtSpeedRun);
}

BENCHMARK(noiseTestAt1000)->Unit(benchmark::kSecond)->Iterations(1)->UseRealTime();
BENCHMARK(calibrationAt100)->Unit(benchmark::kSecond)->Iterations(1)->UseRealTime();

void compare(const char* what, const RunResult& atSpeed, const RunResult& atOne, double speed,
             const char* aim) {
    std::printf("%s at x%.0f: %.0f s of plate time in %.2f s of wall time, achieved x%.0f%s; "
                "result file (%lld bytes) %s the run at x1\n",
                what, speed, atSpeed.plateSeconds, atSpeed.wallSeconds, atSpeed.achievedSpeed, aim,
                static_cast<long long>(atSpeed.file.size()),
                atSpeed.finished && atOne.finished && !atSpeed.file.isEmpty() &&
                        atSpeed.file == atOne.file
                    ? "identical to"
                    : "DIFFERS from");
}

} // namespace

int main(int argc, char** argv) {
    QApplication app(offscreenByDefault(argc), argv);
    // The built-in fit, not an outside engine: that one answers at a moment of plate time that
    // depends on the machine, and never while a manual clock stands still.
    qputenv("PATH", "/nonexistent");
    RunReporter reporter;
    reporter.runAll(&argc, argv);

    kx::ManualClock manual;
    if (reporter.seconds("noiseTestAt1000") > 0)
        compare("Default noise-test plan through frmNoise", noiseAtSpeedRun,
                noiseTest(manual, 1, &manual), 1000, " (aim: under 30 s of wall time)");
    if (reporter.seconds("calibrationAt100") > 0)
        compare("Ten-point calibration through frmCalibrate", calibrationAtSpeedRun,
                calibration(manual, 1, &manual), 100, "");
    return 0;
}
