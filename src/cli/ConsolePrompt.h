#pragma once

#include "support/Prompt.h"

#include <QString>
#include <QStringList>

namespace kx::cli {

class Console;

// The prompt of a session run from the command line, where nobody is there to answer. A
// message is one error line; a question is told in one line with the answer Esc would give,
// which is the harmless one; a file name is asked only when a file could not be saved, and
// then the places offered take their turn.
class ConsolePrompt final : public Prompt {
public:
    // `about` begins every line ("plate 20418: ").
    ConsolePrompt(Console& console, QString about);

    void critical(const QString& text) override;
    int ask(const Question& question) override;
    std::optional<QString> saveFileName(const FileDialogRequest& request) override;
    std::optional<QString> openFileName(const FileDialogRequest& request) override;
    void beep() override {}
    bool playSound(const QString& path) override;

    // The places saveFileName() answers with, one a call, then nothing.
    void offerPlaces(const QStringList& paths) { m_places = paths; }
    // How many messages were told: each is a failure the exit status must show.
    int messagesTold() const { return m_messages; }

private:
    Console& m_console;
    QString m_about;
    QStringList m_places;
    int m_messages = 0;
};

} // namespace kx::cli
