#pragma once

#include "device/ToolDialog.h"
#include "measure/AcquireSettings.h"
#include "measure/DriftAccumulator.h"
#include "measure/SignalSet.h"
#include "measure/TestSignal.h"
#include "support/NumberFormat.h"

#include <array>
#include <optional>

class QCheckBox;
class QGroupBox;
class QLabel;
class QProgressBar;
class QPushButton;
class QRadioButton;

namespace kx {

class CaptureJournal;
class CaptureSaver;
class StripChart;
class Timer;

// "Real Time Signals Display and Data Acquisition": three signals of the plate on three
// stacked strip charts as the samples arrive, with a cursor read-out; capture of the samples
// into a journal on the disk (CaptureJournal), saved as a text file when the dialog is left
// through cmdOK; drift mode, which averages the samples into one point a second for long
// recordings; and a chart self-test.
class frmAcquire : public ToolDialog {
    Q_OBJECT
public:
    explicit frmAcquire(const ToolContext& context, QWidget* parent = nullptr);
    ~frmAcquire() override;

    // Taking a plate loads the settings and prepares the plate and the charts.
    void setDevice(PlateDevice* device) override;

    bool displaying() const { return m_display; }
    bool capturing() const { return m_capture; }
    bool drifting() const { return m_drift; }
    DisplayType displayType() const { return m_displayType; }
    // The captured rows, on their way to the disk.
    CaptureJournal& journal() const { return *m_journal; }
    bool saving() const { return m_saving; }
    bool testRunning() const { return m_test.has_value(); }

    QPushButton* cmdOK;
    QPushButton* cmdDisplay;
    QPushButton* cmdCapture;
    QPushButton* cmdDrift;
    QPushButton* cmdTest;
    QGroupBox* frmOptions;
    QGroupBox* fraSignalOp;
    QGroupBox* fraScrollDir;
    QGroupBox* frmPosition;
    QGroupBox* frmCaptureStatus;
    QGroupBox* frmSignals;
    std::array<QRadioButton*, 3> optSignal;
    std::array<QRadioButton*, 2> optDirection;
    QCheckBox* chkScroll;
    QCheckBox* chkAutoScale;
    QCheckBox* chkGrid;
    QLabel* lblPosX;
    QLabel* lblPosY;
    QLabel* lblPosData;
    QLabel* lblSAve;
    QLabel* lblSStd;
    QLabel* lblX;
    QLabel* lblY;
    QLabel* lblData;
    QLabel* lblAve;
    QLabel* lblSTD;
    QLabel* lblCapture;
    QLabel* lblTimeCap;
    QLabel* lblSampleCap;
    QLabel* lblFreqCap;
    QLabel* lblTime;
    QLabel* lblSample;
    QLabel* lblFreq;
    QLabel* lblError;
    QProgressBar* prgSave; // while the capture file is written
    std::array<StripChart*, 3> KXIStripChart;
    std::array<QLabel*, 3> lblSignal;
    std::array<QLabel*, 3> lblMax;
    std::array<QLabel*, 3> lblMin;

protected:
    void unloading() override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void buildControls();
    void layOutControls();
    void connectControls();
    void open(PlateDevice& plate);

    void cmdDisplay_Click();
    void cmdCapture_Click();
    // The journal the capture goes to, made when the first capture begins; false, told to the
    // user, when it cannot be written.
    bool openJournal();
    // Capture OFF; true when the plate owes the dialog the block it recorded.
    bool endCapture();
    // The status texts at the end of a capture, for its `rows` rows: what the file will hold.
    void showCaptureTotal(qint64 rows);
    void journalFailed(const QString& error, qint64 rowsKept);
    void cmdDrift_Click();
    void cmdTest_Click();
    void cmdOK_Click();
    void optSignal_Click(int index);
    void applySignalSet(DisplayType type);
    // Sets the charts' point rate and the span last chosen for the current mode.
    void setChartRate(float pointsPerSecond);
    void setTraceColor(const QColor& color);
    void feedTestSignal();

    void ForcesIn(qint32 sampleNumber, const Float3& forces, const Float3& volts);
    void TestDone(qint32 count, const QList<Float3>& forces, const QList<Float3>& volts);
    bool plot(const ChartValues& values);
    void arithmeticError();
    void refreshStatus(qint32 sampleNumber);
    void showCaptureStatus(qint64 rows, double seconds, double elapsedMs);
    void cursorMove(int index, float x, float y, bool valid, float value);
    void clearCursor();
    const NumberFormat& valueFormat() const;
    void stopAcquisition();

    void leaveAfterBlock();
    void saveAndLeave();
    void askAndSave();
    void saveFinished(bool ok, const QString& error);

    AcquireSettings m_settings;
    bool m_applyingSpan = false; // the dialog, not the user, is setting the charts' span
    DisplayType m_displayType = DisplayType::Voltages;
    float m_minFz = -2.5f;
    qint32 m_textPeriodMs = 200;
    bool m_display = false;
    bool m_capture = false;
    bool m_drift = false;
    quint32 m_captureStart = 0;
    quint32 m_captureEnd = 0;
    float m_sampleRate = 0; // Hz, read when the display or drift began
    quint32 m_lastText = 0;
    int m_cursorChart = 0; // 0: none, k: chart k - 1
    DriftAccumulator m_accumulator;
    CaptureJournal* m_journal;
    CaptureSaver* m_saver;
    bool m_saving = false;
    Timer* m_blockWait; // running while cmdOK waits for the last capture's block
    QWidget* m_buttons;
    Timer* m_testTimer;
    std::optional<TestSignal> m_test;

    const NumberFormat m_threeDecimals{u"0.000"};
    const NumberFormat m_sixDecimals{u"0.000000"};
    const NumberFormat m_seconds{u"0.00 s"};
    const NumberFormat m_hertz{u"0.00 Hz"};
};

} // namespace kx
