#include "calibration/frmCalibrate.h"

#include "calibration/PlatePicture.h"
#include "measure/StripChart.h"
#include "resources/StringTable.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QStatusBar>
#include <QTableWidget>
#include <QVBoxLayout>

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
constexpr int SignalVoltsCaption = 842;
constexpr int SignalForcesCaption = 843;
constexpr int MaxCaption = 850;
constexpr int MinCaption = 851;

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

struct frmCalibrate::State {};

frmCalibrate::frmCalibrate(const ToolContext& context, QWidget* parent)
    : ToolDialog(context, strings::CalibrateBlock, parent)
    , m_state(std::make_unique<State>()) {
    setObjectName(QStringLiteral("frmCalibrate"));
    setWindowTitle(text(0));
    buildControls();
    layOutControls();
    connectControls();
}

frmCalibrate::~frmCalibrate() = default;

void frmCalibrate::setBridgeExcitation(const QString& volts) {
    txtExcitation->setText(volts);
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
    frmCalibrationMatrix->setMinimumWidth(fontMetrics().horizontalAdvance(u'0') * 34);

    frmCalibrationErrors =
        named(new QGroupBox(text(ErrorsCaption), this), QStringLiteral("frmCalibrationErrors"));
    flxgrdErrors = makeGrid(frmCalibrationErrors, QStringLiteral("flxgrdErrors"), 0, 4,
                            plain(text(ErrorsCaption)));
    flxgrdErrors->setMinimumWidth(flxgrdErrors->fontMetrics().horizontalAdvance(
                                      QStringLiteral("Point -0.000000 -0.000000 -0.000000")) +
                                  30);
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
    StatusBar1 = named(new QStatusBar(this), QStringLiteral("StatusBar1"));
    StatusBar1->setSizeGripEnabled(false);
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
    lblZeroDateTxt = valueLabel(label(QStringLiteral("lblZeroDateTxt"), 0), {});
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
    lblDataDateTxt = valueLabel(label(QStringLiteral("lblDataDateTxt"), 0), {});
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
        auto* labels = new QVBoxLayout;
        labels->addWidget(lblMax[i]);
        labels->addStretch();
        labels->addWidget(lblSignal[i]);
        labels->addStretch();
        labels->addWidget(lblMin[i]);
        grid->addLayout(labels, i, 0);
        grid->addWidget(KXIStripChart[i], i, 1);
        grid->setRowStretch(i, 1);
    }
    grid->setColumnStretch(1, 1);
    grid->setColumnMinimumWidth(0, fontMetrics().horizontalAdvance(QStringLiteral("-0.0000000")));
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
    file->addWidget(cmdFileSave, 2, 0);
    file->addWidget(cmdFileName, 2, 1);

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
    matrix->addWidget(lblFitQuality);
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
    right->addWidget(frmScaling);

    auto* columns = new QHBoxLayout;
    columns->addLayout(left);
    columns->addLayout(middle, 1);
    columns->addLayout(right);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(ProgressBar1, 1);
    buttons->addWidget(cmdOK);
    buttons->addWidget(cmdCancel);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 2);
    layout->setSpacing(4);
    layout->addLayout(columns, 1);
    layout->addLayout(buttons);
    layout->addWidget(StatusBar1);
}

void frmCalibrate::connectControls() {}

void frmCalibrate::loading() {}

void frmCalibrate::unloading() {}

} // namespace kx
