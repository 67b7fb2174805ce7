#pragma once

#include "device/ToolDialog.h"

#include <QList>

class QFormLayout;
class QGroupBox;
class QLabel;
class QPushButton;
class QWidget;

namespace kx {

// "Extended Device Info": the service record a plate keeps about itself (identity,
// temperature extremes, USB enumerations, time in service, the last calibration and
// inspection), read when the plate is handed over and again after each reset. In service mode
// the technician can reset the temperature extremes, the enumeration count and the time in
// service.
class frmPlateInfoEx : public ToolDialog {
    Q_OBJECT
public:
    explicit frmPlateInfoEx(const ToolContext& context, QWidget* parent = nullptr);

    // The main window's service-panel flag; hand it over before the plate.
    void setServicePanels(bool on) { m_servicePanels = on; }
    void setDevice(PlateDevice* device) override;

    QGroupBox* FrmGeneralInfo;
    QLabel* lblSerialNumber;
    QLabel* lblSerialNumberTxt;
    QLabel* lblFirmware;
    QLabel* lblFrimwareTxt;
    QLabel* lblTMax;
    QLabel* lblTMaxTxt;
    QLabel* lblTact;
    QLabel* lblTactTxt;
    QLabel* lblTMin;
    QLabel* lblTMinTxt;
    QLabel* lblNUses;
    QLabel* lblNUsesTxt;
    QLabel* lblTimeOn;
    QLabel* lblTimeOnTxt;
    QGroupBox* frmDates;
    QLabel* lblCalDate;
    QLabel* lblCalDateTxt;
    QLabel* lblCalOper;
    QLabel* lblCalOperTxt;
    QLabel* lblInspDate;
    QLabel* lblInspDateTxt;
    QLabel* lblInspOper;
    QLabel* lblInspOperTxt;
    QPushButton* cmdOK;
    QPushButton* cmdResetTemp;
    QPushButton* cmdResetEnum;
    QPushButton* cmdResetTime;

private:
    // Maintenance command codes of ExecuteCommand.
    enum class Command : qint16 {
        ResetTemperatures = 157,
        ResetTimeInService = 158,
        ResetEnumerations = 160,
    };

    // A caption and its value on one row of a frame.
    void addField(QFormLayout* form, QLabel*& caption, const char* captionName, int captionOffset,
                  QLabel*& value, const char* valueName);
    void alignCaptions();
    QPushButton* makeButton(const char* objectName, int offset, Command command);
    void readRecord();
    void execute(Command command);

    // The reset buttons live here: disabling the row keeps them unusable outside service
    // mode, whatever the device-error reactions do to the buttons themselves.
    QWidget* m_resetButtons;
    QList<QLabel*> m_captions;
    bool m_servicePanels = false;
};

} // namespace kx
