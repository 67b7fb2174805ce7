#pragma once

#include "app/PlatePanel.h"

class QLabel;
class QLineEdit;
class QPushButton;

namespace kx {

// "General Info:": the plate's serial number (editable) and firmware version, and the button
// of the extended device information.
class GeneralInfoPanel : public PlatePanel {
    Q_OBJECT
public:
    GeneralInfoPanel(Prompt& prompt, const SelectedPlate& plate, QWidget* parent = nullptr);

    void fill(PlateDevice& plate);

    QLabel* lblSerialNumber;
    QLineEdit* txtSerialNumber;
    QLabel* lblFirmware;
    QLabel* lblFrimwareTxt;
    QPushButton* cmdDevInfoEx;

Q_SIGNALS:
    // A new serial number was written; the driver must enumerate the plate again.
    void serialNumberChanged();

private:
    void validateSerialNumber();
};

} // namespace kx
