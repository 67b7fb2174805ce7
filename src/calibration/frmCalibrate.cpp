#include "calibration/frmCalibrate.h"

#include "calibration/AcquisitionPlan.h"
#include "calibration/CalFileReader.h"
#include "calibration/CalFileWriter.h"
#include "calibration/CalibrationReport.h"
#include "calibration/CalibrationReportPdf.h"
#include "calibration/CalibrationSettings.h"
#include "calibration/CalibrationTexts.h"
#include "calibration/FitSummary.h"
#include "calibration/LinearityScaling.h"
#include "calibration/OctaveFitEngine.h"
#include "calibration/OctaveFitRun.h"
#include "calibration/PlatePicture.h"
#include "calibration/PointTable.h"
#include "measure/ChartRows.h"
#include "measure/SignalSet.h"
#include "measure/StripChart.h"
#include "measure/TimeAxis.h"
#include "resources/ResourceFiles.h"
#include "resources/StringTable.h"
#include "support/Clock.h"
#include "support/DateFormat.h"
#include "support/Folders.h"
#include "support/IniFile.h"
#include "support/NumberFormat.h"
#include "support/Prompt.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScopedValueRollback>
#include <QStatusBar>
#include <QTableWidget>
#include <QVBoxLayout>
#include <cmath>
#include <utility>

namespace kx {

namespace {
// Offsets in the calibration block of the string table.
constexpr int OkCaption = 10;
constexpr int CancelCaption = 20;
constexpr int AcqParamCaption = 100;
constexpr int ExcitationCaption = 110;
constexpr int SampFreqCaption = 120;
constexpr int DurationCaption = 130;
constexpr int OperatorCaption = 200;
constexpr int OpPastCaption = 210;
constexpr int OpNowCaption = 220;
constexpr int FileCaption = 300;
constexpr int SerialOnFileCaption = 310;
constexpr int SaveCaption = 320;
constexpr int OpenCaption = 330;
constexpr int ReportCaption = strings::calibrate::Report - strings::CalibrateBlock;
constexpr int CalibrationCaption = 400;
constexpr int CommandsCaption = 410;
constexpr int NextCaption = 420;
constexpr int ZeroCaption = 430;
constexpr int DataCaption = 440;
constexpr int MatrixCaption = 450;
constexpr int MatrixFrameCaption = 500;
constexpr int MatrixUnitsCaption = 510;
constexpr int ErrorsCaption = 520;
constexpr int ErrorHeads = 521; // "Point", "Fz [N]", "X [m]", "Y [m]"
constexpr int ConditionsCaption = 600;
constexpr int TempCaption = 610;
constexpr int HumidityCaption = 620;
constexpr int PressureCaption = 630;
constexpr int ZeroPanelCaption = 640; // then "ch 1".."ch 3", "Ave:", "StDev:", "Temp:", "Date:"
constexpr int DataPanelCaption = 650; // the same layout
constexpr int ScalingCaption = 700;
constexpr int ScaleZeroCaption = 710;
constexpr int ScaleLoadCaption = 720; // eight buttons
constexpr int ScalingValueCaption = 740;
constexpr int ScaleCaption = 750;
constexpr int OnFileCaption = 757;
constexpr int SuggestedCaption = 758;
constexpr int LinearityHeads = 760; // "Fz [N]", "Load [N]", "Unload [N]", "Scale"
constexpr int ScaledMatrixCaption = 770;
constexpr int ScaledMatrixUnits = 771;
constexpr int SignalsCaption = 800;
constexpr int ScrollCaption = 810;
constexpr int GridCaption = 820;
constexpr int AutoScaleCaption = 830;
constexpr int DisplayOnCaption = 840;
constexpr int DisplayOffCaption = 841;
constexpr int SignalVoltsCaption = strings::calibrate::SignalBridges - strings::CalibrateBlock;
constexpr int SignalForcesCaption = strings::calibrate::SignalForces - strings::CalibrateBlock;
constexpr int MaxCaption = 850;
constexpr int MinCaption = 851;
constexpr int StatusNoPlate = 860;
constexpr int StatusReady = 861;
constexpr int StatusAcquiringZero = 862;
constexpr int StatusAcquiringData = 863;
constexpr int StatusComputingMatrix = 864;
constexpr int UncertaintyTip = strings::calibrate::ElementUncertainty;

constexpr int ProgressPeriodMs = 100;
// Room for a date and time as the panels show them.
QString widestDate() {
    return formatShortDate(QDate(2026, 12, 28)) + QStringLiteral(" 00:00:00");
}

// The operator records' fixed tags; the operator's code follows each.
constexpr char OperatorTag2[] = "KXI_OP_27.930418.2";
constexpr char OperatorTag3[] = "KXI_OP_361907254.8";

// A number typed into a box: "." as the decimal sign, blanks around allowed.
std::optional<double> parseNumber(const QString& text) {
    bool ok = false;
    const double value = QLocale::c().toDouble(text.trimmed(), &ok);
    return ok && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

float toSingle(double value) {
    return static_cast<float>(value);
}

// The environmental conditions from their boxes, already checked to be numbers.
void readConditions(CalEnvironment& environment, const QLineEdit& temperature,
                    const QLineEdit& humidity, const QLineEdit& pressure) {
    environment.temperature = toSingle(*parseNumber(temperature.text()));
    environment.humidity = toSingle(*parseNumber(humidity.text()));
    environment.pressure = *parseNumber(pressure.text());
}

template <typename T>
T* named(T* widget, const QString& objectName) {
    widget->setObjectName(objectName);
    return widget;
}

QString indexed(const char* name, int index) {
    return QLatin1String(name) + QString::number(index);
}

// A caption without its mnemonic marker and trailing colon, for accessible names.
QString plain(QString caption) {
    caption.remove(u'&');
    caption = caption.trimmed();
    if (caption.endsWith(u':'))
        caption.chop(1);
    return caption;
}

QLabel* valueLabel(QLabel* label, const QString& widest) {
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    label->setMinimumWidth(label->fontMetrics().horizontalAdvance(widest) + 6);
    return label;
}

QTableWidget* makeGrid(QWidget* parent, const QString& objectName, int rows, int columns,
                       const QString& accessibleName) {
    auto* grid = named(new QTableWidget(rows, columns, parent), objectName);
    grid->setAccessibleName(accessibleName);
    grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid->setSelectionMode(QAbstractItemView::NoSelection);
    grid->setFocusPolicy(Qt::NoFocus);
    grid->verticalHeader()->hide();
    grid->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    grid->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    grid->verticalHeader()->setDefaultSectionSize(grid->fontMetrics().height() + 6);
    grid->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < columns; ++c) {
            auto* item = new QTableWidgetItem;
            item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            grid->setItem(r, c, item);
        }
    }
    return grid;
}

// A grid that shows all of its rows without a scroll bar.
void fitRows(QTableWidget* grid, bool header) {
    int height =
        2 * grid->frameWidth() + grid->rowCount() * grid->verticalHeader()->defaultSectionSize();
    if (header)
        height += grid->horizontalHeader()->sizeHint().height();
    else
        grid->horizontalHeader()->hide();
    grid->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    grid->setFixedHeight(height);
}

} // namespace

struct frmCalibrate::State {
    CalibrationSettings settings;
    Calibration calibration;
    OctaveFitRun* octave = nullptr;
    std::optional<FitProblem> pendingFit; // what the outside engine is solving
    Timer* progress = nullptr;            // paces the progress bar of a data acquisition
    quint32 startTick = 0;
    float frequency = 0;
    QString openFile; // the file opened or saved last; a save writes it again
    bool running = false;
    bool zeroRunning = false;
    bool scaling = false;
    int step = -1; // the linearity step being taken
    bool display = false;
};

frmCalibrate::frmCalibrate(const ToolContext& context, QWidget* parent)
    : ToolDialog(context, strings::CalibrateBlock, parent)
    , m_state(std::make_unique<State>()) {
    setObjectName(QStringLiteral("frmCalibrate"));
    setWindowTitle(text(0));
    buildControls();
    layOutControls();
    connectControls();
    // As large as a 1366 x 768 screen allows, for a large plate picture.
    resize(minimumSizeHint().expandedTo(QSize(1340, 700)));
}

frmCalibrate::~frmCalibrate() = default;

void frmCalibrate::setBridgeExcitation(const QString& volts) {
    txtExcitation->setText(volts);
}

void frmCalibrate::setFitProgram(const QString& program) {
    m_state->octave->setProgram(program);
}

void frmCalibrate::buildControls() {
    const auto label = [this](const QString& objectName, const QString& caption = {}) {
        return named(new QLabel(caption, this), objectName);
    };
    const auto box = [this](const QString& objectName, QLabel* caption, int digits) {
        auto* edit = named(new QLineEdit(this), objectName);
        edit->setAccessibleName(plain(caption->text()));
        edit->setMaximumWidth(edit->fontMetrics().horizontalAdvance(u'0') * digits + 12);
        caption->setBuddy(edit);
        return edit;
    };
    const auto button = [this](const QString& objectName, int caption) {
        return named(new QPushButton(text(caption), this), objectName);
    };

    frmAcqParam = named(new QGroupBox(text(AcqParamCaption), this), QStringLiteral("frmAcqParam"));
    lblExcitation = label(QStringLiteral("lblExcitation"), text(ExcitationCaption));
    txtExcitation = box(QStringLiteral("txtExcitation"), lblExcitation, 8);
    lblExcitationNote = label(QStringLiteral("lblExcitationNote"));
    lblExcitationNote->setWordWrap(true);
    lblExcitationNote->hide();
    lblSampFreq = label(QStringLiteral("lblSampFreq"), text(SampFreqCaption));
    lblFreqTxt = valueLabel(label(QStringLiteral("lblFreqTxt")), QStringLiteral("00000.000"));
    lblDuration = label(QStringLiteral("lblDuration"), text(DurationCaption));
    txtDuration = box(QStringLiteral("txtDuration"), lblDuration, 8);

    frmOperator = named(new QGroupBox(text(OperatorCaption), this), QStringLiteral("frmOperator"));
    lblOpPast = label(QStringLiteral("lblOpPast"), text(OpPastCaption));
    lblOpPastTxt = valueLabel(label(QStringLiteral("lblOpPastTxt")), QStringLiteral("00000000"));
    lblOpNow = label(QStringLiteral("lblOpNow"), text(OpNowCaption));
    txtOpNow = box(QStringLiteral("txtOpNow"), lblOpNow, 10);

    frmFile = named(new QGroupBox(text(FileCaption), this), QStringLiteral("frmFile"));
    lblFileName = label(QStringLiteral("lblFileName"));
    lblFileName->setWordWrap(true);
    lblSerialNumFile = label(QStringLiteral("lblSerialNumFile"), text(SerialOnFileCaption));
    lblSerialNumFileTxt =
        valueLabel(label(QStringLiteral("lblSerialNumFileTxt")), QStringLiteral("00000000"));
    cmdFileSave = button(QStringLiteral("cmdFileSave"), SaveCaption);
    cmdFileName = button(QStringLiteral("cmdFileName"), OpenCaption);
    cmdReport = button(QStringLiteral("cmdReport"), ReportCaption);
    cmdReport->setAccessibleName(plain(cmdReport->text()));

    frmCalibration =
        named(new QGroupBox(text(CalibrationCaption), this), QStringLiteral("frmCalibration"));
    picPlate = named(new PlatePicture(frmCalibration), QStringLiteral("picPlate"));
    picPlate->setAccessibleName(plain(text(CalibrationCaption)));
    frmCommands = named(new QGroupBox(text(CommandsCaption), this), QStringLiteral("frmCommands"));
    cmdNext = button(QStringLiteral("cmdNext"), NextCaption);
    cmdZero = button(QStringLiteral("cmdZero"), ZeroCaption);
    cmdData = button(QStringLiteral("cmdData"), DataCaption);
    cmdMatrix = button(QStringLiteral("cmdMatrix"), MatrixCaption);

    frmCalibrationMatrix = named(new QGroupBox(text(MatrixFrameCaption), this),
                                 QStringLiteral("frmCalibrationMatrix"));
    flxgrdCalibrationMat = makeGrid(frmCalibrationMatrix, QStringLiteral("flxgrdCalibrationMat"), 3,
                                    3, plain(text(MatrixFrameCaption)));
    fitRows(flxgrdCalibrationMat, false);
    lblMatrixCaption = label(QStringLiteral("lblMatrixCaption"), text(MatrixUnitsCaption));
    lblMatrixCaption->setWordWrap(true);
    lblFitQuality = label(QStringLiteral("lblFitQuality"));
    lblFitQuality->setWordWrap(true);
    lblFitQuality->setTextFormat(Qt::PlainText);
    lblFitQuality->setMinimumHeight(5 * fontMetrics().lineSpacing());
    lblFitQuality->setAlignment(Qt::AlignLeft | Qt::AlignTop);

    frmCalibrationErrors =
        named(new QGroupBox(text(ErrorsCaption), this), QStringLiteral("frmCalibrationErrors"));
    flxgrdErrors = makeGrid(frmCalibrationErrors, QStringLiteral("flxgrdErrors"), 0, 4,
                            plain(text(ErrorsCaption)));
    flxgrdErrors->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    flxgrdErrors->horizontalHeader()->setStretchLastSection(true);
    flxgrdErrors->setMinimumWidth(flxgrdErrors->fontMetrics().horizontalAdvance(
                                      QStringLiteral("Point -000.000 -0.000000 -0.000000")) +
                                  40);
    QStringList heads;
    for (int i = 0; i < 4; ++i)
        heads << text(ErrorHeads + i);
    flxgrdErrors->setHorizontalHeaderLabels(heads);

    frmConditions =
        named(new QGroupBox(text(ConditionsCaption), this), QStringLiteral("frmConditions"));
    lblCTemp = label(QStringLiteral("lblCTemp"), text(TempCaption));
    txtCTemp = box(QStringLiteral("txtCTemp"), lblCTemp, 8);
    lblCRH = label(QStringLiteral("lblCRH"), text(HumidityCaption));
    txtCRH = box(QStringLiteral("txtCRH"), lblCRH, 8);
    lblCPres = label(QStringLiteral("lblCPres"), text(PressureCaption));
    txtCPres = box(QStringLiteral("txtCPres"), lblCPres, 8);

    frmZero = buildZeroPanel();
    frmData = buildDataPanel();
    frmScaling = buildScalingPanel();
    fraSignals = buildSignalsPanel();

    cmdOK = button(QStringLiteral("cmdOK"), OkCaption);
    cmdCancel = button(QStringLiteral("cmdCancel"), CancelCaption);
    ProgressBar1 = named(new QProgressBar(this), QStringLiteral("ProgressBar1"));
    ProgressBar1->setValue(0);
    StatusBar1 = makeStatusBar();
}

QGroupBox* frmCalibrate::buildZeroPanel() {
    auto* frame = named(new QGroupBox(text(ZeroPanelCaption), this), QStringLiteral("frmZero"));
    auto* grid = new QGridLayout(frame);
    const auto label = [&](const QString& name, int caption) {
        return named(new QLabel(caption ? text(caption) : QString(), frame), name);
    };
    lblZeroAverage = label(QStringLiteral("lblZeroAverage"), ZeroPanelCaption + 4);
    lblZeroSDev = label(QStringLiteral("lblZeroSDev"), ZeroPanelCaption + 5);
    lblZeroT = label(QStringLiteral("lblZeroT"), ZeroPanelCaption + 6);
    lblZeroDate = label(QStringLiteral("lblZeroDate"), ZeroPanelCaption + 7);
    lblZeroTTxt = valueLabel(label(QStringLiteral("lblZeroTTxt"), 0), QStringLiteral("00.00"));
    lblZeroDateTxt = valueLabel(label(QStringLiteral("lblZeroDateTxt"), 0), widestDate());
    grid->addWidget(lblZeroAverage, 1, 0);
    grid->addWidget(lblZeroSDev, 2, 0);
    for (int i = 0; i < Channels; ++i) {
        lblZeroCh[i] = label(indexed("lblZeroCh", i), ZeroPanelCaption + 1 + i);
        lblZeroAve[i] = valueLabel(label(indexed("lblZeroAve", i), 0), QStringLiteral("-8888888"));
        lblZeroSd[i] = valueLabel(label(indexed("lblZeroSd", i), 0), QStringLiteral("-8888888"));
        grid->addWidget(lblZeroCh[i], 0, i + 1, Qt::AlignHCenter);
        grid->addWidget(lblZeroAve[i], 1, i + 1);
        grid->addWidget(lblZeroSd[i], 2, i + 1);
    }
    // Temperature and date share the last row, so the panel stays low.
    auto* when = new QHBoxLayout;
    when->addWidget(lblZeroTTxt);
    when->addWidget(lblZeroDate);
    when->addWidget(lblZeroDateTxt, 1);
    grid->addWidget(lblZeroT, 3, 0);
    grid->addLayout(when, 3, 1, 1, 3);
    return frame;
}

QGroupBox* frmCalibrate::buildDataPanel() {
    auto* frame = named(new QGroupBox(text(DataPanelCaption), this), QStringLiteral("frmData"));
    auto* grid = new QGridLayout(frame);
    const auto label = [&](const QString& name, int caption) {
        return named(new QLabel(caption ? text(caption) : QString(), frame), name);
    };
    lblDataAverage = label(QStringLiteral("lblDataAverage"), DataPanelCaption + 4);
    lblDataSDev = label(QStringLiteral("lblDataSDev"), DataPanelCaption + 5);
    lblDataT = label(QStringLiteral("lblDataT"), DataPanelCaption + 6);
    lblDataDate = label(QStringLiteral("lblDataDate"), DataPanelCaption + 7);
    lblDataTtxt = valueLabel(label(QStringLiteral("lblDataTtxt"), 0), QStringLiteral("00.00"));
    lblDataDateTxt = valueLabel(label(QStringLiteral("lblDataDateTxt"), 0), widestDate());
    grid->addWidget(lblDataAverage, 1, 0);
    grid->addWidget(lblDataSDev, 2, 0);
    for (int i = 0; i < Channels; ++i) {
        lblDataCh[i] = label(indexed("lblDataCh", i), DataPanelCaption + 1 + i);
        lblDataAve[i] = valueLabel(label(indexed("lblDataAve", i), 0), QStringLiteral("-0.000000"));
        lblDataSD[i] = valueLabel(label(indexed("lblDataSD", i), 0), QStringLiteral("-0.000000"));
        grid->addWidget(lblDataCh[i], 0, i + 1, Qt::AlignHCenter);
        grid->addWidget(lblDataAve[i], 1, i + 1);
        grid->addWidget(lblDataSD[i], 2, i + 1);
    }
    // Temperature and date share the last row, so the panel stays low.
    auto* when = new QHBoxLayout;
    when->addWidget(lblDataTtxt);
    when->addWidget(lblDataDate);
    when->addWidget(lblDataDateTxt, 1);
    grid->addWidget(lblDataT, 3, 0);
    grid->addLayout(when, 3, 1, 1, 3);
    return frame;
}

QGroupBox* frmCalibrate::buildScalingPanel() {
    auto* frame = named(new QGroupBox(text(ScalingCaption), this), QStringLiteral("frmScaling"));
    cmdScaleZero =
        named(new QPushButton(text(ScaleZeroCaption), frame), QStringLiteral("cmdScaleZero"));
    for (int i = 0; i < LinearitySteps; ++i)
        cmdScaleLoad[i] =
            named(new QPushButton(text(ScaleLoadCaption + i), frame), indexed("cmdScaleLoad", i));
    frmScalingValue =
        named(new QGroupBox(text(ScalingValueCaption), frame), QStringLiteral("frmScalingValue"));
    txtScale = named(new QLineEdit(frmScalingValue), QStringLiteral("txtScale"));
    txtScale->setAccessibleName(plain(text(ScalingValueCaption)));
    txtScale->setMaximumWidth(txtScale->fontMetrics().horizontalAdvance(u'0') * 8 + 12);
    lblScaleStored =
        named(new QLabel(text(OnFileCaption), frmScalingValue), QStringLiteral("lblScaleStored"));
    lblScaleSuggested = named(new QLabel(text(SuggestedCaption), frmScalingValue),
                              QStringLiteral("lblScaleSuggested"));
    cmdScale =
        named(new QPushButton(text(ScaleCaption), frmScalingValue), QStringLiteral("cmdScale"));
    flxgrdLinearity =
        makeGrid(frame, QStringLiteral("flxgrdLinearity"), 4, 4, plain(text(ScalingCaption)));
    QStringList heads;
    for (int i = 0; i < 4; ++i)
        heads << text(LinearityHeads + i);
    flxgrdLinearity->setHorizontalHeaderLabels(heads);
    fitRows(flxgrdLinearity, true);
    frmScaledMatrix =
        named(new QGroupBox(text(ScaledMatrixCaption), frame), QStringLiteral("frmScaledMatrix"));
    flxgrdScaledCalibrationMat =
        makeGrid(frmScaledMatrix, QStringLiteral("flxgrdScaledCalibrationMat"), 3, 3,
                 plain(text(ScaledMatrixCaption)));
    fitRows(flxgrdScaledCalibrationMat, false);
    lblScaledMatrixCaption = named(new QLabel(text(ScaledMatrixUnits), frmScaledMatrix),
                                   QStringLiteral("lblScaledMatrixCaption"));
    lblScaledMatrixCaption->setWordWrap(true);

    auto* loads = new QGridLayout;
    loads->addWidget(cmdScaleZero, 0, 0, 2, 1);
    for (int i = 0; i < LinearitySteps; ++i)
        loads->addWidget(cmdScaleLoad[i], i / 4, 1 + i % 4);
    auto* value = new QGridLayout(frmScalingValue);
    value->addWidget(txtScale, 0, 0);
    value->addWidget(cmdScale, 0, 1);
    value->addWidget(lblScaleStored, 1, 0, 1, 2);
    value->addWidget(lblScaleSuggested, 2, 0, 1, 2);
    auto* scaled = new QVBoxLayout(frmScaledMatrix);
    scaled->addWidget(flxgrdScaledCalibrationMat);
    scaled->addWidget(lblScaledMatrixCaption);
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(frmScalingValue);
    bottom->addWidget(frmScaledMatrix, 1);
    auto* layout = new QVBoxLayout(frame);
    layout->addLayout(loads);
    layout->addWidget(flxgrdLinearity);
    layout->addLayout(bottom);
    return frame;
}

QGroupBox* frmCalibrate::buildSignalsPanel() {
    auto* frame = named(new QGroupBox(text(SignalsCaption), this), QStringLiteral("fraSignals"));
    chkScroll = named(new QCheckBox(text(ScrollCaption), frame), QStringLiteral("chkScroll"));
    chkGrid = named(new QCheckBox(text(GridCaption), frame), QStringLiteral("chkGrid"));
    chkAutoScale =
        named(new QCheckBox(text(AutoScaleCaption), frame), QStringLiteral("chkAutoScale"));
    for (QCheckBox* check : {chkScroll, chkGrid, chkAutoScale}) {
        check->setChecked(true);
        check->setAccessibleName(plain(check->text()));
    }
    cmdDisplay =
        named(new QPushButton(text(DisplayOnCaption), frame), QStringLiteral("cmdDisplay"));
    const std::array<int, 2> options{SignalVoltsCaption, SignalForcesCaption};
    for (int i = 0; i < 2; ++i) {
        optSignal[i] = named(new QRadioButton(text(options[i]), frame), indexed("optSignal", i));
        optSignal[i]->setAccessibleName(plain(optSignal[i]->text()));
    }
    optSignal[0]->setChecked(true);

    auto* grid = new QGridLayout;
    for (int i = 0; i < Channels; ++i) {
        KXIStripChart[i] = named(new StripChart(clock(), frame), indexed("KXIStripChart", i));
        KXIStripChart[i]->setIndex(i);
        KXIStripChart[i]->setMinimumHeight(36);
        lblSignal[i] = named(new QLabel(frame), indexed("lblSignal", i));
        lblMax[i] = named(new QLabel(text(MaxCaption), frame), indexed("lblMax", i));
        lblMin[i] = named(new QLabel(text(MinCaption), frame), indexed("lblMin", i));
        addChartRow(*grid, i, KXIStripChart[i], lblMax[i], lblSignal[i], lblMin[i]);
    }
    finishChartRows(*grid, fontMetrics().horizontalAdvance(QStringLiteral("-0.0000000")));
    auto* shown = new QHBoxLayout;
    shown->addWidget(cmdDisplay);
    for (QRadioButton* option : optSignal)
        shown->addWidget(option);
    shown->addStretch();
    auto* checks = new QHBoxLayout;
    for (QCheckBox* check : {chkScroll, chkGrid, chkAutoScale})
        checks->addWidget(check);
    checks->addStretch();
    auto* layout = new QVBoxLayout(frame);
    layout->addLayout(grid, 1);
    layout->addLayout(shown);
    layout->addLayout(checks);
    return frame;
}

void frmCalibrate::layOutControls() {
    auto* acq = new QGridLayout(frmAcqParam);
    acq->addWidget(lblExcitation, 0, 0);
    acq->addWidget(txtExcitation, 0, 1);
    acq->addWidget(lblSampFreq, 1, 0);
    acq->addWidget(lblFreqTxt, 1, 1);
    acq->addWidget(lblDuration, 2, 0);
    acq->addWidget(txtDuration, 2, 1);
    acq->addWidget(lblExcitationNote, 3, 0, 1, 2);

    auto* op = new QGridLayout(frmOperator);
    op->addWidget(lblOpPast, 0, 0);
    op->addWidget(lblOpPastTxt, 0, 1);
    op->addWidget(lblOpNow, 1, 0);
    op->addWidget(txtOpNow, 1, 1);

    auto* file = new QGridLayout(frmFile);
    file->addWidget(lblFileName, 0, 0, 1, 2);
    file->addWidget(lblSerialNumFile, 1, 0);
    file->addWidget(lblSerialNumFileTxt, 1, 1);
    auto* fileButtons = new QHBoxLayout;
    for (QPushButton* fileButton : {cmdFileSave, cmdFileName, cmdReport})
        fileButtons->addWidget(fileButton);
    file->addLayout(fileButtons, 2, 0, 1, 2);

    auto* conditions = new QGridLayout(frmConditions);
    conditions->addWidget(lblCTemp, 0, 0);
    conditions->addWidget(txtCTemp, 0, 1);
    conditions->addWidget(lblCRH, 1, 0);
    conditions->addWidget(txtCRH, 1, 1);
    conditions->addWidget(lblCPres, 2, 0);
    conditions->addWidget(txtCPres, 2, 1);

    auto* commands = new QHBoxLayout(frmCommands);
    for (QPushButton* button : {cmdNext, cmdZero, cmdData, cmdMatrix})
        commands->addWidget(button);
    auto* calibration = new QVBoxLayout(frmCalibration);
    calibration->addWidget(picPlate, 1);
    calibration->addWidget(frmCommands);

    auto* matrix = new QVBoxLayout(frmCalibrationMatrix);
    matrix->addWidget(flxgrdCalibrationMat);
    matrix->addWidget(lblMatrixCaption);
    matrix->addStretch();
    auto* errors = new QVBoxLayout(frmCalibrationErrors);
    errors->addWidget(flxgrdErrors);

    auto* left = new QVBoxLayout;
    for (QWidget* panel : std::initializer_list<QWidget*>{frmAcqParam, frmOperator, frmFile,
                                                          frmConditions, frmZero, frmData})
        left->addWidget(panel);
    left->addStretch();
    auto* middle = new QVBoxLayout;
    middle->addWidget(frmCalibration, 3);
    middle->addWidget(fraSignals, 2);
    auto* results = new QHBoxLayout;
    results->addWidget(frmCalibrationMatrix);
    results->addWidget(frmCalibrationErrors, 1);
    auto* right = new QVBoxLayout;
    right->addLayout(results, 1);
    right->addWidget(lblFitQuality);
    right->addWidget(frmScaling);

    auto* columns = new QHBoxLayout;
    columns->addLayout(left);
    columns->addLayout(middle, 1);
    columns->addLayout(right);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(ProgressBar1, 1);
    buttons->addWidget(cmdOK);
    buttons->addWidget(cmdCancel);
    // Frames sit close together: the dialog must fit a 1366 x 768 screen.
    for (QGroupBox* frame : findChildren<QGroupBox*>()) {
        frame->layout()->setContentsMargins(6, 2, 6, 4);
        frame->layout()->setSpacing(3);
    }
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 2);
    layout->setSpacing(4);
    layout->addLayout(columns, 1);
    layout->addLayout(buttons);
    layout->addWidget(StatusBar1);
}

void frmCalibrate::connectControls() {
    connect(cmdNext, &QPushButton::clicked, this, &frmCalibrate::cmdNext_Click);
    connect(picPlate, &PlatePicture::clicked, this, &frmCalibrate::picPlate_Click);
    connect(cmdZero, &QPushButton::clicked, this, &frmCalibrate::cmdZero_Click);
    connect(cmdData, &QPushButton::clicked, this, &frmCalibrate::cmdData_Click);
    connect(cmdMatrix, &QPushButton::clicked, this, &frmCalibrate::cmdMatrix_Click);
    connect(cmdScaleZero, &QPushButton::clicked, this, &frmCalibrate::cmdScaleZero_Click);
    for (int i = 0; i < LinearitySteps; ++i)
        connect(cmdScaleLoad[i], &QPushButton::clicked, this, [this, i] { cmdScaleLoad_Click(i); });
    connect(cmdScale, &QPushButton::clicked, this, &frmCalibrate::cmdScale_Click);
    connect(cmdFileSave, &QPushButton::clicked, this, &frmCalibrate::cmdFileSave_Click);
    connect(cmdFileName, &QPushButton::clicked, this, &frmCalibrate::cmdFileName_Click);
    connect(cmdReport, &QPushButton::clicked, this, &frmCalibrate::cmdReport_Click);
    connect(cmdDisplay, &QPushButton::clicked, this, &frmCalibrate::cmdDisplay_Click);
    connect(cmdOK, &QPushButton::clicked, this, &frmCalibrate::cmdOK_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &QWidget::close);
    connect(txtOpNow, &QLineEdit::textChanged, this,
            [this](const QString& code) { m_state->calibration.operatorNow = code.trimmed(); });

    connect(chkScroll, &QCheckBox::toggled, this, [this](bool on) {
        for (StripChart* chart : KXIStripChart)
            chart->setScrolling(on);
    });
    connect(chkAutoScale, &QCheckBox::toggled, this, [this](bool on) {
        for (StripChart* chart : KXIStripChart)
            chart->setAutoScale(on);
    });
    connect(chkGrid, &QCheckBox::toggled, this, [this](bool on) {
        for (StripChart* chart : KXIStripChart)
            chart->setGridStyle(on ? StripChart::kHorizontalGrid | StripChart::kVerticalGrid : 0);
    });
    for (int i = 0; i < 2; ++i) {
        connect(optSignal[i], &QRadioButton::toggled, this, [this](bool on) {
            if (!on)
                return;
            for (StripChart* chart : KXIStripChart)
                chart->Clear();
            showSignalNames();
        });
    }
    for (int i = 0; i < Channels; ++i) {
        connect(KXIStripChart[i], &StripChart::ScaleTopChanged, lblMax[i],
                [label = lblMax[i]](float value) { label->setText(formatGeneral(value)); });
        connect(KXIStripChart[i], &StripChart::ScaleBottomChanged, lblMin[i],
                [label = lblMin[i]](float value) { label->setText(formatGeneral(value)); });
        // The stacked charts keep one span, the last one the user chose.
        connect(KXIStripChart[i], &StripChart::SpanChanged, this, [this](float seconds) {
            if (m_applyingSpan)
                return;
            m_state->settings.ChartSpanSeconds = seconds;
            const QScopedValueRollback applying(m_applyingSpan, true);
            for (StripChart* chart : KXIStripChart)
                chart->setSpan(seconds);
        });
    }

    m_state->octave = new OctaveFitRun(QStringLiteral("octave-cli"), clock(), this);
    connect(m_state->octave, &OctaveFitRun::finished, this, &frmCalibrate::octaveFinished);

    m_state->progress = clock().createWallTimer(this);
    connect(m_state->progress, &Timer::timeout, this, [this] {
        const auto elapsed = static_cast<double>(quint32(clock().tickCount() - m_state->startTick));
        const auto taken = static_cast<int>(elapsed * double(m_state->frequency) / 1000.0);
        ProgressBar1->setValue(std::min(taken, ProgressBar1->maximum()));
    });

    // Time-outs abort and return to idle through the reporter; overrun and clipping abort
    // there too, and the dialog returns to idle for them as well.
    setDeviceErrorActions({.recover = [this](DeviceEvent) { returnToIdle(); }});
}

const Calibration& frmCalibrate::calibration() const {
    return m_state->calibration;
}

void frmCalibrate::loading() {
    State& st = *m_state;
    st.settings = CalibrationSettings::load(IniFile::sharedProfile());
    st.calibration = Calibration::fromSettings(st.settings);
    setStatus(StatusNoPlate);
    if (device()) {
        runDevice([&] {
            if (txtExcitation->text().trimmed().isEmpty())
                txtExcitation->setText(
                    formatNumber(device()->GageVoltage(Which::Current), u"0.000"));
            st.frequency = device()->SampleFrequency(Which::Current);
            lblFreqTxt->setText(formatNumber(st.frequency, u"0.000"));
            lblOpPastTxt->setText(device()->CalibrationRecordOperator());
        });
        PlateDevice* plate = device();
        connect(plate, &PlateDevice::ZeroProgress, this, &frmCalibrate::ZeroProgress);
        connect(plate, &PlateDevice::ZeroDone, this,
                [this](qint32, const ChannelValues& average, const ChannelValues& deviation,
                       const ChannelValues&) { ZeroDone(average, deviation); });
        connect(plate, &PlateDevice::TestDone, this,
                [this](qint32 count, const QList<Float3>&, const QList<Float3>& volts) {
                    TestDone(count, volts);
                });
        connect(
            plate, &PlateDevice::ForcesIn, this,
            [this](qint32, const Float3& forces, const Float3& volts) { ForcesIn(forces, volts); });
        // Overrun and clipping have no reset step of their own: the run is over all the same.
        for (auto fault : {&PlateDevice::BufferOverRun, &PlateDevice::DataClipped})
            connect(plate, fault, this, &frmCalibrate::returnToIdle);
        setStatus(StatusReady);
    }
    setCommandsEnabled(true);
    showSignalNames();
    showEverything();
}

void frmCalibrate::unloading() {
    if (device()) {
        if (m_state->running || m_state->display) {
            if (!deviceRemoved())
                runDevice([this] { device()->StopAcquisition(); });
        }
        disconnect(device(), nullptr, this, nullptr);
    }
    m_state->octave->cancel();
    m_state->pendingFit.reset();
    m_state->running = false;
    m_state->display = false;
    m_state->settings.save(IniFile::sharedProfile());
}

// --- The points -------------------------------------------------------------------------

void frmCalibrate::cmdNext_Click() {
    PointTable(m_state->calibration).next();
    showPicture();
    showZeroPanel();
    showDataPanel();
}

void frmCalibrate::picPlate_Click(QPointF plate) {
    PointTable(m_state->calibration)
        .click(plate.x(), plate.y(), double(m_state->settings.DisplayPointRadius));
    m_state->scaling = false;
    showPicture();
    showZeroPanel();
    showDataPanel();
}

void frmCalibrate::cmdZero_Click() {
    startZero(false);
}

void frmCalibrate::cmdScaleZero_Click() {
    startZero(true);
}

void frmCalibrate::cmdData_Click() {
    startData(-1);
}

void frmCalibrate::cmdScaleLoad_Click(int step) {
    startData(step);
}

// --- Acquisitions -----------------------------------------------------------------------

void frmCalibrate::stopRunning() {
    State& st = *m_state;
    if (!st.running && !st.display)
        return;
    runDevice([this] { device()->StopAcquisition(); });
    st.running = false;
    if (std::exchange(st.display, false)) {
        for (StripChart* chart : KXIStripChart)
            chart->StopPlot();
        cmdDisplay->setText(text(DisplayOnCaption));
    }
}

bool frmCalibrate::prepareAcquisition(qint32& samples) {
    State& st = *m_state;
    // Data taken at another excitation do not mix with those already collected.
    if (const std::optional<float> excitation =
            compatibleExcitation(st.calibration.dataExcitation,
                                 toSingle(parseNumber(txtExcitation->text()).value_or(0)))) {
        const QString volts = formatNumber(*excitation, u"0.000");
        txtExcitation->setText(volts);
        lblExcitationNote->setText(strings::text(strings::calibrate::ExcitationNote) + volts);
        lblExcitationNote->show();
    }
    return runDevice([&] {
        st.frequency = device()->SampleFrequency(Which::Current);
        const AcquisitionPlan plan = AcquisitionPlan::from(txtDuration->text(), st.frequency);
        txtDuration->setText(plan.durationText);
        samples = plan.samples;
    });
}

void frmCalibrate::startZero(bool scaling) {
    State& st = *m_state;
    if (!device())
        return;
    stopRunning();
    for (StripChart* chart : KXIStripChart)
        chart->Clear();
    qint32 samples = 0;
    if (!prepareAcquisition(samples))
        return;
    setStatus(StatusAcquiringZero);
    ProgressBar1->setRange(0, samples);
    ProgressBar1->setValue(0);
    st.scaling = scaling;
    st.running = runDevice([&] {
        device()->FlushData();
        device()->CalibrateSelf();
        device()->StartZero(samples, true, 0);
    });
    st.zeroRunning = st.running;
    if (st.running)
        setCommandsEnabled(false);
    else
        setStatus(StatusReady);
}

void frmCalibrate::startData(int step) {
    State& st = *m_state;
    if (!device())
        return;
    stopRunning();
    const Calibration& c = st.calibration;
    const std::array<double, 4>& zero =
        step < 0 ? c.record.points[std::size_t(c.currentPoint)].zeroAverage
                 : c.record.scalingZero.average;
    if (!runDevice([&] {
            const std::array<qint32, 3> codes = PointTable::deviceZero(zero);
            for (int channel = 0; channel < Channels; ++channel)
                device()->SetZeroValue(channel, Which::Current, codes[std::size_t(channel)]);
        }))
        return;
    qint32 samples = 0;
    if (!prepareAcquisition(samples))
        return;
    setStatus(StatusAcquiringData);
    ProgressBar1->setRange(0, samples);
    ProgressBar1->setValue(0);
    st.scaling = step >= 0;
    st.step = step;
    st.running = runDevice([&] {
        device()->FlushData();
        device()->CalibrateSelf();
        device()->StartTest(samples, true, true, false, 0, true);
    });
    st.zeroRunning = false;
    if (st.running) {
        st.startTick = clock().tickCount();
        st.progress->start(ProgressPeriodMs);
        setCommandsEnabled(false);
    } else {
        setStatus(StatusReady);
    }
}

void frmCalibrate::ZeroProgress(qint32 samples) {
    if (m_state->running && m_state->zeroRunning)
        ProgressBar1->setValue(std::min(samples, ProgressBar1->maximum()));
}

void frmCalibrate::playCompletionSound() {
    const QString sound = QDir(QCoreApplication::applicationDirPath())
                              .filePath(QLatin1String(resources::SoundFileName));
    if (!prompt().playSound(sound))
        prompt().beep();
}

void frmCalibrate::finishAcquisition() {
    m_state->running = false;
    m_state->progress->stop();
    ProgressBar1->setValue(ProgressBar1->maximum());
    setCommandsEnabled(true);
}

void frmCalibrate::ZeroDone(const ChannelValues& average, const ChannelValues& deviation) {
    State& st = *m_state;
    if (!st.running || !st.zeroRunning)
        return;
    finishAcquisition();
    playCompletionSound();
    const ZeroReading reading = ZeroReading::fromZeroDone(average, deviation);
    const QDateTime now = clock().currentDateTime();
    float temperature = 0;
    runDevice([&] { temperature = device()->Temperature(); });
    const float limit = st.settings.MaxZeroStdDev;
    if (st.scaling) {
        if (LinearityScaling::completeZero(st.calibration, reading, limit, now, temperature) ==
            AcquisitionOutcome::Rejected)
            prompt().critical(strings::text(strings::calibrate::TooNoisyScaling));
        showScaling();
    } else if (PointTable(st.calibration).completeZero(reading, limit, now, temperature) ==
               AcquisitionOutcome::Rejected) {
        prompt().critical(strings::text(strings::calibrate::TooNoisy));
    } else {
        // From now on the plate subtracts the new zero.
        const std::array<qint32, 3> codes = PointTable::deviceZero(reading.average);
        runDevice([&] {
            for (int channel = 0; channel < Channels; ++channel)
                device()->SetZeroValue(channel, Which::Current, codes[std::size_t(channel)]);
        });
    }
    setStatus(StatusReady);
    showZeroPanel();
    showDataPanel();
    showPicture();
}

void frmCalibrate::TestDone(qint32 count, const QList<Float3>& volts) {
    State& st = *m_state;
    if (!st.running || st.zeroRunning)
        return;
    finishAcquisition();
    playCompletionSound();
    const DataReading reading = DataReading::fromSamples(count, volts);
    const QDateTime now = clock().currentDateTime();
    float temperature = 0;
    runDevice([&] { temperature = device()->Temperature(); });
    const float limit = st.settings.MaxDataStdDev;
    const AcquisitionOutcome outcome =
        st.scaling ? LinearityScaling::completeStep(st.calibration, st.step, reading, limit, now,
                                                    temperature)
                   : PointTable(st.calibration).completeData(reading, limit, now, temperature);
    if (outcome == AcquisitionOutcome::Rejected) {
        prompt().critical(strings::text(st.scaling ? strings::calibrate::TooNoisyScaling
                                                   : strings::calibrate::TooNoisy));
    } else if (!st.calibration.dataExcitation) {
        if (const std::optional<double> excitation = parseNumber(txtExcitation->text()))
            st.calibration.dataExcitation = toSingle(*excitation);
    }
    setStatus(StatusReady);
    showDataPanel();
    showPicture();
    showScaling();
}

void frmCalibrate::returnToIdle() {
    State& st = *m_state;
    st.running = false;
    st.zeroRunning = false;
    st.progress->stop();
    if (std::exchange(st.display, false)) {
        for (StripChart* chart : KXIStripChart)
            chart->StopPlot();
        cmdDisplay->setText(text(DisplayOnCaption));
    }
    ProgressBar1->setValue(0);
    setCommandsEnabled(true);
    setStatus(device() ? StatusReady : StatusNoPlate);
}

void frmCalibrate::setCommandsEnabled(bool enabled) {
    enabled = enabled && !m_state->pendingFit; // a fit under way keeps them off
    const bool plate = device() != nullptr;
    for (QPushButton* button : {cmdNext, cmdMatrix, cmdFileSave, cmdFileName, cmdScale, cmdOK})
        button->setEnabled(enabled);
    for (QPushButton* button : {cmdZero, cmdData, cmdScaleZero, cmdDisplay})
        button->setEnabled(enabled && plate);
    for (QPushButton* button : cmdScaleLoad)
        button->setEnabled(enabled && plate);
    picPlate->setEnabled(enabled);
    // A report states a matrix: none before one is computed.
    cmdReport->setEnabled(enabled && m_state->calibration.fit);
}

// --- The live display -------------------------------------------------------------------

void frmCalibrate::cmdDisplay_Click() {
    State& st = *m_state;
    if (!device())
        return;
    if (st.display) {
        stopRunning();
        return;
    }
    stopRunning();
    st.display = runDevice([&] {
        device()->FlushData();
        device()->CalibrateSelf();
        st.frequency = device()->SampleFrequency(Which::Current);
        const float span = st.settings.ChartSpanSeconds;
        const QScopedValueRollback applying(m_applyingSpan, true);
        for (StripChart* chart : KXIStripChart) {
            chart->setSampleRate(st.frequency);
            // A stored span no chart can show leaves the charts at their usual 5000 points.
            if (span > 0 && span <= TimeAxis::kLongestSpan)
                chart->setSpan(span);
        }
        device()->StartAcquisition(true, false, true, false, true);
    });
    if (st.display)
        cmdDisplay->setText(text(DisplayOffCaption));
}

void frmCalibrate::ForcesIn(const Float3& forces, const Float3& volts) {
    if (!m_state->display)
        return;
    const DisplayType shown =
        optSignal[0]->isChecked() ? DisplayType::Voltages : DisplayType::Forces;
    const ChartValues values = chartValues(shown, forces, volts, std::nullopt);
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (values[i])
            KXIStripChart[i]->AddPoint(*values[i]);
    }
}

void frmCalibrate::showSignalNames() {
    static constexpr std::array<const char*, 3> Volts{"V1", "V2", "V3"};
    static constexpr std::array<const char*, 3> Forces{"Fz", "Mx", "My"};
    const auto& names = optSignal[0]->isChecked() ? Volts : Forces;
    for (std::size_t i = 0; i < names.size(); ++i)
        lblSignal[i]->setText(QLatin1String(names[i]));
}

// --- Matrix and scaling -----------------------------------------------------------------

void frmCalibrate::cmdMatrix_Click() {
    State& st = *m_state;
    setStatus(StatusComputingMatrix);
    FitOutcome refused;
    std::optional<FitProblem> problem =
        MatrixFit::pose(st.calibration.record.points, refused.error);
    if (!problem) {
        acceptFit(std::move(refused));
        return;
    }
    if (!OctaveFitEngine(st.octave->program()).isAvailable()) {
        prompt().critical(strings::text(strings::calibrate::EngineUnavailable));
        acceptFit(MatrixFit::complete(*problem, std::nullopt));
        return;
    }
    // Octave needs a second or more: the window stays live meanwhile, but nothing may change
    // the points or start another fit until its answer is in.
    st.octave->start(problem->L, problem->S);
    st.pendingFit = std::move(problem);
    setCommandsEnabled(false);
    ProgressBar1->setRange(0, 0);
}

void frmCalibrate::octaveFinished(const std::optional<FitProducts>& products,
                                  const QString& error) {
    State& st = *m_state;
    const std::optional<FitProblem> problem = std::exchange(st.pendingFit, std::nullopt);
    ProgressBar1->setRange(0, 1);
    ProgressBar1->setValue(1);
    setCommandsEnabled(true);
    if (problem)
        acceptFit(MatrixFit::complete(*problem, products, error));
}

void frmCalibrate::acceptFit(FitOutcome outcome) {
    State& st = *m_state;
    if (!outcome.result) {
        prompt().critical(outcome.error);
    } else {
        if (const QString& why = outcome.result->engineError; !why.isEmpty())
            prompt().critical(strings::text(strings::calibrate::EngineUnavailable) +
                              QStringLiteral("\n\n") + why + QStringLiteral("\n\n") +
                              strings::text(strings::calibrate::EngineBuiltInUsed));
        Calibration& c = st.calibration;
        c.matrix = outcome.result->matrix;
        c.fit = std::move(outcome.result);
        c.scaledMatrix = LinearityScaling::scaled(c.matrix, c.record.scaleValue);
        c.unsavedChanges = true;
    }
    showMatrix();
    showScaling();
    showPicture();
    setStatus(StatusReady);
}

void frmCalibrate::cmdScale_Click() {
    Calibration& c = m_state->calibration;
    if (txtScale->text().trimmed().isEmpty())
        txtScale->setText(QStringLiteral("1"));
    const std::optional<float> value = LinearityScaling::valueFromText(txtScale->text());
    if (!value) {
        // Refused visibly; the scaling in force stays.
        prompt().beep();
        txtScale->setText(formatNumber(c.record.scaleValue, u"0.0000"));
        return;
    }
    txtScale->setText(formatNumber(*value, u"0.0000"));
    if (c.record.scaleValue != *value)
        c.unsavedChanges = true;
    c.record.scaleValue = *value;
    c.scaledMatrix = LinearityScaling::scaled(c.matrix, *value);
    showScaling();
}

// --- File -------------------------------------------------------------------------------

bool frmCalibrate::operatorGiven() {
    if (!txtOpNow->text().trimmed().isEmpty())
        return true;
    prompt().critical(strings::text(strings::calibrate::InvalidOperator));
    return false;
}

bool frmCalibrate::conditionsGiven() {
    for (QLineEdit* box : {txtCTemp, txtCRH, txtCPres}) {
        if (box->text().trimmed().isEmpty()) {
            prompt().critical(strings::text(strings::calibrate::MissingConditions));
            return false;
        }
        if (!parseNumber(box->text())) {
            prompt().critical(strings::text(strings::calibrate::InvalidCondition));
            return false;
        }
    }
    return true;
}

bool frmCalibrate::save() {
    State& st = *m_state;
    if (!operatorGiven() || !conditionsGiven())
        return false;
    Calibration& c = st.calibration;
    readConditions(c.record.environment, *txtCTemp, *txtCRH, *txtCPres);
    QString serial;
    if (device())
        runDevice([&] { serial = device()->SerialNumber(); });
    QString path = st.openFile;
    if (path.isEmpty()) {
        const QString folder = st.settings.LastFilePath;
        CreateFolderPath(folder);
        path = nextCalFileName(folder, serial);
    }
    if (!saveCalFile(path, c.record)) {
        prompt().critical(strings::text(strings::calibrate::FileNotSaved).arg(path));
        return false;
    }
    st.openFile = path;
    st.settings.LastFilePath = FolderOfPath(path);
    c.unsavedChanges = false;
    c.serialOnFile = serial;
    c.operatorOnFile = c.operatorNow;
    lblFileName->setText(QDir::toNativeSeparators(path));
    lblSerialNumFileTxt->setText(c.serialOnFile);
    lblOpPastTxt->setText(c.operatorOnFile);
    return true;
}

void frmCalibrate::cmdFileSave_Click() {
    save();
}

void frmCalibrate::cmdFileName_Click() {
    State& st = *m_state;
    FileDialogRequest request;
    request.title = strings::text(strings::calibrate::FileDialogTitle);
    request.filter = strings::text(strings::calibrate::FileDialogFilter);
    request.defaultExtension = strings::text(strings::calibrate::FileDialogExtension);
    request.initialFolder = st.settings.LastFilePath;
    request.fileMustExist = true;
    request.pathMustExist = true;
    const std::optional<QString> path = prompt().openFileName(request);
    if (!path)
        return;
    CalFileReader reader(st.calibration.record.environment, st.settings.LinearityLoads);
    std::optional<CalibrationRecord> record = reader.readFile(*path);
    if (!record) {
        prompt().critical(reader.errorString());
        return;
    }
    Calibration opened = Calibration::fromSettings(st.settings);
    opened.record = std::move(*record);
    opened.operatorNow = txtOpNow->text().trimmed();
    // The serial number is the file name's part before the running number.
    const QString name = QFileInfo(*path).completeBaseName();
    opened.serialOnFile = name.left(name.lastIndexOf(u'_'));
    opened.operatorOnFile = lblOpPastTxt->text();
    st.calibration = std::move(opened);
    st.openFile = *path;
    st.settings.LastFilePath = FolderOfPath(*path);
    lblFileName->setText(QDir::toNativeSeparators(*path));
    lblSerialNumFileTxt->setText(st.calibration.serialOnFile);
    txtScale->setText(formatNumber(st.calibration.record.scaleValue, u"0.0000"));
    showConditions();
    showEverything();
}

void frmCalibrate::cmdReport_Click() {
    State& st = *m_state;
    // The certificate states the conditions as a save would keep them.
    if (!conditionsGiven())
        return;
    Calibration reported = st.calibration;
    readConditions(reported.record.environment, *txtCTemp, *txtCRH, *txtCPres);
    ReportFacts facts{.serial = reported.serialOnFile,
                      .firmware = {},
                      .calFileName = QFileInfo(st.openFile).fileName(),
                      .maxZeroStdDev = st.settings.MaxZeroStdDev,
                      .maxDataStdDev = st.settings.MaxDataStdDev};
    if (device()) {
        runDevice([&] {
            const QString plate = device()->SerialNumber();
            if (facts.serial.isEmpty())
                facts.serial = plate;
            // Another plate's firmware would be no fact about this calibration's plate.
            if (plate == facts.serial) {
                const quint8 major = device()->FirmwareMajor();
                facts.firmware =
                    QString::number(major) + u'.' + QString::number(device()->FirmwareMinor());
            }
        });
    }
    const std::optional<CalibrationReport> report = CalibrationReport::build(reported, facts);
    if (!report)
        return;
    // Named after the calibration file, or the one the next save would write.
    const QString calFile = st.openFile.isEmpty()
                                ? nextCalFileName(st.settings.LastFilePath, facts.serial)
                                : st.openFile;
    FileDialogRequest request;
    request.title = strings::text(strings::calibrate::ReportDialogTitle);
    request.filter = strings::text(strings::calibrate::ReportDialogFilter);
    request.defaultExtension = strings::text(strings::calibrate::ReportDialogExtension);
    request.initialFolder = st.settings.LastFilePath;
    request.fileName = QFileInfo(calFile).completeBaseName() + request.defaultExtension;
    request.overwritePrompt = true;
    request.pathMustExist = true;
    const std::optional<QString> path = prompt().saveFileName(request);
    if (!path)
        return;
    if (!writeReportPdf(*report, *path)) {
        prompt().critical(strings::text(strings::calibrate::ReportNotWritten)
                              .arg(QDir::toNativeSeparators(*path)));
        return;
    }
    st.settings.LastFilePath = FolderOfPath(*path);
}

// --- Commit -----------------------------------------------------------------------------

void frmCalibrate::cmdOK_Click() {
    State& st = *m_state;
    stopRunning();
    if (!operatorGiven())
        return;
    if (st.calibration.unsavedChanges && !save())
        return;
    const CalMatrix committed = st.calibration.scaledMatrix;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column)
            Q_EMIT matrixCommitted(row, column,
                                   formatGeneral(committed[std::size_t(row)][std::size_t(column)]));
    }
    if (device()) {
        const QString code = txtOpNow->text().trimmed();
        runDevice([&] {
            device()->SetOperatorRecord2(QLatin1String(OperatorTag2) + code,
                                         clock().currentDateTime());
            device()->SetOperatorRecord3(QLatin1String(OperatorTag3) + code,
                                         clock().currentDateTime());
        });
    }
    close();
}

// --- Panels -----------------------------------------------------------------------------

void frmCalibrate::setStatus(int status) {
    StatusBar1->showMessage(text(status));
}

void frmCalibrate::showEverything() {
    showPicture();
    showZeroPanel();
    showDataPanel();
    showMatrix();
    showScaling();
}

void frmCalibrate::showPicture() {
    picPlate->setDrawing(
        PlateDrawing::of(m_state->calibration, m_state->settings.DisplayPointRadius));
}

void frmCalibrate::showZeroPanel() {
    const Calibration& c = m_state->calibration;
    const CalPoint& point = c.record.points[std::size_t(c.currentPoint)];
    for (std::size_t i = 0; i < Channels; ++i) {
        lblZeroAve[i]->setText(point.zeroDone ? formatNumber(point.zeroAverage[i], u"0.0")
                                              : QString());
        lblZeroSd[i]->setText(point.zeroDone ? formatNumber(point.zeroStdDev[i], u"0.0")
                                             : QString());
    }
    lblZeroTTxt->setText(point.zeroDone ? formatNumber(point.zeroTemperature, u"0.0") : QString());
    lblZeroDateTxt->setText(point.zeroDone ? dateTimeText(point.zeroDate) : QString());
}

void frmCalibrate::showDataPanel() {
    const Calibration& c = m_state->calibration;
    const CalPoint& point = c.record.points[std::size_t(c.currentPoint)];
    for (std::size_t i = 0; i < Channels; ++i) {
        lblDataAve[i]->setText(point.dataDone ? formatNumber(point.dataMean[i], u"0.000000")
                                              : QString());
        lblDataSD[i]->setText(point.dataDone ? formatNumber(point.dataStdDev[i], u"0.000000")
                                             : QString());
    }
    lblDataTtxt->setText(point.dataDone ? formatNumber(point.dataTemperature, u"0.0") : QString());
    lblDataDateTxt->setText(point.dataDone ? dateTimeText(point.dataDate) : QString());
}

void frmCalibrate::showMatrix() {
    const Calibration& c = m_state->calibration;
    const std::optional<FitResult>& fit = c.fit;
    cmdReport->setEnabled(fit && cmdFileSave->isEnabled());
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            QTableWidgetItem* cell = flxgrdCalibrationMat->item(row, column);
            cell->setText(
                fit ? formatNumber(c.matrix[std::size_t(row)][std::size_t(column)], u"0.000")
                    : QString());
            const auto& uncertainty = fit ? fit->diagnostics.uncertainty : std::nullopt;
            cell->setToolTip(
                uncertainty
                    ? strings::text(UncertaintyTip)
                          .arg(formatGeneral((*uncertainty)[std::size_t(row)][std::size_t(column)]))
                    : QString());
        }
    }
    lblFitQuality->setText(fit ? FitSummary::text(*fit) : QString());
    flxgrdErrors->setRowCount(fit ? int(fit->errors.size()) : 0);
    if (!fit)
        return;
    const QColor flaggedColour(255, 210, 210);
    for (int row = 0; row < flxgrdErrors->rowCount(); ++row) {
        const FitErrorRow& error = fit->errors[std::size_t(row)];
        const bool flagged = std::size_t(row) < fit->diagnostics.flagged.size() &&
                             fit->diagnostics.flagged[std::size_t(row)];
        const QStringList texts = errorRowTexts(error);
        for (int column = 0; column < 4; ++column) {
            auto* item = new QTableWidgetItem(texts[column]);
            item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            if (flagged)
                item->setBackground(flaggedColour);
            flxgrdErrors->setItem(row, column, item);
        }
    }
}

void frmCalibrate::showScaling() {
    const Calibration& c = m_state->calibration;
    const std::vector<QStringList> rows = LinearityScaling::gridRows(c.matrix, c.record.steps);
    for (int row = 0; row < flxgrdLinearity->rowCount(); ++row) {
        for (int column = 0; column < flxgrdLinearity->columnCount(); ++column) {
            const bool known =
                std::size_t(row) < rows.size() && column < rows[std::size_t(row)].size();
            flxgrdLinearity->item(row, column)
                ->setText(known ? rows[std::size_t(row)][column] : QString());
        }
    }
    lblScaleStored->setText(text(OnFileCaption) + formatNumber(c.record.scaleValue, u"0.0000"));
    lblScaleSuggested->setText(
        text(SuggestedCaption) +
        formatNumber(LinearityScaling::suggestedValue(c.matrix, c.record.steps), u"0.0000"));
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column)
            flxgrdScaledCalibrationMat->item(row, column)
                ->setText(c.fit
                              ? formatNumber(c.scaledMatrix[std::size_t(row)][std::size_t(column)],
                                             u"0.000")
                              : QString());
    }
}

void frmCalibrate::showConditions() {
    const CalEnvironment& environment = m_state->calibration.record.environment;
    txtCTemp->setText(formatGeneral(environment.temperature));
    txtCRH->setText(formatGeneral(environment.humidity));
    txtCPres->setText(formatGeneral(environment.pressure));
}

} // namespace kx
