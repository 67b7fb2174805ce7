#pragma once

#include "support/Prompt.h"

#include <QStringList>
#include <deque>
#include <functional>
#include <optional>

namespace kx::test {

// Stands in for the user: records every message, dialog request, beep and sound, and answers
// file dialogs from a queue (an empty queue answers "cancelled").
class RecordingPrompt final : public Prompt {
public:
    void critical(const QString& text) override;
    // Answers from `answers`; an empty queue answers as Esc would.
    int ask(const Question& question) override;
    std::optional<QString> saveFileName(const FileDialogRequest& request) override;
    std::optional<QString> openFileName(const FileDialogRequest& request) override;
    void beep() override {
        ++beeps;
        events << QStringLiteral("beep");
    }
    bool playSound(const QString& path) override;

    QStringList messages;                   // critical texts, in order
    QStringList events;                     // "critical:<text>", "beep", "sound:<path>", ...
    std::vector<FileDialogRequest> dialogs; // every file dialog asked for
    std::deque<std::optional<QString>> fileAnswers;
    std::vector<Question> questions; // every question asked ("ask:<text>" in events)
    std::deque<int> answers;
    int beeps = 0;
    // Runs while a message box is "open", as the user's event loop would.
    std::function<void(const QString&)> whileMessageOpen;

private:
    std::optional<QString> answerFileDialog(const QString& kind, const FileDialogRequest& request);
};

} // namespace kx::test
