#include "cli/Command.h"

#include "cli/Console.h"
#include "cli/ExitCode.h"

namespace kx::cli {

Command::Command(Console& console, QObject* parent)
    : QObject(parent)
    , m_console(console) {}

void Command::interrupt(int signal) {
    finish(interruptedExitCode(signal));
}

void Command::finish(int exitCode) {
    if (m_finished)
        return;
    m_finished = true;
    m_exitCode = exitCode;
    Q_EMIT finished(exitCode);
}

void Command::fail(int exitCode, const QString& line) {
    if (m_finished)
        return;
    m_console.error(line);
    finish(exitCode);
}

} // namespace kx::cli
