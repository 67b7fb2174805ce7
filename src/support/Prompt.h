#pragma once

#include <QString>
#include <QStringList>
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

// A question with a button for each answer. Used where going on could lose the user's work
// or end a long run, so that Enter and Esc each give a deliberate, harmless answer.
struct Question {
    QString text;
    QStringList choices;   // the buttons' captions, left to right ("&Save", "&Discard", ...)
    int defaultChoice = 0; // what Enter presses
    int escapeChoice = 0;  // what Esc and the box's own close button answer
};

// Everything the program shows or asks the user outside its own windows. Dialogs reach the
// user only through this, so tests can see and answer what a user would.
class Prompt {
public:
    virtual ~Prompt() = default;

    // A modal message box with the critical icon, one OK button and the application title
    // as caption. Returns when the user has closed it.
    virtual void critical(const QString& text) = 0;

    // A modal question box with the application title as caption; returns the index in
    // `choices` of the answer given.
    virtual int ask(const Question& question) = 0;

    // The chosen file name, or nothing when the user cancelled.
    virtual std::optional<QString> saveFileName(const FileDialogRequest& request) = 0;
    virtual std::optional<QString> openFileName(const FileDialogRequest& request) = 0;

    virtual void beep() = 0;

    // Starts playing a sound file without waiting for it; false when it cannot be played.
    virtual bool playSound(const QString& path) = 0;
};

} // namespace kx
