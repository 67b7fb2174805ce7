#include "cli/ConsolePrompt.h"

#include "cli/Console.h"

namespace kx::cli {

ConsolePrompt::ConsolePrompt(Console& console, QString about)
    : m_console(console)
    , m_about(std::move(about)) {}

void ConsolePrompt::critical(const QString& text) {
    ++m_messages;
    m_console.error(m_about + text.simplified());
}

int ConsolePrompt::ask(const Question& question) {
    // What the question says before it asks: the text's first paragraph.
    const QString situation = question.text.section(QStringLiteral("\n\n"), 0, 0).simplified();
    const QString answer = question.choices.value(question.escapeChoice).remove(u'&');
    m_console.error(m_about + situation + QStringLiteral(" (answered: %1)").arg(answer));
    return question.escapeChoice;
}

std::optional<QString> ConsolePrompt::saveFileName(const FileDialogRequest&) {
    if (m_places.isEmpty())
        return std::nullopt;
    return m_places.takeFirst();
}

std::optional<QString> ConsolePrompt::openFileName(const FileDialogRequest&) {
    return std::nullopt;
}

bool ConsolePrompt::playSound(const QString&) {
    return false;
}

} // namespace kx::cli
