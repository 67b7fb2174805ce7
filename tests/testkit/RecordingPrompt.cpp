#include "RecordingPrompt.h"

namespace kx::test {

void RecordingPrompt::critical(const QString& text) {
    messages << text;
    events << QStringLiteral("critical:") + text;
    if (whileMessageOpen)
        whileMessageOpen(text);
}

int RecordingPrompt::ask(const Question& question) {
    questions.push_back(question);
    events << QStringLiteral("ask:") + question.text;
    if (answers.empty())
        return question.escapeChoice;
    const int answer = answers.front();
    answers.pop_front();
    return answer;
}

std::optional<QString> RecordingPrompt::saveFileName(const FileDialogRequest& request) {
    return answerFileDialog(QStringLiteral("save:"), request);
}

std::optional<QString> RecordingPrompt::openFileName(const FileDialogRequest& request) {
    return answerFileDialog(QStringLiteral("open:"), request);
}

std::optional<QString> RecordingPrompt::answerFileDialog(const QString& kind,
                                                         const FileDialogRequest& request) {
    dialogs.push_back(request);
    events << kind + request.title;
    if (fileAnswers.empty())
        return std::nullopt;
    auto answer = fileAnswers.front();
    fileAnswers.pop_front();
    return answer;
}

bool RecordingPrompt::playSound(const QString& path) {
    events << QStringLiteral("sound:") + path;
    return true;
}

} // namespace kx::test
