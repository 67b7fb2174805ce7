#include "device/TextBoxValidation.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QLineEdit>

namespace kx {

void TextBoxValidation::attach(QLineEdit* edit, std::function<void()> validate,
                               std::function<void()> left) {
    new TextBoxValidation(edit, std::move(validate), std::move(left));
}

TextBoxValidation::TextBoxValidation(QLineEdit* edit, std::function<void()> validate,
                                     std::function<void()> left)
    : QObject(edit)
    , m_edit(edit)
    , m_validate(std::move(validate))
    , m_left(std::move(left)) {
    edit->installEventFilter(this);
    connect(edit, &QLineEdit::textEdited, this, [this] { m_edited = true; });
}

bool TextBoxValidation::eventFilter(QObject* watched, QEvent* event) {
    if (watched != m_edit)
        return false;
    switch (event->type()) {
    case QEvent::FocusIn:
        // After the event: a mouse click that gave the focus would move the cursor again.
        QMetaObject::invokeMethod(m_edit, &QLineEdit::selectAll, Qt::QueuedConnection);
        break;
    case QEvent::KeyPress: {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter)
            validateEdit();
        break;
    }
    case QEvent::FocusOut: {
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        if (reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason)
            break;
        validateEdit();
        if (m_left)
            m_left();
        break;
    }
    default:
        break;
    }
    return false;
}

void TextBoxValidation::validateEdit() {
    if (!m_edited)
        return;
    m_edited = false;
    m_validate();
}

} // namespace kx
