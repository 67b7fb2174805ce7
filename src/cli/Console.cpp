#include "cli/Console.h"

#include <QIODevice>

namespace kx::cli {

namespace {
// Back to the line's start, and the rest of the line cleared.
constexpr char RewriteLine[] = "\r\x1b[K";
} // namespace

Console::Console(QIODevice& out, QIODevice& err, bool errIsTerminal)
    : m_out(out)
    , m_err(err)
    , m_terminal(errIsTerminal) {}

Console::~Console() {
    endProgressLine();
}

void Console::write(QIODevice& device, const QString& text) {
    device.write(text.toUtf8());
}

void Console::endProgressLine() {
    if (m_progressShown)
        m_err.write("\n");
    m_progressShown = false;
}

void Console::print(const QString& text) {
    endProgressLine();
    write(m_out, text);
}

void Console::error(const QString& line) {
    endProgressLine();
    write(m_err, QStringLiteral("kxplate: ") + line + u'\n');
}

void Console::progress(const QString& line) {
    if (!m_terminal) {
        write(m_err, line + u'\n');
        return;
    }
    write(m_err, QLatin1String(RewriteLine) + line);
    m_progressShown = true;
}

void Console::transient(const QString& line) {
    if (m_terminal)
        progress(line);
}

} // namespace kx::cli
