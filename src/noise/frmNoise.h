#pragma once

#include "device/ToolDialog.h"

class QGroupBox;
class QLabel;
class QListWidget;
class QProgressBar;
class QPushButton;
class QScrollArea;
class QStatusBar;

namespace kx {

class NoiseChart;
class NoiseSession;

// "Noise Test": the view of a NoiseSession, the unattended survey of a plate's zero statistics
// at every sampling frequency and bridge excitation of the plan in the shared INI file. Each
// finished test adds a line to lstResults (under its column heading) and a point to the
// picture; suspect tests are marked in both. Every way out of a run in progress (OK, Cancel,
// Enter, Esc, the title bar's close) asks first, and OK is not the default button meanwhile.
class frmNoise : public ToolDialog {
    Q_OBJECT
public:
    explicit frmNoise(const ToolContext& context, QWidget* parent = nullptr);

    NoiseSession& session() const { return *m_session; }
    // The result file of this opening, chosen when the dialog loads; empty without a plate.
    QString resultPath() const;
    bool running() const;

    void done(int result) override;

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
    QLabel* lblRun;
    QLabel* lblRunTxt; // "test 7 of 100, starts in 0:04:59, ends about 17:40"
    QGroupBox* frmResults;
    QScrollArea* fraHeading; // scrolls sideways with lstResults
    QLabel* lblHeading;      // the columns' names and units
    QListWidget* lstResults;
    NoiseChart* picNoise;
    QProgressBar* ProgressBar1;
    QStatusBar* StatusBar1;
    QLabel* StatusBar1Panel1; // status and countdown
    QLabel* StatusBar1Panel2; // files that could not be written
    Timer* Timer1;            // the session's countdown timer

protected:
    void loading() override;
    void unloading() override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QLabel* makeLabel(const char* objectName, const QString& caption, QWidget* parent);
    QGroupBox* buildTestParamFrame();
    QGroupBox* buildResultsFrame();
    void showSession();
    void showProgress();
    void showTest(qsizetype test);

    NoiseSession* m_session;
    bool m_shownRunning = false;
    bool m_shownMeasuring = false;
};

} // namespace kx
