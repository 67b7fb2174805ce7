#pragma once

#include "support/Prompt.h"

#include <memory>

class QSoundEffect;

namespace kx {

// The prompt of a real run: Qt message boxes and file dialogs over the active window, the
// system beep, and sounds played in the background.
class QtPrompt final : public Prompt {
public:
    QtPrompt();
    ~QtPrompt() override;

    void critical(const QString& text) override;
    int ask(const Question& question) override;
    std::optional<QString> saveFileName(const FileDialogRequest& request) override;
    std::optional<QString> openFileName(const FileDialogRequest& request) override;
    void beep() override;
    bool playSound(const QString& path) override;

private:
    std::unique_ptr<QSoundEffect> m_sound; // created on the first sound
};

} // namespace kx
