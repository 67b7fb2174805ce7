#pragma once

#include "app/PlatePanel.h"

#include <array>

class QLabel;
class QLineEdit;
class QPushButton;

namespace kx {

class Clock;

// "Application Counters:": four counters and the date of their last change, kept in the
// plate's stored table beside the calibration matrix (row 3 and cell (0, 3)). "Set" writes
// all five.
class AppCountersPanel : public PlatePanel {
    Q_OBJECT
public:
    static constexpr int Counters = 4;

    AppCountersPanel(Clock& clock, Prompt& prompt, const SelectedPlate& plate,
                     QWidget* parent = nullptr);

    void fill(PlateDevice& plate);

    std::array<QLabel*, Counters> lblAppCounter{};
    std::array<QLineEdit*, Counters> txtAppCounter{};
    QLabel* lblAppLastDate;
    QLineEdit* txtAppLastDate;
    QPushButton* cmdSetCounters;

private:
    void showCounter(PlateDevice& plate, int index);
    void showDate(PlateDevice& plate);
    void setCounters();

    Clock& m_clock;
};

} // namespace kx
