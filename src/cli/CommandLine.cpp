#include "cli/CommandLine.h"

#include "cli/ExitCode.h"
#include "support/FileLocations.h"
#include "support/NumberFormat.h"
#include "support/ScaledClock.h"

#include <QCommandLineParser>
#include <QLocale>
#include <cmath>

namespace kx::cli {

namespace {

struct OptionDefinition {
    QStringList names;
    QString valueName; // empty for a switch
    QString help;
};

struct CommandDefinition {
    QString name;
    QString argument; // the positional argument's name, or empty
    QString synopsis; // the usage after "kxplate "
    QString summary;  // for the general help
    QString description;
    QList<OptionDefinition> options;
};

// The longest capture or zero: a day.
constexpr double MaxSeconds = 86400;
// The sampling frequencies the main window's box accepts.
constexpr float MinFrequency = 9;
constexpr float MaxFrequency = 1000;

const OptionDefinition Help{
    {QStringLiteral("h"), QStringLiteral("help")}, {}, QStringLiteral("Show this help.")};
const OptionDefinition Version{
    {QStringLiteral("version")}, {}, QStringLiteral("Show the version.")};
const OptionDefinition Scenario{
    {QStringLiteral("scenario")},
    QStringLiteral("FILE"),
    QStringLiteral("Run on the simulated plates and events of a scenario "
                   "file (kxcpl --help describes the format).")};
const OptionDefinition Speed{
    {QStringLiteral("speed")},
    QStringLiteral("N"),
    QStringLiteral("Run time N times faster than real time (1 to 1000, a whole "
                   "number), as kxcpl --speed does: the simulated plates, the "
                   "waits of the noise test and every acquisition.")};
const OptionDefinition Json{
    {QStringLiteral("json")}, {}, QStringLiteral("Write the result as one JSON document.")};
const OptionDefinition Output{{QStringLiteral("o"), QStringLiteral("output")},
                              QStringLiteral("FILE"),
                              QStringLiteral("The file to write.")};

const QList<CommandDefinition>& commands() {
    static const QList<CommandDefinition> all{
        {QStringLiteral("list"),
         {},
         QStringLiteral("list [--json]"),
         QStringLiteral("every plate: serial, firmware, calibrated, frequency, excitation"),
         QStringLiteral("Lists every plate found, as the main window finds them: serial number,\n"
                        "firmware version, whether it holds a calibration matrix, and its\n"
                        "sampling frequency and excitation in force. A plate that does not\n"
                        "answer is named on standard error and the exit status is 3."),
         {Json}},
        {QStringLiteral("info"),
         QStringLiteral("SERIAL"),
         QStringLiteral("info SERIAL [--json]"),
         QStringLiteral("one plate: identity, parameters, zero, matrix, switches, records"),
         QStringLiteral("Shows what the main window and the extended device information show of\n"
                        "a plate: identity, converter parameters (current and default), zero\n"
                        "values, calibration matrix, status switches, application counters and,\n"
                        "from firmware 2 on, its service record. Writes nothing to the plate."),
         {Json}},
        {QStringLiteral("capture"),
         QStringLiteral("SERIAL"),
         QStringLiteral("capture SERIAL --seconds N [--frequency HZ] "
                        "[--signals forces|bridges|cop] -o FILE"),
         QStringLiteral("capture the plate's signals to a file"),
         QStringLiteral("Captures the plate's samples for N seconds into a capture file, the\n"
                        "signals display's format, with its settings (resolution, loaded-plate\n"
                        "threshold). Progress goes to standard error with the latest values of\n"
                        "the signal set (by default the display's). Ctrl+C or SIGTERM ends the\n"
                        "capture early and still saves it; so does a fault the display stops for\n"
                        "(exit status 3). A file that cannot be written is saved in the documents\n"
                        "folder instead (exit status 4). The plate gets its resolution and\n"
                        "sampling frequency back."),
         {{{QStringLiteral("seconds")},
           QStringLiteral("N"),
           QStringLiteral("How long to capture, in seconds (up to 86400).")},
          {{QStringLiteral("frequency")},
           QStringLiteral("HZ"),
           QStringLiteral("Sampling frequency for the capture, 9 to 1000 Hz.")},
          {{QStringLiteral("signals")},
           QStringLiteral("SET"),
           QStringLiteral("forces (Fz, Mx, My), bridges (V1, V2, V3) or cop (Fz, CoPx, CoPy).")},
          Output}},
        {QStringLiteral("zero"),
         QStringLiteral("SERIAL"),
         QStringLiteral("zero SERIAL [--seconds N] [--write] [--json]"),
         QStringLiteral("the zero and its noise; --write stores it in the plate"),
         QStringLiteral(
             "Takes the zero of the unloaded plate as the zero dialog does: per channel\n"
             "the average in A/D codes and volts, the RMS noise and the SNR. With\n"
             "--write the averages become the plate's current zero values."),
         {{{QStringLiteral("seconds")},
           QStringLiteral("N"),
           QStringLiteral("How long to measure, in seconds (default 5).")},
          {{QStringLiteral("write")}, {}, QStringLiteral("Store the zero in the plate.")},
          Json}},
        {QStringLiteral("noise"),
         QStringLiteral("SERIAL"),
         QStringLiteral("noise SERIAL [--profile FILE] [-o FILE]"),
         QStringLiteral("the unattended noise test"),
         QStringLiteral("Runs the noise test with the plan of the profile on the noise dialog's\n"
                        "session: its waits, watchdog and suspect marks; the result file is\n"
                        "written after every test, with the run's log beside it. Each test's\n"
                        "line goes to standard output. Results that cannot be saved are saved\n"
                        "in the documents folder instead (exit status 4). The plate gets its\n"
                        "sampling frequency and excitation back however the run ends (Ctrl+C\n"
                        "and SIGTERM included)."),
         {{{QStringLiteral("profile")},
           QStringLiteral("FILE"),
           QStringLiteral("Take the plan from this INI file instead of the shared profile.")},
          {{QStringLiteral("o"), QStringLiteral("output")},
           QStringLiteral("FILE"),
           QStringLiteral("The result file (default <serial>_Noise_<n>.TXT in the documents "
                          "folder).")}}},
        {QStringLiteral("fit"),
         QStringLiteral("FILE.cal"),
         QStringLiteral("fit FILE.cal [--engine builtin|octave] [--json]"),
         QStringLiteral("the matrix of a calibration file, with its uncertainties"),
         QStringLiteral(
             "Fits the calibration matrix to the points of a calibration file as\n"
             "\"Compute Matrix\" does: each element with its uncertainty (± at about 95 %),\n"
             "the condition number, the error table and the points that do not fit."),
         {{{QStringLiteral("engine")},
           QStringLiteral("ENGINE"),
           QStringLiteral("builtin (default) or octave (GNU Octave; the built-in fit when it "
                          "fails).")},
          Json}},
        {QStringLiteral("report"),
         QStringLiteral("FILE.cal"),
         QStringLiteral("report FILE.cal -o FILE.pdf [--operator CODE]"),
         QStringLiteral("the calibration certificate as PDF"),
         QStringLiteral("Writes the calibration's certificate, as the calibration dialog's Report\n"
                        "writes it once the file's matrix is computed (built-in fit)."),
         {Output,
          {{QStringLiteral("operator")},
           QStringLiteral("CODE"),
           QStringLiteral("The operator the certificate names.")}}},
    };
    return all;
}

const CommandDefinition* findCommand(const QString& name) {
    for (const CommandDefinition& command : commands())
        if (command.name == name)
            return &command;
    return nullptr;
}

// Help text in lines of at most `width` columns, the first after `lead`, the others indented
// as far.
QString wrapped(const QString& lead, const QString& text, qsizetype width = 79) {
    const QString indent(lead.size(), u' ');
    QString out;
    QString line = lead;
    bool lineEmpty = true;
    for (const QString& word : text.split(u' ', Qt::SkipEmptyParts)) {
        if (!lineEmpty && line.size() + 1 + word.size() > width) {
            out += line + u'\n';
            line = indent;
            lineEmpty = true;
        }
        line += (lineEmpty ? QString() : QStringLiteral(" ")) + word;
        lineEmpty = false;
    }
    return out + line + u'\n';
}

QString optionLines(const QList<OptionDefinition>& options) {
    constexpr qsizetype Column = 24;
    QString text;
    for (const OptionDefinition& option : options) {
        QStringList names;
        for (const QString& name : option.names)
            names << (name.size() == 1 ? u'-' + name : QStringLiteral("--") + name);
        QString left = QStringLiteral("  ") + names.join(QStringLiteral(", "));
        if (!option.valueName.isEmpty())
            left += u' ' + option.valueName;
        if (left.size() >= Column) {
            text += left + u'\n';
            left.clear();
        }
        text += wrapped(left.leftJustified(Column), option.help);
    }
    return text;
}

QString generalHelp() {
    QString text = QStringLiteral(
        "Usage: kxplate [--scenario FILE] [--speed N] COMMAND [ARGUMENT] [OPTIONS]\n"
        "\n"
        "The KX force plates from scripts: the plates found, a plate's settings, a capture,\n"
        "a zero, the noise test, and the fit and certificate of calibration files. It works\n"
        "as the control panel (kxcpl) does, on the same plates, and never opens a window.\n"
        "\n"
        "Commands:\n");
    for (const CommandDefinition& command : commands())
        text += (QStringLiteral("  ") + command.name + u' ' + command.argument).leftJustified(24) +
                command.summary + u'\n';
    text += QStringLiteral("\nOptions:\n") + optionLines({Scenario, Speed, Help, Version}) +
            QStringLiteral(
                "\n"
                "\"kxplate COMMAND --help\" describes a command.\n"
                "\n"
                "Exit status:\n"
                "  0         success\n"
                "  2         usage error: an unknown command or option, a missing or bad value\n"
                "  3         device error: no such plate, a plate call failed, or a plate fault\n"
                "  4         file error: a file unreadable, damaged, or not written\n"
                "  130, 143  Ctrl+C or SIGTERM ended the command; what it gathered is saved\n"
                "\n") +
            fileLocationsHelp();
    return text;
}

QString commandHelp(const CommandDefinition& command) {
    return QStringLiteral("Usage: kxplate ") + command.synopsis + QStringLiteral("\n\n") +
           command.description + QStringLiteral("\n\nOptions:\n") +
           optionLines(command.options + QList<OptionDefinition>{Scenario, Speed, Help});
}

QCommandLineOption toOption(const OptionDefinition& definition) {
    QCommandLineOption option(definition.names);
    if (!definition.valueName.isEmpty())
        option.setValueName(definition.valueName);
    return option;
}

ParsedCommandLine usageError(const QString& line) {
    return {.invocation = std::nullopt, .exitCode = UsageError, .output = {}, .error = line};
}

// A number in [low, high], written with "." whatever the locale.
std::optional<double> number(const QString& text, double low, double high) {
    bool ok = false;
    const double value = QLocale::c().toDouble(text.trimmed(), &ok);
    if (!ok || !std::isfinite(value) || value < low || value > high)
        return std::nullopt;
    return value;
}

// Reads the options of `command` into `invocation`; an empty text when they are sound, else the
// usage error.
QString readOptions(const CommandDefinition& command, const QCommandLineParser& parser,
                    Invocation& invocation) {
    const auto has = [&](const char* name) {
        return std::any_of(
            command.options.begin(), command.options.end(),
            [&](const OptionDefinition& o) { return o.names.contains(QLatin1String(name)); });
    };
    const auto value = [&](const char* name) { return parser.value(QLatin1String(name)); };
    const auto isSet = [&](const char* name) {
        return has(name) && parser.isSet(QLatin1String(name));
    };

    invocation.json = isSet("json");
    invocation.write = isSet("write");
    if (isSet("seconds")) {
        const auto seconds = number(value("seconds"), 0, MaxSeconds);
        if (!seconds || *seconds <= 0)
            return QStringLiteral("--seconds \"%1\": a number of seconds above 0 and up to %2")
                .arg(value("seconds"))
                .arg(MaxSeconds);
        invocation.seconds = *seconds;
    } else if (command.name == QLatin1String("capture")) {
        return QStringLiteral("capture needs --seconds N");
    } else {
        invocation.seconds = 5; // the zero dialog's duration as the main window opens it
    }
    if (isSet("frequency")) {
        const auto hertz = number(value("frequency"), MinFrequency, MaxFrequency);
        if (!hertz)
            return QStringLiteral("--frequency \"%1\": a sampling frequency from %2 to %3 Hz")
                .arg(value("frequency"))
                .arg(MinFrequency)
                .arg(MaxFrequency);
        invocation.frequency = static_cast<float>(*hertz);
    }
    if (isSet("signals")) {
        const QString set = value("signals");
        if (set == QLatin1String("forces"))
            invocation.signalSet = DisplayType::Forces;
        else if (set == QLatin1String("bridges"))
            invocation.signalSet = DisplayType::Voltages;
        else if (set == QLatin1String("cop"))
            invocation.signalSet = DisplayType::Postural;
        else
            return QStringLiteral("--signals \"%1\": forces, bridges or cop").arg(set);
    }
    if (isSet("engine")) {
        const QString engine = value("engine");
        if (engine == QLatin1String("builtin"))
            invocation.engine = FitEngineChoice::BuiltIn;
        else if (engine == QLatin1String("octave"))
            invocation.engine = FitEngineChoice::Octave;
        else
            return QStringLiteral("--engine \"%1\": builtin or octave").arg(engine);
    }
    if (isSet("profile"))
        invocation.profile = value("profile");
    if (isSet("operator"))
        invocation.operatorCode = value("operator").trimmed();
    if (isSet("o"))
        invocation.output = value("o");
    const bool needsOutput =
        command.name == QLatin1String("capture") || command.name == QLatin1String("report");
    if (needsOutput && invocation.output.trimmed().isEmpty())
        return QStringLiteral("%1 needs -o FILE").arg(command.name);
    return {};
}

} // namespace

QString commandWord(const QStringList& arguments) {
    QStringList takesValue;
    for (const CommandDefinition& command : commands())
        for (const OptionDefinition& option :
             command.options + QList<OptionDefinition>{Scenario, Speed})
            if (!option.valueName.isEmpty())
                for (const QString& name : option.names)
                    takesValue << (name.size() == 1 ? u'-' + name : QStringLiteral("--") + name);
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        if (!argument.startsWith(u'-') || argument == QLatin1String("-"))
            return argument;
        if (takesValue.contains(argument))
            ++i;
    }
    return {};
}

ParsedCommandLine parseCommandLine(const QStringList& arguments) {
    const QString word = commandWord(arguments);
    const CommandDefinition* command = findCommand(word);
    if (!word.isEmpty() && !command)
        return usageError(
            QStringLiteral("\"%1\" is no command; kxplate --help lists them").arg(word));

    QCommandLineParser parser;
    QList<OptionDefinition> options{Scenario, Speed, Help};
    if (command)
        options += command->options;
    else
        options << Version;
    for (const OptionDefinition& option : options)
        parser.addOption(toOption(option));
    if (!parser.parse(arguments))
        return usageError(
            parser.errorText().remove(u'.').toLower() +
            (command ? QStringLiteral("; kxplate %1 --help lists its options").arg(command->name)
                     : QStringLiteral("; kxplate --help lists the options")));
    if (parser.isSet(QStringLiteral("help")))
        return {.invocation = std::nullopt,
                .exitCode = Success,
                .output = command ? commandHelp(*command) : generalHelp(),
                .error = {}};
    if (!command) {
        if (parser.isSet(QStringLiteral("version")))
            return {.invocation = std::nullopt,
                    .exitCode = Success,
                    .output = QStringLiteral("kxplate %1\n").arg(QStringLiteral(KX_VERSION)),
                    .error = {}};
        return usageError(QStringLiteral("no command given; kxplate --help lists them"));
    }

    Invocation invocation;
    invocation.command = command->name;
    invocation.scenarioFile = parser.value(QStringLiteral("scenario"));
    if (parser.isSet(QStringLiteral("speed"))) {
        const QString speed = parser.value(QStringLiteral("speed"));
        const std::optional<double> chosen = speedFromText(speed);
        if (!chosen)
            return usageError(speedRefusal(speed));
        invocation.speed = *chosen;
    }
    const QStringList positional = parser.positionalArguments().mid(1);
    if (!command->argument.isEmpty()) {
        if (positional.isEmpty())
            return usageError(QStringLiteral("%1 needs %2").arg(command->name, command->argument));
        (command->argument == QLatin1String("SERIAL") ? invocation.serial : invocation.file) =
            positional.front();
    }
    const qsizetype expected = command->argument.isEmpty() ? 0 : 1;
    if (positional.size() > expected)
        return usageError(
            QStringLiteral("%1 takes no argument \"%2\"").arg(command->name, positional[expected]));
    if (const QString error = readOptions(*command, parser, invocation); !error.isEmpty())
        return usageError(error);
    return {.invocation = invocation, .exitCode = Success, .output = {}, .error = {}};
}

} // namespace kx::cli
