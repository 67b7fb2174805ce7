// kxcpl: the control panel on the built-in simulated plates.

#include "app/QtPrompt.h"
#include "app/SingleInstance.h"
#include "app/frmMain.h"
#include "app/mLoader.h"
#include "sim/ScenarioReader.h"
#include "sim/SimDriver.h"
#include "support/QtClock.h"

#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>

namespace {

void print(std::FILE* stream, const QString& text) {
    std::fputs(qPrintable(text), stream);
    std::fflush(stream);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication::setApplicationName(QStringLiteral("kxcpl"));
    QCoreApplication::setApplicationVersion(QStringLiteral(KX_VERSION));
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("KX Force Platforms Control Panel, running on simulated plates."));
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Show this help and the scenario format."));
    const QCommandLineOption scenarioFile(
        QStringLiteral("scenario"),
        QStringLiteral("Run on the plates and events of a scenario file."),
        QStringLiteral("FILE"));
    parser.addOption(help);
    parser.addOption(scenarioFile);
    if (!parser.parse(arguments)) {
        print(stderr, parser.errorText() + u'\n');
        return 2;
    }
    if (parser.isSet(help)) {
        print(stdout, parser.helpText() + u'\n' + kx::ScenarioReader::formatHelp());
        return 0;
    }

    kx::Scenario scenario = kx::Scenario::defaults();
    if (parser.isSet(scenarioFile)) {
        kx::ScenarioReader reader;
        std::optional<kx::Scenario> read = reader.readFile(parser.value(scenarioFile));
        if (!read) {
            print(stderr, reader.errorString() + u'\n');
            return 2;
        }
        scenario = *read;
    }

    kx::mLoader::prepareProcess();
    kx::SingleInstance instance;
    return kx::mLoader::run(instance, kx::mLoader::arguments(arguments), [&] {
        QApplication application(argc, argv);
        kx::QtClock clock;
        kx::QtPrompt prompt;
        kx::frmMain window(clock, prompt, [&] {
            auto driver = std::make_unique<kx::SimDriver>(clock);
            scenario.applyTo(*driver);
            return driver;
        });
        window.load();
        return application.exec();
    });
}
