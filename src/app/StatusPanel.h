#pragma once

#include "app/PlatePanel.h"

class QCheckBox;

namespace kx {

// "Status:": the plate's four switches. A click writes the switch at once.
class StatusPanel : public PlatePanel {
    Q_OBJECT
public:
    StatusPanel(Prompt& prompt, const SelectedPlate& plate, QWidget* parent = nullptr);

    void fill(PlateDevice& plate);

    QCheckBox* chkPolled;
    QCheckBox* chkADSleep;
    QCheckBox* chkBkgCal;
    QCheckBox* chkPowerON;

private:
    QCheckBox* makeSwitch(const char* objectName, int captionId, void (*write)(PlateDevice&, bool));
};

} // namespace kx
