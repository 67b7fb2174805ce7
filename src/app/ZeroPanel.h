#pragma once

#include "app/PlatePanel.h"
#include "device/PlateTypes.h"

#include <array>

class QLabel;
class QLineEdit;
class QPushButton;

namespace kx {

// "Zero Values (Converter Codes):": the zero value of converter channels 1 to 3 in force and
// as power-on default. The fourth channel's row exists but is never shown.
class ZeroPanel : public PlatePanel {
    Q_OBJECT
public:
    static constexpr int Channels = 4;

    ZeroPanel(Prompt& prompt, const SelectedPlate& plate, QWidget* parent = nullptr);

    // Channel index 3 shows "0" and is hidden.
    void hideFourthChannel();
    // One channel's row from the plate, shown.
    void fillChannel(PlateDevice& plate, int channel);

    std::array<QLabel*, Channels> lblZero{};
    std::array<QLineEdit*, Channels> txtZeroDef{};
    std::array<QLineEdit*, Channels> txtZeroCurr{};
    QLabel* lblZeroDef;
    QLabel* lblZeroCurr;
    QPushButton* cmdStoreDefZero;

private:
    QLineEdit* box(int channel, Which which) const;
    void setChannelVisible(int channel, bool visible);
    void validate(int channel, Which which);
    void storeDefaults();
};

} // namespace kx
