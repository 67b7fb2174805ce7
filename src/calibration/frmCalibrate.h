#pragma once

#include "device/ToolDialog.h"

#include <QPointF>
#include <array>
#include <vector>

class QCheckBox;
class QGridLayout;
class QGroupBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QRadioButton;
class QStatusBar;
class QTableWidget;

namespace kx {

class CalibrationSession;
class PlatePicture;
class StripChart;

// "Force Platform Calibration": the technician walks the plate's grid of points with the
// calibration weight, taking a zero and a loaded acquisition at each, fits the matrix, checks
// it with the linearity weights, saves the calibration file and commits the scaled matrix and
// the operator records to the plate. The procedure itself is the CalibrationSession's; this
// dialog shows it and hands it the controls' commands.
class frmCalibrate : public ToolDialog {
    Q_OBJECT
public:
    static constexpr int Channels = 3;

    explicit frmCalibrate(const ToolContext& context, QWidget* parent = nullptr);
    ~frmCalibrate() override;

    // The outside fit engine's program: octave-cli on the PATH unless set.
    void setFitProgram(const QString& program);
    CalibrationSession& session() const { return *m_session; }

    QGroupBox* frmAcqParam;
    QLabel* lblExcitation;
    QLineEdit* txtExcitation;
    QLabel* lblExcitationNote; // the compatibility note; hidden until it applies
    QLabel* lblSampFreq;
    QLabel* lblFreqTxt;
    QLabel* lblDuration;
    QLineEdit* txtDuration;

    QGroupBox* frmOperator;
    QLabel* lblOpPast;
    QLabel* lblOpPastTxt;
    QLabel* lblOpNow;
    QLineEdit* txtOpNow;

    QGroupBox* frmFile;
    QLabel* lblFileName;
    QLabel* lblSerialNumFile;
    QLabel* lblSerialNumFileTxt;
    QPushButton* cmdFileSave;
    QPushButton* cmdFileName;
    QPushButton* cmdReport; // the calibration certificate as a PDF

    QGroupBox* frmCalibration;
    PlatePicture* picPlate;
    QGroupBox* frmCommands;
    QPushButton* cmdNext;
    QPushButton* cmdZero;
    QPushButton* cmdData;
    QPushButton* cmdMatrix;

    QGroupBox* frmCalibrationMatrix;
    QTableWidget* flxgrdCalibrationMat;
    QLabel* lblMatrixCaption;
    QLabel* lblMatrixStale; // shown while the matrix no longer matches the points
    QGroupBox* frmFitQuality;
    QLabel* lblFitQuality; // the fit's diagnostics in words, or why the matrix is out of date

    QGroupBox* frmCalibrationErrors;
    QTableWidget* flxgrdErrors;

    QGroupBox* frmConditions;
    QLabel* lblCTemp;
    QLineEdit* txtCTemp;
    QLabel* lblCRH;
    QLineEdit* txtCRH;
    QLabel* lblCPres;
    QLineEdit* txtCPres;

    QGroupBox* frmZero;
    std::array<QLabel*, Channels> lblZeroCh{};
    QLabel* lblZeroAverage;
    std::array<QLabel*, Channels> lblZeroAve{};
    QLabel* lblZeroSDev;
    std::array<QLabel*, Channels> lblZeroSd{};
    QLabel* lblZeroT;
    QLabel* lblZeroTTxt;
    QLabel* lblZeroDate;
    QLabel* lblZeroDateTxt;

    QGroupBox* frmData;
    std::array<QLabel*, Channels> lblDataCh{};
    QLabel* lblDataAverage;
    std::array<QLabel*, Channels> lblDataAve{};
    QLabel* lblDataSDev;
    std::array<QLabel*, Channels> lblDataSD{};
    QLabel* lblDataT;
    QLabel* lblDataTtxt;
    QLabel* lblDataDate;
    QLabel* lblDataDateTxt;

    QGroupBox* frmScaling;
    QPushButton* cmdScaleZero;
    std::vector<QPushButton*> cmdScaleLoad; // one per linearity step: loads, then unloads
    QGroupBox* frmScalingValue;
    QLineEdit* txtScale;
    QLabel* lblScaleStored;
    QLabel* lblScaleSuggested;
    QPushButton* cmdScale;
    QTableWidget* flxgrdLinearity;
    QGroupBox* frmScaledMatrix;
    QTableWidget* flxgrdScaledCalibrationMat;
    QLabel* lblScaledMatrixCaption;

    QGroupBox* fraSignals;
    std::array<StripChart*, Channels> KXIStripChart{};
    std::array<QLabel*, Channels> lblSignal{};
    std::array<QLabel*, Channels> lblMax{};
    std::array<QLabel*, Channels> lblMin{};
    QCheckBox* chkScroll;
    QCheckBox* chkGrid;
    QCheckBox* chkAutoScale;
    QPushButton* cmdDisplay;
    std::array<QRadioButton*, 2> optSignal{}; // bridge volts, forces

    QPushButton* cmdOK;
    QPushButton* cmdCancel;
    QProgressBar* ProgressBar1;
    QStatusBar* StatusBar1;

Q_SIGNALS:
    // OK hands the scaled matrix over once the plate holds it: cell (row, column) as the
    // single-precision text the main window's matrix boxes show.
    void matrixCommitted(int row, int column, const QString& value);
    // The point the technician is at now (0-based), for a window that marks it on the plate.
    void currentPointChanged(int point);

public Q_SLOTS:
    // Cancel, Esc and the title bar's close: work no file keeps is asked about first.
    void reject() override;

protected:
    void loading() override;
    void unloading() override;

private:
    void buildControls();
    QGroupBox* buildScalingPanel();
    QGroupBox* buildSignalsPanel();
    void sizeToCalibration();
    void layOutControls();
    void connectControls();
    void connectSession();

    void cmdOK_Click();
    void cmdReport_Click();
    void cmdDisplay_Click();
    void ForcesIn(const Float3& forces, const Float3& volts);
    void showSignalNames();
    void startCharts(bool on);

    void showForm();
    void showEverything();
    void showCommands();
    void showPicture();
    void showPointPanels();
    void showMatrix();
    void showScaling();

    CalibrationSession* m_session;
    QGridLayout* m_stepButtons = nullptr; // cmdScaleZero and cmdScaleLoad
    bool m_applyingSpan = false;          // the dialog, not the user, is setting the charts' span
};

} // namespace kx
