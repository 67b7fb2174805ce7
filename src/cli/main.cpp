// kxplate: the KX force plates from the command line, on the control panel's libraries and its
// simulated plates. No window ever opens; the report draws offscreen.

#include "cli/Command.h"
#include "cli/CommandFactory.h"
#include "cli/CommandLine.h"
#include "cli/Console.h"
#include "cli/ExitCode.h"
#include "cli/StopSignals.h"
#include "sim/ScenarioReader.h"
#include "sim/SimDriver.h"
#include "support/QtClock.h"
#include "support/ScaledClock.h"

#include <QFile>
#include <QGuiApplication>
#include <cstdio>
#include <memory>
#include <unistd.h>

namespace {

// The certificate is painted with fonts, which need a GUI application; it never shows a window,
// so the offscreen platform serves everywhere. The other commands need no GUI at all.
std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv, const QString& command) {
    if (command != QLatin1String("report"))
        return std::make_unique<QCoreApplication>(argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    return std::make_unique<QGuiApplication>(argc, argv);
}

} // namespace

int main(int argc, char** argv) {
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    const std::unique_ptr<QCoreApplication> application =
        makeApplication(argc, argv, kx::cli::commandWord(arguments));
    QCoreApplication::setApplicationName(QStringLiteral("kxplate"));
    QCoreApplication::setApplicationVersion(QStringLiteral(KX_VERSION));

    QFile out;
    QFile err;
    if (!out.open(stdout, QIODevice::WriteOnly | QIODevice::Unbuffered) ||
        !err.open(stderr, QIODevice::WriteOnly | QIODevice::Unbuffered))
        return kx::cli::FileError;
    kx::cli::Console console(out, err, ::isatty(STDERR_FILENO) == 1);

    const kx::cli::ParsedCommandLine parsed = kx::cli::parseCommandLine(arguments);
    if (!parsed.invocation) {
        if (!parsed.error.isEmpty())
            console.error(parsed.error);
        console.print(parsed.output);
        return parsed.exitCode;
    }
    const kx::cli::Invocation& invocation = *parsed.invocation;
    kx::Scenario scenario = kx::Scenario::defaults();
    if (!invocation.scenarioFile.isEmpty()) {
        kx::ScenarioReader reader;
        const std::optional<kx::Scenario> read = reader.readFile(invocation.scenarioFile);
        if (!read) {
            console.error(reader.errorString());
            return kx::cli::FileError;
        }
        scenario = *read;
    }

    // All the run's time, at the speed chosen (real time unless --speed says otherwise): every
    // wait below goes through it.
    kx::QtClock wallClock;
    kx::ScaledClock clock(wallClock, invocation.speed);
    kx::SimDriver driver(clock, kx::SimDriver::Pacing::Batched);
    scenario.applyTo(driver);

    const std::unique_ptr<kx::cli::Command> command =
        kx::cli::makeCommand(invocation, console, clock, driver);
    kx::cli::StopSignals stops;
    QObject::connect(&stops, &kx::cli::StopSignals::received, command.get(),
                     &kx::cli::Command::interrupt);
    QObject::connect(command.get(), &kx::cli::Command::finished, application.get(),
                     &QCoreApplication::exit);
    command->start();
    if (command->isFinished())
        return command->exitCode();
    return QCoreApplication::exec();
}
