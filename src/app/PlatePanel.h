#pragma once

#include "device/PlateDevice.h"

#include <QGroupBox>
#include <QPointer>
#include <functional>

class QLabel;
class QLineEdit;

namespace kx {

class Prompt;

// The selected plate as the main window's panels see it: empty when no plate is selected.
using SelectedPlate = QPointer<PlateDevice>;

// A frame of the main window that shows and edits values of the selected plate.
class PlatePanel : public QGroupBox {
    Q_OBJECT
protected:
    PlatePanel(const char* objectName, int captionId, Prompt& prompt, const SelectedPlate& plate,
               QWidget* parent);

    Prompt& prompt() const { return m_prompt; }
    bool hasPlate() const { return !m_plate.isNull(); }

    // Runs plate calls on the selected plate at the device-handler boundary; nothing when no
    // plate is selected. False when there was no plate or a call failed.
    bool withPlate(const std::function<void(PlateDevice&)>& calls);

    // A label with a caption from the string table.
    QLabel* makeLabel(const char* objectName, int captionId);
    // A plate-value box as wide as `characters` digits: selects all on focus, runs `validate`
    // when an edit is confirmed, and carries `accessibleName` for screen readers.
    QLineEdit* makeBox(const QString& objectName, const QString& accessibleName, int characters,
                       std::function<void()> validate);

    // For text that is not a number: put the plate's value back and sound the beep.
    void rejectInput(const std::function<void(PlateDevice&)>& showPlateValue);

private:
    Prompt& m_prompt;
    const SelectedPlate& m_plate;
};

// A caption without its mnemonic marker and trailing colon: "Gage Voltage (V)".
QString plainCaption(int captionId);

} // namespace kx
