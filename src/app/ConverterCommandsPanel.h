#pragma once

#include "app/PlatePanel.h"

class QPushButton;

namespace kx {

// "Calibrate Converters:": the plate's four converter calibration commands.
class ConverterCommandsPanel : public PlatePanel {
    Q_OBJECT
public:
    ConverterCommandsPanel(Prompt& prompt, const SelectedPlate& plate, QWidget* parent = nullptr);

    QPushButton* cmdCalSelf;
    QPushButton* cmdCalOffset;
    QPushButton* cmdCalFullScale;
    QPushButton* cmdPseudo;

private:
    QPushButton* makeCommand(const char* objectName, int captionId, void (PlateDevice::*command)());
};

} // namespace kx
