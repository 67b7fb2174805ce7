#pragma once

#include "device/PlateTypes.h"
#include "device/ToolDialog.h"

#include <QString>
#include <array>

class QLabel;
class QLineEdit;
class QPushButton;

namespace kx {

// "Program Device VID/PID/DID": reads and rewrites the plate's seven-byte USB identity (EEPROM
// flag, vendor, product and device identifiers), each byte edited as two hexadecimal digits.
// The presets only fill the boxes; nothing reaches the plate before Set.
class frmProgramID : public ToolDialog {
    Q_OBJECT
public:
    explicit frmProgramID(const ToolContext& context, QWidget* parent = nullptr);

    QLabel* lblEEPROM;
    QLabel* lblVID;
    QLabel* lblPID;
    QLabel* lblDID;
    QLineEdit* txtEEPROM;
    std::array<QLineEdit*, 2> txtVID;
    std::array<QLineEdit*, 2> txtPID;
    std::array<QLineEdit*, 2> txtDID;
    QPushButton* cmdSet;
    QPushButton* cmdGet;
    QPushButton* cmdExit;
    QPushButton* cmdFPDefaults;
    QPushButton* cmdBPDefaults;

private:
    QLabel* makeLabel(const char* objectName, int offset);
    QLineEdit* makeBox(const QString& objectName, const QString& accessibleName);
    QPushButton* makeButton(const char* objectName, int offset);

    void cmdGet_Click();
    void cmdSet_Click();
    void cmdFPDefaults_Click();
    void cmdBPDefaults_Click();
    void showIdentity(const UsbIdentity& identity);

    // The seven boxes in the order of the identity record.
    std::array<QLineEdit*, 7> m_boxes;
};

} // namespace kx
