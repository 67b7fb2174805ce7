#include "cli/CommandFactory.h"

#include "cli/CaptureCommand.h"
#include "cli/CommandLine.h"
#include "cli/FitCommand.h"
#include "cli/InfoCommand.h"
#include "cli/ListCommand.h"
#include "cli/NoiseCommand.h"
#include "cli/ReportCommand.h"
#include "cli/ZeroCommand.h"

namespace kx::cli {

std::unique_ptr<Command> makeCommand(const Invocation& in, Console& console, Clock& clock,
                                     PlateDriver& driver) {
    const QString& name = in.command;
    if (name == QLatin1String("list"))
        return std::make_unique<ListCommand>(console, clock, driver, in.json);
    if (name == QLatin1String("info"))
        return std::make_unique<InfoCommand>(console, clock, driver, in.serial, in.json);
    if (name == QLatin1String("capture"))
        return std::make_unique<CaptureCommand>(console, clock, driver,
                                                CaptureCommand::Options{.serial = in.serial,
                                                                        .seconds = in.seconds,
                                                                        .frequency = in.frequency,
                                                                        .signalSet = in.signalSet,
                                                                        .output = in.output});
    if (name == QLatin1String("zero"))
        return std::make_unique<ZeroCommand>(
            console, clock, driver,
            ZeroCommand::Options{
                .serial = in.serial, .seconds = in.seconds, .write = in.write, .json = in.json});
    if (name == QLatin1String("noise"))
        return std::make_unique<NoiseCommand>(
            console, clock, driver,
            NoiseCommand::Options{.serial = in.serial, .profile = in.profile, .output = in.output});
    if (name == QLatin1String("fit"))
        return std::make_unique<FitCommand>(console, in.file, in.engine, in.json);
    return std::make_unique<ReportCommand>(console, in.file, in.output, in.operatorCode);
}

} // namespace kx::cli
