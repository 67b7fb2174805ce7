#pragma once

#include "device/ToolDialog.h"

class QLabel;
class QPushButton;

namespace kx {

class Timer;

// "Encoder Read": polls the plate's encoder input while the dialog is open and shows each
// answer as it arrives. A request whose answer is still out does not hold back the next.
class frmEncoder : public ToolDialog {
    Q_OBJECT
public:
    // Polling period of Timer1.
    static constexpr int PollIntervalMs = 250;

    explicit frmEncoder(const ToolContext& context, QWidget* parent = nullptr);

    // Polling runs exactly while a plate is held.
    void setDevice(PlateDevice* device) override;

    QLabel* Label2; // caption
    QLabel* Label1; // encoder value
    QPushButton* cmdOK;
    Timer* Timer1;

protected:
    void unloading() override;

private:
    void Timer1_Timer();
    void EncoderIn(qint32 value);
};

} // namespace kx
