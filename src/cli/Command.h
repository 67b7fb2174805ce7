#pragma once

#include <QObject>

namespace kx::cli {

class Console;

// One kxplate command. start() begins the work; finished() comes exactly once, from start()
// itself or later from the event loop, with the exit status. A command that waits never blocks:
// it waits on the clock, so the same command runs in real time in the program and in
// milliseconds on a test's manual clock.
class Command : public QObject {
    Q_OBJECT
public:
    virtual void start() = 0;
    // Ctrl+C or SIGTERM: the command ends early, keeping what it has gathered. Without
    // anything to keep it ends at once.
    virtual void interrupt(int signal);

    bool isFinished() const { return m_finished; }
    // Work off the clock is under way (a file written by its own thread): the event loop, not
    // the clock, brings what comes next.
    virtual bool waitsOnDisk() const { return false; }
    int exitCode() const { return m_exitCode; }

Q_SIGNALS:
    void finished(int exitCode);

protected:
    explicit Command(Console& console, QObject* parent = nullptr);

    Console& console() const { return m_console; }
    // Ends the command; later calls change nothing.
    void finish(int exitCode);
    // One error line, then the end.
    void fail(int exitCode, const QString& line);

private:
    Console& m_console;
    bool m_finished = false;
    int m_exitCode = 0;
};

} // namespace kx::cli
