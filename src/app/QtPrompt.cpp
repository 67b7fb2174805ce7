#include "app/QtPrompt.h"

#include "app/FileDialogSetup.h"
#include "resources/StringTable.h"

#include <QApplication>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QSoundEffect>
#include <QUrl>

namespace kx {

namespace {

std::optional<QString> runFileDialog(const FileDialogRequest& request,
                                     QFileDialog::AcceptMode mode) {
    QFileDialog dialog(QApplication::activeWindow());
    setUpFileDialog(dialog, request, mode);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    return dialog.selectedFiles().constFirst();
}

} // namespace

QtPrompt::QtPrompt() = default;
QtPrompt::~QtPrompt() = default;

void QtPrompt::critical(const QString& text) {
    QMessageBox box(QMessageBox::Critical, strings::text(strings::ApplicationTitle), text,
                    QMessageBox::Ok, QApplication::activeWindow());
    box.exec();
}

int QtPrompt::ask(const Question& question) {
    QMessageBox box(QMessageBox::Question, strings::text(strings::ApplicationTitle), question.text,
                    QMessageBox::NoButton, QApplication::activeWindow());
    QList<QAbstractButton*> buttons;
    // One role for all keeps the buttons in the order given.
    for (const QString& choice : question.choices)
        buttons << box.addButton(choice, QMessageBox::ActionRole);
    box.setDefaultButton(qobject_cast<QPushButton*>(buttons.value(question.defaultChoice)));
    box.setEscapeButton(buttons.value(question.escapeChoice));
    box.exec();
    const auto answer = buttons.indexOf(box.clickedButton());
    return answer >= 0 ? int(answer) : question.escapeChoice;
}

std::optional<QString> QtPrompt::saveFileName(const FileDialogRequest& request) {
    return runFileDialog(request, QFileDialog::AcceptSave);
}

std::optional<QString> QtPrompt::openFileName(const FileDialogRequest& request) {
    return runFileDialog(request, QFileDialog::AcceptOpen);
}

void QtPrompt::beep() {
    QApplication::beep();
}

bool QtPrompt::playSound(const QString& path) {
    if (!QFileInfo(path).isFile())
        return false;
    if (!m_sound)
        m_sound = std::make_unique<QSoundEffect>();
    m_sound->setSource(QUrl::fromLocalFile(path));
    m_sound->play(); // starts once loaded, without waiting here
    return true;
}

} // namespace kx
