#include "app/ConverterCommandsPanel.h"

#include "resources/StringTable.h"

#include <QGridLayout>
#include <QPushButton>

namespace kx {

ConverterCommandsPanel::ConverterCommandsPanel(Prompt& prompt, const SelectedPlate& plate,
                                               QWidget* parent)
    : PlatePanel("frmCalibrate", 400, prompt, plate, parent)
    , cmdCalSelf(makeCommand("cmdCalSelf", 410, &PlateDevice::CalibrateSelf))
    , cmdCalOffset(makeCommand("cmdCalOffset", 420, &PlateDevice::CalibrateOffset))
    , cmdCalFullScale(makeCommand("cmdCalFullScale", 430, &PlateDevice::CalibrateFullScale))
    , cmdPseudo(makeCommand("cmdPseudo", 440, &PlateDevice::CalibratePseudo)) {
    auto* layout = new QGridLayout(this);
    layout->addWidget(cmdCalSelf, 0, 0);
    layout->addWidget(cmdCalOffset, 0, 1);
    layout->addWidget(cmdCalFullScale, 1, 0);
    layout->addWidget(cmdPseudo, 1, 1);
}

QPushButton* ConverterCommandsPanel::makeCommand(const char* objectName, int captionId,
                                                 void (PlateDevice::*command)()) {
    auto* button = new QPushButton(strings::text(captionId), this);
    button->setObjectName(QLatin1String(objectName));
    connect(button, &QPushButton::clicked, this,
            [this, command] { withPlate([command](PlateDevice& plate) { (plate.*command)(); }); });
    return button;
}

} // namespace kx
