#pragma once

#include "device/ToolDialog.h"
#include "noise/NoisePlan.h"
#include "noise/NoiseResultFile.h"
#include "noise/NoiseResults.h"
#include "noise/NoiseSequence.h"

class QGroupBox;
class QLabel;
class QListWidget;
class QProgressBar;
class QPushButton;
class QStatusBar;

namespace kx {

class NoiseChart;

// "Noise Test": the unattended survey of a plate's zero statistics at every sampling frequency
// and bridge excitation of the plan in the shared INI file, after a warm-up delay and with a
// settling wait before every test. Each finished test adds a line to lstResults, a point to
// the picture and rewrites the result file, so the file is complete up to the last finished
// test however the run ends. The plate's own frequency and excitation come back when the run
// ends, however it ends.
class frmNoise : public ToolDialog {
    Q_OBJECT
public:
    explicit frmNoise(const ToolContext& context, QWidget* parent = nullptr);

    // The result file of this opening, chosen when the dialog loads; empty without a plate.
    QString resultPath() const { return m_file.path(); }
    const NoisePlan& plan() const { return m_plan; }
    bool running() const { return m_running; }

    QPushButton* cmdAcquire;
    QPushButton* cmdOK;
    QPushButton* cmdCancel;
    QGroupBox* frmTestParam;
    QLabel* lblTitleF;
    QLabel* lblF; // "2 of 5"
    QLabel* lblSampFreq;
    QLabel* lblFreqTxt; // read back, "0.000"
    QLabel* lblTitleV;
    QLabel* lblV;
    QLabel* lblExcTitke;
    QLabel* lblExcitationTxt; // read back, "0.000"
    QLabel* lblDuration;
    QLabel* lblDurationTxt;
    QGroupBox* frmResults;
    QListWidget* lstResults;
    NoiseChart* picNoise;
    QProgressBar* ProgressBar1;
    QStatusBar* StatusBar1;
    QLabel* StatusBar1Panel1; // status and countdown
    QLabel* StatusBar1Panel2; // a result file that could not be written
    Timer* Timer1;

protected:
    void loading() override;
    void unloading() override;

private:
    QLabel* makeLabel(const char* objectName, const QString& caption, QWidget* parent);
    QGroupBox* buildTestParamFrame();
    QGroupBox* buildResultsFrame();
    void cmdAcquire_Click();
    void prepareTest();
    void Timer1_Timer();
    void startTest();
    void ZeroProgress(qint32 samples);
    void ZeroDone(const ChannelValues& r1, const ChannelValues& r2, const ChannelValues& r3);
    void finishRun();
    void stopRun();
    void restorePlate();
    void saveResults();
    void savePicture();
    void showMeasuring(bool measuring);
    void setStatus(const QString& status);

    NoisePlan m_plan;
    NoiseResults m_results{0, 0, 0};
    NoiseSequence m_sequence{0, 0};
    NoiseResultFile m_file;
    float m_savedFrequency = 0;
    float m_savedExcitation = 0;
    quint32 m_waitStart = 0;
    bool m_planRead = false; // a dialog closed before it loaded must not overwrite the plan
    bool m_running = false;
    bool m_measuring = false;
};

} // namespace kx
