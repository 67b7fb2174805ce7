// kxcpl: the control panel on the built-in simulated plates.

#include "app/BenchLink.h"
#include "app/QtPrompt.h"
#include "app/SingleInstance.h"
#include "app/frmMain.h"
#include "app/mLoader.h"
#include "resources/StringTable.h"
#include "sim/ScenarioReader.h"
#include "sim/SimDriver.h"
#include "sim/frmSimBench.h"
#include "support/FileLocations.h"
#include "support/QtClock.h"
#include "support/ScaledClock.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QPointer>
#include <cstdio>
#include <optional>

namespace {

void print(std::FILE* stream, const QString& text) {
    std::fputs(qPrintable(text), stream);
    std::fflush(stream);
}

// The text broken between words into lines of at most `width` characters, each ended by a
// line break, as the rest of the help is.
QString wrapped(const QString& text, qsizetype width = 79) {
    QString result;
    QString line;
    for (const QString& word : text.split(u' ', Qt::SkipEmptyParts)) {
        if (!line.isEmpty() && line.size() + 1 + word.size() > width) {
            result += line + u'\n';
            line.clear();
        }
        line += (line.isEmpty() ? QString() : QStringLiteral(" ")) + word;
    }
    return result + line + u'\n';
}

// What the command line asks for besides the start-up steps: the scenario to run on, or an
// exit code when the run ends here (help shown, bad option, unreadable scenario).
struct Options {
    std::optional<int> exitCode;
    kx::Scenario scenario = kx::Scenario::defaults();
    bool bench = false;
    double speed = 1;
};

Options readOptions(int argc, char** argv) {
    // For the parser's help text only; the window's application object comes later, and only
    // when a window is to be shown.
    QCoreApplication core(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("KX Force Platforms Control Panel, running on simulated plates."));
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Show this help and the scenario format."));
    const QCommandLineOption scenarioFile(
        QStringLiteral("scenario"),
        QStringLiteral("Run on the plates and events of a scenario file."), QStringLiteral("FILE"));
    const QCommandLineOption version(QStringLiteral("version"),
                                     QStringLiteral("Show the program's version."));
    const QCommandLineOption bench(
        QStringLiteral("bench"),
        QStringLiteral("Open the \"Simulated Plates\" bench window too, to load the plates by hand "
                       "and give them faults. From the main window: %1.")
            .arg(kx::frmSimBench::shortcut().toString(QKeySequence::NativeText)));
    const QCommandLineOption speed(
        QStringLiteral("speed"),
        QStringLiteral("Run time N times faster than real time (1 to 1000, a whole number; the "
                       "bench offers 1, 10, 100 and 1000): the simulated plates, the waits of "
                       "the noise test, the acquisitions and every timer of the program. The main "
                       "window's title says so while N is not 1."),
        QStringLiteral("N"), QStringLiteral("1"));
    parser.addOption(help);
    parser.addOption(version);
    parser.addOption(scenarioFile);
    parser.addOption(bench);
    parser.addOption(speed);
    Options options;
    if (!parser.parse(QCoreApplication::arguments())) {
        print(stderr, parser.errorText() + u'\n');
        options.exitCode = 2;
    } else if (!kx::speedFromText(parser.value(speed))) {
        print(stderr, kx::speedRefusal(parser.value(speed)) + u'\n');
        options.exitCode = 2;
    } else if (parser.isSet(help)) {
        print(stdout, parser.helpText() + u'\n' +
                          wrapped(kx::strings::text(kx::strings::mainwindow::ServiceLayoutHint)) +
                          u'\n' + kx::fileLocationsHelp() + u'\n' +
                          kx::ScenarioReader::formatHelp());
        options.exitCode = 0;
    } else if (parser.isSet(version)) {
        print(stdout, QCoreApplication::applicationName() + u' ' +
                          QCoreApplication::applicationVersion() + u'\n');
        options.exitCode = 0;
    } else if (parser.isSet(scenarioFile)) {
        kx::ScenarioReader reader;
        if (std::optional<kx::Scenario> read = reader.readFile(parser.value(scenarioFile))) {
            options.scenario = *read;
        } else {
            print(stderr, reader.errorString() + u'\n');
            options.exitCode = 2;
        }
    }
    options.bench = parser.isSet(bench);
    options.speed = kx::speedFromText(parser.value(speed)).value_or(1);
    return options;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication::setApplicationName(QStringLiteral("kxcpl"));
    QCoreApplication::setApplicationVersion(QStringLiteral(KX_VERSION));
    // Lets the desktop match the window to its menu entry and icon.
    QGuiApplication::setDesktopFileName(QStringLiteral(KX_DESKTOP_ID));
    const Options options = readOptions(argc, argv);
    if (options.exitCode)
        return *options.exitCode;
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);

    kx::mLoader::prepareProcess();
    kx::SingleInstance instance;
    return kx::mLoader::run(instance, kx::mLoader::arguments(arguments), [&] {
        QApplication application(argc, argv);
        kx::QtClock wallClock;
        // All the program's time, so the bench can run it faster while every plate is
        // simulated (always, here).
        kx::ScaledClock clock(wallClock, options.speed);
        kx::QtPrompt prompt;
        kx::SimDriver* plates = nullptr;
        kx::frmMain window(clock, prompt, [&] {
            // Each wake-up of the event loop costs as much as hundreds of samples.
            auto driver = std::make_unique<kx::SimDriver>(clock, kx::SimDriver::Pacing::Batched);
            options.scenario.applyTo(*driver);
            plates = driver.get();
            return driver;
        });
        window.showTimeSpeed(clock.speed());
        QObject::connect(&clock, &kx::ScaledClock::speedChanged, &window,
                         &kx::frmMain::showTimeSpeed);
        window.load();
        // The bench goes by itself when the main window lets go of the driver. It refreshes
        // on the wall clock: the screen shows no more at a higher speed.
        QPointer<kx::frmSimBench> bench = new kx::frmSimBench(*plates, wallClock);
        bench->installShortcut(window);
        bench->setTimeControl(clock);
        bench->placeBeside(window);
        kx::linkBenchToWindows(window, *bench);
        if (options.bench)
            bench->bringToFront();
        const int exitCode = application.exec();
        delete bench;
        return exitCode;
    });
}
