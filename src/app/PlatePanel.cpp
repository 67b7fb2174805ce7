#include "app/PlatePanel.h"

#include "device/PlateError.h"
#include "device/TextBoxValidation.h"
#include "resources/StringTable.h"
#include "support/Prompt.h"

#include <QLabel>
#include <QLineEdit>

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
                               std::function<void()> validate) {
    auto* box = new QLineEdit(this);
    box->setObjectName(objectName);
    box->setAccessibleName(accessibleName);
    TextBoxValidation::attach(box, std::move(validate));
    return box;
}

void PlatePanel::rejectInput(const std::function<void(PlateDevice&)>& showPlateValue) {
    withPlate(showPlateValue);
    m_prompt.beep();
}

} // namespace kx
