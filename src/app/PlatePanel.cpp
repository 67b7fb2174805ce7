#include "app/PlatePanel.h"

#include "device/PlateError.h"
#include "device/TextBoxValidation.h"
#include "resources/StringTable.h"
#include "support/Prompt.h"

#include <QLabel>
#include <QLineEdit>
#include <QStyle>
#include <QStyleOptionFrame>

namespace kx {

QString plainCaption(int captionId) {
    QString caption = strings::text(captionId);
    caption.remove(u'&');
    if (caption.endsWith(u':'))
        caption.chop(1);
    return caption.trimmed();
}

PlatePanel::PlatePanel(const char* objectName, int captionId, Prompt& prompt,
                       const SelectedPlate& plate, QWidget* parent)
    : QGroupBox(strings::text(captionId), parent)
    , m_prompt(prompt)
    , m_plate(plate) {
    setObjectName(QLatin1String(objectName));
}

bool PlatePanel::withPlate(const std::function<void(PlateDevice&)>& calls) {
    PlateDevice* plate = m_plate.data();
    if (!plate)
        return false;
    return runDeviceHandler(m_prompt, [&] { calls(*plate); });
}

QLabel* PlatePanel::makeLabel(const char* objectName, int captionId) {
    auto* label = new QLabel(strings::text(captionId), this);
    label->setObjectName(QLatin1String(objectName));
    return label;
}

QLineEdit* PlatePanel::makeBox(const QString& objectName, const QString& accessibleName,
                               int characters, std::function<void()> validate) {
    auto* box = new QLineEdit(this);
    box->setObjectName(objectName);
    // The width the style gives a line edit whose text is `characters` digits, with the line
    // edit's own margin of 2 pixels each side of the text and room for the cursor, so that a
    // value of that many digits shows whole instead of scrolled.
    constexpr int InnerMargins = 2 * 2 + 1;
    QStyleOptionFrame option;
    option.initFrom(box);
    option.lineWidth = style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &option, box);
    const QSize text(box->fontMetrics().horizontalAdvance(QString(characters, u'0')) + InnerMargins,
                     box->sizeHint().height());
    box->setFixedWidth(style()->sizeFromContents(QStyle::CT_LineEdit, &option, text, box).width());
    box->setAccessibleName(accessibleName);
    TextBoxValidation::attach(box, std::move(validate));
    return box;
}

void PlatePanel::rejectInput(const std::function<void(PlateDevice&)>& showPlateValue) {
    withPlate(showPlateValue);
    m_prompt.beep();
}

} // namespace kx
