#pragma once

#include "cli/CalFileFit.h"
#include "measure/SignalSet.h"

#include <QString>
#include <QStringList>
#include <optional>

namespace kx::cli {

// What the command line asks kxplate to do.
struct Invocation {
    QString command; // list, info, capture, zero, noise, fit, report
    QString scenarioFile;
    double speed = 1; // how many times faster than real time the plates' time runs
    QString serial;   // info, capture, zero, noise
    QString file;     // fit, report: the calibration file
    QString output;   // -o
    double seconds = 0;
    std::optional<float> frequency;
    std::optional<DisplayType> signalSet;
    bool json = false;
    bool write = false;
    QString profile;
    QString operatorCode;
    FitEngineChoice engine = FitEngineChoice::BuiltIn;
};

// The outcome of reading the command line: an invocation to run, or the end of the run with
// a text for standard output (help, version) or one error line (a usage error).
struct ParsedCommandLine {
    std::optional<Invocation> invocation;
    int exitCode = 0;
    QString output;
    QString error;
};

// `arguments` as the process got them, the program first.
ParsedCommandLine parseCommandLine(const QStringList& arguments);

// The command word of `arguments` (the first argument that is no option and no option's
// value), or empty; needed before the application object exists, to choose its kind.
QString commandWord(const QStringList& arguments);

} // namespace kx::cli
