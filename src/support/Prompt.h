#pragma once

#include <QString>
#include <optional>

namespace kx {

// The options of a save or open file dialog. The filter is in the "caption|pattern|..." form
// ("All Files (*.*)|*.*|Text Files (*.txt)|*.txt"), and filterIndex is 1-based.
struct FileDialogRequest {
    QString title;
    QString filter;
    int filterIndex = 1;
    QString defaultExtension; // with its dot: ".txt"
    QString initialFolder;
    QString fileName;
    bool overwritePrompt = false;
    bool pathMustExist = false;
    bool fileMustExist = false;
    bool hideReadOnly = false;
    bool noReadOnlyReturn = false;
};

// Everything the program shows or asks the user outside its own windows. Dialogs reach the
// user only through this, so tests can see and answer what a user would.
class Prompt {
public:
    virtual ~Prompt() = default;

    // A modal message box with the critical icon, one OK button and the application title
    // as caption. Returns when the user has closed it.
    virtual void critical(const QString& text) = 0;

    // The chosen file name, or nothing when the user cancelled.
    virtual std::optional<QString> saveFileName(const FileDialogRequest& request) = 0;
    virtual std::optional<QString> openFileName(const FileDialogRequest& request) = 0;

    virtual void beep() = 0;

    // Starts playing a sound file without waiting for it; false when it cannot be played.
    virtual bool playSound(const QString& path) = 0;
};

} // namespace kx
