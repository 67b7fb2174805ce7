#pragma once

#include "device/ToolDialog.h"
#include "measure/RefreshThrottle.h"
#include "scale/ScaleSettings.h"
#include "scale/WeightAverager.h"

#include <array>
#include <optional>

class QLabel;
class QProgressBar;
class QPushButton;
class QStatusBar;

namespace kx {

class Timer;

// "Digital Scale": the plate as a weighing scale. It shows the load in kilograms-force and in
// pounds-force and ounces-force, averaged over a long window that restarts when the load
// changes; it zeroes the plate on demand, and by itself while the display is off and a light
// tare rests on the plate (between the minimum and maximum tare). While open, the plate runs
// at the scale's sampling frequency; closing puts the plate's own frequency back.
class frmScale : public ToolDialog {
    Q_OBJECT
public:
    explicit frmScale(const ToolContext& context, QWidget* parent = nullptr);

    std::array<QLabel*, 2> lblData{}; // kilograms-force, pounds-force and ounces-force
    QLabel* lblError;                 // overrun or clipping mark, until the next reading
    QPushButton* cmdZero;
    QPushButton* cmdDisplay;
    QPushButton* cmdClose;
    QProgressBar* ProgressBar1;
    QStatusBar* StatusBar1;
    QLabel* StatusBar1Panel1; // serial number or status
    Timer* tmrPlateZero;      // automatic zero checks

protected:
    void loading() override;
    void unloading() override;

private:
    QWidget* buildDisplay();
    void updateButtons();
    void cmdDisplay_Click();
    void switchDisplay(bool on);
    void cmdZero_Click();
    void zeroProcedure();
    void tmrPlateZero_Timer();
    void resumeAutoZero();
    void endBusy();
    void stopRunning();
    void ForcesIn(const Float3& forces);
    void ZeroProgress(qint32 samples);
    void ZeroDone(const ChannelValues& zeroValues);
    void TestDone(qint32 count, const QList<Float3>& forces);
    qint32 checkSamples(float frequency) const;

    std::optional<ScaleSettings> m_settings; // read when a plate was handed in
    WeightAverager m_average;
    RefreshThrottle m_throttle;
    float m_savedFrequency = 0.0f;
    bool m_connected = false;
    bool m_displaying = false;
    bool m_zeroReady = false;
    bool m_busy = false;
    bool m_checking = false; // an automatic load check is running
};

} // namespace kx
