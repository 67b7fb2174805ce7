#pragma once

#include <QStringList>
#include <QWidget>

class QButtonGroup;
class QHBoxLayout;

namespace kx {

// A row of mutually exclusive choices, such as the meter's speeds. The captions come from one
// text with "|" after each choice ("Fast|Medium|Slow|"); Value is the 0-based index of the
// chosen one. The user changes it by clicking or with the arrow keys.
class MultipleChoice : public QWidget {
    Q_OBJECT
    Q_PROPERTY(qint32 Value READ Value WRITE setValue NOTIFY valueChanged)
public:
    explicit MultipleChoice(QWidget* parent = nullptr);

    void setCaptions(const QString& captions);
    QStringList captions() const;

    qint32 Value() const { return m_value; }
    // An index outside the choices is ignored.
    void setValue(qint32 value);

Q_SIGNALS:
    void valueChanged(qint32 value);

private:
    QButtonGroup* m_group;
    QHBoxLayout* m_row;
    qint32 m_value = 0;
};

} // namespace kx
