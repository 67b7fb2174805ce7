#pragma once

#include "device/ToolDialog.h"

#include <array>

class QGroupBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QStatusBar;

namespace kx {

// "Device Zero": measures the converter channels of the unloaded plate for a chosen time and
// shows per channel the average in codes and volts, the RMS noise in codes and the
// signal-to-noise ratio; OK takes the averages as the plate's zero values.
class frmZero : public ToolDialog {
    Q_OBJECT
public:
    static constexpr int Channels = 4;

    explicit frmZero(const ToolContext& context, QWidget* parent = nullptr);

    QGroupBox* fraAcquisition;
    QLabel* lblFreq;
    QLabel* lblFreqTxt; // the plate's sampling frequency, or "No Platform"
    QLabel* lblDuration;
    QLineEdit* txtDuration; // seconds
    QPushButton* cmdAcquire;
    QGroupBox* fraZeroValues;
    // Channel i: average in codes at i, in volts at 4 + i.
    std::array<QLabel*, 2 * Channels> lblZeroAveTxt{};
    // Channel i: RMS noise in codes at i, signal-to-noise ratio in dB at 4 + i.
    std::array<QLabel*, 2 * Channels> lblZeroSDTxt{};
    QPushButton* cmdOK;
    QPushButton* cmdCancel;
    QProgressBar* ProgressBar1;
    QStatusBar* StatusBar1;

Q_SIGNALS:
    // OK wrote `codes` as the current zero value of `channel` (0-based).
    void zeroValueWritten(int channel, const QString& codes);

protected:
    void loading() override;
    void unloading() override;

private:
    QLabel* makeLabel(const QString& objectName, const QString& caption);
    QGroupBox* buildAcquisitionFrame();
    QGroupBox* buildZeroValuesFrame();
    void cmdAcquire_Click();
    void cmdOK_Click();
    void ZeroProgress(qint32 samples);
    void ZeroDone(const ChannelValues& average, const ChannelValues& deviation);
    void setButtonsEnabled(bool enabled);
    void showProgress(bool shown);
    void stopZero();

    float m_frequency = 0.0f;
    bool m_acquiring = false;
};

} // namespace kx
