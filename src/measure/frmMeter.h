#pragma once

#include "device/ToolDialog.h"
#include "measure/MeterSettings.h"
#include "measure/RefreshThrottle.h"
#include "measure/VoltageAverager.h"

#include <array>
#include <optional>

class QGroupBox;
class QLabel;
class QPushButton;
class QStatusBar;

namespace kx {

class MultipleChoice;

// "Channel Signals Meter": the plate's three bridge channels as DC voltages averaged over
// each read-out period, at a speed the user picks, beside the plate's serial number, firmware
// and the gage excitation the meter sets. The meter sets the plate's excitation, sampling
// frequency and zero values from its settings while it is open and puts the plate's own
// back when it closes.
class frmMeter : public ToolDialog {
    Q_OBJECT
public:
    explicit frmMeter(const ToolContext& context, QWidget* parent = nullptr);

    QGroupBox* FrmPlate;
    QLabel* lblSerialNumberCap;
    QLabel* lblSerialNumber;
    QLabel* lblFirmwareCap;
    QLabel* lblFirmware;
    QLabel* lblExcVCap;
    QLabel* lblExcV;
    QLabel* lblData; // one line per channel
    MultipleChoice* mchSpeed;
    QLabel* lblError;
    QPushButton* cmdDisplay;
    QPushButton* cmdOK;
    QStatusBar* StatusBar1;

protected:
    void loading() override;
    void unloading() override;

private:
    // What the meter changes on the plate, as the plate had it.
    struct PlateConfiguration {
        float gageVoltage = 0.0f;
        float sampleFrequency = 0.0f;
        std::array<qint32, 4> zeroValues{};
    };

    QLabel* makeLabel(const char* objectName, const QString& caption);
    void cmdDisplay_Click();
    void switchDisplayOff();
    void ForcesIn(const Float3& volts);

    MeterSettings m_settings;
    std::optional<PlateConfiguration> m_saved;
    qint32 m_basePeriodMs = 0;
    VoltageAverager m_volts;
    RefreshThrottle m_throttle;
    bool m_displaying = false;
};

} // namespace kx
