#pragma once

#include "calibration/Calibration.h"
#include "calibration/MatrixFit.h"
#include "device/ToolDialog.h"

#include <QPointF>
#include <array>
#include <memory>

class QCheckBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QRadioButton;
class QStatusBar;
class QTableWidget;

namespace kx {

class PlatePicture;
class StripChart;

// "Force Platform Calibration": the technician walks the plate's grid of points with the
// calibration weight, taking a zero and a loaded acquisition at each, fits the matrix, checks
// it with the linearity weights, saves the calibration file and commits the scaled matrix and
// the operator records to the plate.
class frmCalibrate : public ToolDialog {
    Q_OBJECT
public:
    static constexpr int Channels = 3;
    static constexpr int LinearitySteps = 8;

    explicit frmCalibrate(const ToolContext& context, QWidget* parent = nullptr);
    ~frmCalibrate() override;

    // The main window's gage voltage, shown as the bridge excitation of new acquisitions.
    void setBridgeExcitation(const QString& volts);
    // The outside fit engine's program: octave-cli on the PATH unless set.
    void setFitProgram(const QString& program);

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
    QLabel* lblFitQuality; // the fit's diagnostics in words

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
    std::array<QPushButton*, LinearitySteps> cmdScaleLoad{}; // step order: loads, then unloads
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
    // OK hands the scaled matrix over: cell (row, column) as the single-precision text the
    // main window's matrix editor enters into the plate.
    void matrixCommitted(int row, int column, const QString& value);

public:
    // The calibration as it stands: what a report reads.
    const Calibration& calibration() const;

protected:
    void loading() override;
    void unloading() override;

private:
    struct State;

    void buildControls();
    void layOutControls();
    void connectControls();
    QGroupBox* buildZeroPanel();
    QGroupBox* buildDataPanel();
    QGroupBox* buildScalingPanel();
    QGroupBox* buildSignalsPanel();

    // Commands
    void cmdNext_Click();
    void picPlate_Click(QPointF plate);
    void cmdZero_Click();
    void cmdData_Click();
    void cmdScaleZero_Click();
    void cmdScaleLoad_Click(int step);
    void cmdMatrix_Click();
    void octaveFinished(const std::optional<FitProducts>& products, const QString& error);
    void acceptFit(FitOutcome outcome);
    void cmdScale_Click();
    void cmdFileSave_Click();
    void cmdFileName_Click();
    void cmdReport_Click();
    void cmdDisplay_Click();
    void cmdOK_Click();

    // Acquisitions
    void startZero(bool scaling);
    void startData(int step); // -1: the current point
    bool prepareAcquisition(qint32& samples);
    void stopRunning();
    void finishAcquisition();
    void ZeroProgress(qint32 samples);
    void ZeroDone(const ChannelValues& average, const ChannelValues& deviation);
    void TestDone(qint32 count, const QList<Float3>& volts);
    void ForcesIn(const Float3& forces, const Float3& volts);
    void playCompletionSound();
    void showSignalNames();
    void returnToIdle();
    void setCommandsEnabled(bool enabled);

    // Checks of OK and Save; each shows its message and says whether to go on.
    bool operatorGiven();
    bool conditionsGiven();
    bool save();

    // Panels
    void setStatus(int text);
    void showEverything();
    void showPicture();
    void showZeroPanel();
    void showDataPanel();
    void showMatrix();
    void showScaling();
    void showConditions();

    std::unique_ptr<State> m_state;
    bool m_applyingSpan = false; // the dialog, not the user, is setting the charts' span
};

} // namespace kx
