#pragma once

#include <QString>

class QIODevice;

namespace kx::cli {

// Where a command speaks: results on standard output, errors and progress on standard error.
// Every error is one line that begins with the program's name. On a terminal the progress is
// one line rewritten in place; elsewhere (a log, a pipe) each progress report is a line of its
// own and reports marked transient (a countdown) are left out.
class Console {
public:
    Console(QIODevice& out, QIODevice& err, bool errIsTerminal);
    // Ends a progress line still shown, so that the shell's prompt starts on a line of its own.
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    void print(const QString& text);
    void error(const QString& line);
    void progress(const QString& line);
    void transient(const QString& line);

private:
    void write(QIODevice& device, const QString& text);
    void endProgressLine();

    QIODevice& m_out;
    QIODevice& m_err;
    bool m_terminal;
    bool m_progressShown = false;
};

} // namespace kx::cli
