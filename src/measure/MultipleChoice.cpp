#include "measure/MultipleChoice.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QRadioButton>

namespace kx {

MultipleChoice::MultipleChoice(QWidget* parent)
    : QWidget(parent)
    , m_group(new QButtonGroup(this))
    , m_row(new QHBoxLayout(this)) {
    m_row->setContentsMargins(0, 0, 0, 0);
    connect(m_group, &QButtonGroup::idClicked, this, &MultipleChoice::setValue);
}

void MultipleChoice::setCaptions(const QString& captions) {
    for (QAbstractButton* button : m_group->buttons())
        delete button;
    QStringList parts = captions.split(u'|');
    // Every caption ends in "|", so the text after the last one is no choice.
    parts.removeLast();
    for (int i = 0; i < parts.size(); ++i) {
        auto* button = new QRadioButton(parts[i], this);
        button->setObjectName(QStringLiteral("optChoice%1").arg(i));
        m_group->addButton(button, i);
        m_row->addWidget(button);
    }
    if (QAbstractButton* chosen = m_group->button(m_value))
        chosen->setChecked(true);
}

QStringList MultipleChoice::captions() const {
    QStringList texts;
    for (const QAbstractButton* button : m_group->buttons())
        texts << button->text();
    return texts;
}

void MultipleChoice::setValue(qint32 value) {
    QAbstractButton* button = m_group->button(value);
    if (!button)
        return;
    button->setChecked(true);
    if (value == m_value)
        return;
    m_value = value;
    Q_EMIT valueChanged(value);
}

} // namespace kx
