#pragma once

#include "app/MatrixPanel.h"
#include "app/PlatePanel.h"
#include "device/DeviceErrorReporter.h"
#include "device/PlateDriver.h"
#include "device/ToolContext.h"
#include "device/ToolDialog.h"

#include <QMainWindow>
#include <QPointer>
#include <functional>
#include <memory>
#include <vector>

class QComboBox;
class QGroupBox;
class QLabel;
class QPushButton;

namespace kx {

class AppCountersPanel;
class Clock;
class ConverterCommandsPanel;
class ConverterPanel;
class GeneralInfoPanel;
class Prompt;
class StatusPanel;
class ZeroPanel;
class frmSplash;

// The control panel's main window. It owns the run's plate driver and the selected plate,
// keeps the device list in step with the driver's events, shows and edits the selected
// plate in its panels, and opens the tool dialogs: while a dialog is open the main window is
// disabled and hidden, and the dialog's unload gives it back.
//
// Two layouts: the normal one, and the service layout with the status, converter-command and
// counter panels, the turbo / decimation row and the service tool buttons, reached by a
// middle click on the window background with exactly Shift and Ctrl held. The background's
// tooltip says so.
class frmMain : public QMainWindow {
    Q_OBJECT
public:
    using DriverFactory = std::function<std::unique_ptr<PlateDriver>()>;
    using ToolFactory = std::function<ToolDialog*()>;

    frmMain(Clock& clock, Prompt& prompt, DriverFactory createDriver, QWidget* parent = nullptr);
    ~frmMain() override;

    // The load steps: the splash screen, the driver and the opening of the devices; the
    // window lays itself out and shows 1000 ms later, once the first list events are in.
    void load();

    // Makes `button` open the dialog that `create` makes, handing it the selected plate; a
    // second registration for the same button replaces the first. A tool button without a
    // dialog stays disabled.
    void addTool(QPushButton* button, ToolFactory create);
    ToolContext toolContext() const { return {m_clock, m_prompt}; }
    // How many times faster than real time the simulated plates run: said in the title
    // whenever it is not 1, so that nobody takes a fast run for a real one.
    void showTimeSpeed(double speed);
    bool servicePanels() const { return m_servicePanels; }
    PlateDevice* selectedDevice() const { return m_device; }

    QGroupBox* frmDevices;
    QComboBox* cbxDevice;
    QPushButton* cmdDevOpen;
    QPushButton* cmdDevRefresh;
    QPushButton* cmdDevClose;
    GeneralInfoPanel* frmGeneralInfo;
    ConverterPanel* frmConverter;
    ZeroPanel* frmZero;
    MatrixPanel* frmCalibration;
    StatusPanel* frmStatus;
    ConverterCommandsPanel* frmCalibrate;
    AppCountersPanel* frmAppCounters;
    QPushButton* cmdGetZero;
    QPushButton* cmdMeter;
    QPushButton* cmdScale;
    QPushButton* cmdAcquire;
    QPushButton* cmdProgramID;
    QPushButton* cmdEncoder;
    QPushButton* cmdNoise;
    QPushButton* cmdCalibrate;
    QPushButton* cmdClose;
    QLabel* StatusBar1Panel1; // enumeration state
    QLabel* StatusBar1Panel2; // plate and HID counts

Q_SIGNALS:
    // A tool dialog is about to be handed the plate of this serial number and shown.
    void toolOpening(ToolDialog* dialog, const QString& serial);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    struct Tool {
        QPushButton* button;
        ToolFactory create;
        QPointer<ToolDialog> dialog;
    };

    QWidget* buildCentralWidget();
    QPushButton* makeButton(const char* objectName, int captionId, QWidget* parent);
    void finishLoad();
    void centre();
    void keepOnScreen();
    void applyLayout();
    void showServicePanels();

    // The selection handler: the plate of the selected entry becomes the selected device and
    // fills every panel; with nothing selected the panels and tool buttons are disabled.
    void showSelectedDevice();
    void fillPanels(PlateDevice& plate, MatrixPanel::TypedText typedCells);
    // After a tool dialog: the panels show what the plate now holds.
    void showWhatThePlateHolds();
    void appendEntry(const QString& serial);
    void setPlatePanelsEnabled(bool enabled);
    void PlateListUpdateBegin();
    void PlateArrived(const QString& id, const QString& serial);
    void PlateRemoved(const QString& id, const QString& serial);
    void PlateListUpdateDone();
    void openDevices();
    void refreshDevices();
    void closeDevices();
    void takeUpNewSerialNumber();
    void writeResolution24();

    void openTool(Tool& tool);
    void unload();

    Clock& m_clock;
    Prompt& m_prompt;
    DriverFactory m_createDriver;
    std::unique_ptr<PlateDriver> m_driver;
    SelectedPlate m_device;
    DeviceErrorReporter* m_errors;
    std::vector<Tool> m_tools;
    QPointer<frmSplash> m_splash;
    bool m_servicePanels = false;
    bool m_unloaded = false;
};

} // namespace kx
