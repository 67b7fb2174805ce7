#pragma once

#include <QObject>
#include <functional>

class QLineEdit;

namespace kx {

// The behaviour of a text box that edits a plate value: its whole text is selected when it
// gets the focus, and its validation runs when the user confirms an edit with Enter or leaves
// the box after editing it. A box left untouched writes nothing. Switching to another window
// or opening a popup is not leaving.
class TextBoxValidation : public QObject {
    Q_OBJECT
public:
    // `validate` runs on an edit's confirmation; `left`, when given, after every leave.
    static void attach(QLineEdit* edit, std::function<void()> validate,
                       std::function<void()> left = {});

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    TextBoxValidation(QLineEdit* edit, std::function<void()> validate, std::function<void()> left);
    void validateEdit();

    QLineEdit* m_edit;
    std::function<void()> m_validate;
    std::function<void()> m_left;
    bool m_edited = false;
};

} // namespace kx
