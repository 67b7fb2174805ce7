#pragma once

#include <QStringList>
#include <QStringView>
#include <functional>

namespace kx {

class SingleInstance;

// The start-up procedure: prepares the process, keeps the program to one running instance
// and lets "/REGISTER" end the run before any window appears.
class mLoader {
public:
    static constexpr int MaxArguments = 16;

    // Splits a command line into at most `maxArguments` arguments; the rest of the line is
    // ignored. Blanks and tabs separate; a double quote starts and ends a stretch in which
    // blanks belong to the argument. The quotes themselves are dropped, and "" gives an empty
    // argument.
    static QStringList splitCommandLine(QStringView line, int maxArguments = MaxArguments);

    // The program's arguments without the program name. On Windows they come from the raw
    // command line through splitCommandLine; elsewhere the shell has already split them.
    static QStringList arguments(const QStringList& argv);

    // True when the first argument, trimmed and upper-cased, is "/REGISTER".
    static bool isRegisterRequest(const QStringList& arguments);

    // Process set-up that only Windows has (common controls, error mode); nothing elsewhere.
    static void prepareProcess();

    // The start-up steps: ends at once (returning 0) when another instance holds `instance`
    // or when the arguments ask for registration; otherwise returns what `runMainWindow`
    // returns.
    static int run(SingleInstance& instance, const QStringList& arguments,
                   const std::function<int()>& runMainWindow);
};

} // namespace kx
