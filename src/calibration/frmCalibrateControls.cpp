#include "calibration/CalibrationSession.h"
#include "calibration/PlatePicture.h"
#include "calibration/frmCalibrate.h"
#include "measure/ChartRows.h"
#include "measure/StripChart.h"
#include "resources/StringTable.h"
#include "support/DateFormat.h"

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
#include <QScrollArea>
#include <QStatusBar>
#include <QTableWidget>
#include <QVBoxLayout>
#include <tuple>

// The calibration dialog's controls, named as the procedure names them, and their places.
namespace kx {

namespace {

namespace c = strings::calibrate;

constexpr int ChartMinimumHeight = 64; // room for the scale limits and the name beside it

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

// A read-only value, as large from the start as its widest text: the layout does not move
// when the first values arrive.
QLabel* valueLabel(QLabel* label, const QString& widest) {
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    label->setText(widest);
    label->setMinimumSize(label->sizeHint());
    label->clear();
    return label;
}

QString widestDate() {
    return formatShortDate(QDate(2026, 12, 28)) + QStringLiteral(" 00:00:00");
}

QTableWidget* makeGrid(QWidget* parent, const QString& objectName, int rows, int columns,
                       const QString& accessibleName, const QStringList& heads = {}) {
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
    if (heads.isEmpty())
        grid->horizontalHeader()->hide();
    else
        grid->setHorizontalHeaderLabels(heads);
    return grid;
}

QStringList texts(int first, int count) {
    QStringList list;
    for (int i = 0; i < count; ++i)
        list << strings::text(first + i);
    return list;
}

// A grid that shows all of its rows without a scroll bar.
void fitRows(QTableWidget* grid, int rows) {
    int height = 2 * grid->frameWidth() + rows * grid->verticalHeader()->defaultSectionSize();
    if (!grid->horizontalHeader()->isHidden())
        height += grid->horizontalHeader()->sizeHint().height();
    grid->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    grid->setFixedHeight(height);
}

// A matrix grid wide enough for three cells of "-0000.000".
void fitMatrixWidth(QTableWidget* grid) {
    grid->setMinimumWidth(
        3 * (grid->fontMetrics().horizontalAdvance(QStringLiteral("-0000.000")) + 10) +
        2 * grid->frameWidth());
}

struct ResultPanel {
    QGroupBox* frame;
    std::array<QLabel*, 3> channel, average, deviation;
    QLabel *averageCaption, *deviationCaption, *temperatureCaption, *temperature, *dateCaption,
        *date;

    // In the order the panel's names are given.
    auto parts() const {
        return std::tuple(frame, channel, averageCaption, average, deviationCaption, deviation,
                          temperatureCaption, temperature, dateCaption, date);
    }
};

// The zero and the data panels: "ch 1".."ch 3" over the averages and deviations, then the
// temperature and the date. `names`: frame, then the labels' prefixes and names as the panel
// calls them.
ResultPanel resultPanel(QWidget* parent, int caption, const std::array<const char*, 10>& names,
                        const QString& widest) {
    ResultPanel p{};
    p.frame = named(new QGroupBox(strings::text(caption), parent), QLatin1String(names[0]));
    const auto label = [&](const QString& name, int text = 0) {
        return named(new QLabel(text ? strings::text(text) : QString(), p.frame), name);
    };
    auto* grid = new QGridLayout(p.frame);
    p.averageCaption = label(QLatin1String(names[2]), caption + 4);
    p.deviationCaption = label(QLatin1String(names[4]), caption + 5);
    for (int i = 0; i < 3; ++i) {
        p.channel[i] = label(indexed(names[1], i), caption + 1 + i);
        p.average[i] = valueLabel(label(indexed(names[3], i)), widest);
        p.deviation[i] = valueLabel(label(indexed(names[5], i)), widest);
        grid->addWidget(p.channel[i], 0, i + 1, Qt::AlignHCenter);
        grid->addWidget(p.average[i], 1, i + 1);
        grid->addWidget(p.deviation[i], 2, i + 1);
    }
    p.temperatureCaption = label(QLatin1String(names[6]), caption + 6);
    p.temperature = valueLabel(label(QLatin1String(names[7])), QStringLiteral("00.0"));
    p.dateCaption = label(QLatin1String(names[8]), caption + 7);
    p.date = valueLabel(label(QLatin1String(names[9])), widestDate());
    grid->addWidget(p.averageCaption, 1, 0);
    grid->addWidget(p.deviationCaption, 2, 0);
    // Temperature and date share the last row, so the panel stays low.
    auto* when = new QHBoxLayout;
    when->addWidget(p.temperature);
    when->addWidget(p.dateCaption);
    when->addWidget(p.date, 1);
    grid->addWidget(p.temperatureCaption, 3, 0);
    grid->addLayout(when, 3, 1, 1, 3);
    return p;
}

} // namespace

void frmCalibrate::buildControls() {
    const auto label = [this](const QString& objectName, int caption = 0) {
        return named(new QLabel(caption ? strings::text(caption) : QString(), this), objectName);
    };
    const auto box = [this](const QString& objectName, QLabel* caption, int digits) {
        auto* edit = named(new QLineEdit(this), objectName);
        edit->setAccessibleName(plain(caption->text()));
        edit->setMaximumWidth(edit->fontMetrics().horizontalAdvance(u'0') * digits + 12);
        caption->setBuddy(edit);
        return edit;
    };
    const auto button = [this](const QString& objectName, int caption) {
        return named(new QPushButton(strings::text(caption), this), objectName);
    };
    const auto frame = [this](const QString& objectName, int caption) {
        return named(new QGroupBox(strings::text(caption), this), objectName);
    };

    frmAcqParam = frame(QStringLiteral("frmAcqParam"), c::AcqParamFrame);
    lblExcitation = label(QStringLiteral("lblExcitation"), c::Excitation);
    txtExcitation = box(QStringLiteral("txtExcitation"), lblExcitation, 8);
    lblExcitationNote = label(QStringLiteral("lblExcitationNote"));
    lblExcitationNote->setWordWrap(true);
    lblExcitationNote->setMinimumHeight(2 * fontMetrics().lineSpacing());
    lblSampFreq = label(QStringLiteral("lblSampFreq"), c::SampFreq);
    lblFreqTxt = valueLabel(label(QStringLiteral("lblFreqTxt")), QStringLiteral("00000.000"));
    lblDuration = label(QStringLiteral("lblDuration"), c::Duration);
    txtDuration = box(QStringLiteral("txtDuration"), lblDuration, 8);

    frmOperator = frame(QStringLiteral("frmOperator"), c::OperatorFrame);
    lblOpPast = label(QStringLiteral("lblOpPast"), c::OpPast);
    lblOpPastTxt = valueLabel(label(QStringLiteral("lblOpPastTxt")), QStringLiteral("00000000"));
    lblOpNow = label(QStringLiteral("lblOpNow"), c::OpNow);
    txtOpNow = box(QStringLiteral("txtOpNow"), lblOpNow, 10);

    frmFile = frame(QStringLiteral("frmFile"), c::FileFrame);
    lblFileName = label(QStringLiteral("lblFileName"));
    lblFileName->setWordWrap(true);
    lblFileName->setMinimumHeight(2 * fontMetrics().lineSpacing());
    lblSerialNumFile = label(QStringLiteral("lblSerialNumFile"), c::SerialNumFile);
    lblSerialNumFileTxt =
        valueLabel(label(QStringLiteral("lblSerialNumFileTxt")), QStringLiteral("00000000"));
    cmdFileSave = button(QStringLiteral("cmdFileSave"), c::FileSave);
    cmdFileName = button(QStringLiteral("cmdFileName"), c::FileName);
    cmdReport = button(QStringLiteral("cmdReport"), c::Report);
    cmdReport->setAccessibleName(plain(cmdReport->text()));

    frmCalibration = frame(QStringLiteral("frmCalibration"), c::CalibrationFrame);
    picPlate = named(new PlatePicture(frmCalibration), QStringLiteral("picPlate"));
    picPlate->setAccessibleName(plain(strings::text(c::CalibrationFrame)));
    frmCommands = frame(QStringLiteral("frmCommands"), c::CommandsFrame);
    cmdNext = button(QStringLiteral("cmdNext"), c::Next);
    cmdZero = button(QStringLiteral("cmdZero"), c::Zero);
    cmdData = button(QStringLiteral("cmdData"), c::Data);
    cmdMatrix = button(QStringLiteral("cmdMatrix"), c::Matrix);

    frmCalibrationMatrix = frame(QStringLiteral("frmCalibrationMatrix"), c::MatrixFrame);
    flxgrdCalibrationMat = makeGrid(frmCalibrationMatrix, QStringLiteral("flxgrdCalibrationMat"), 3,
                                    3, plain(strings::text(c::MatrixFrame)));
    fitRows(flxgrdCalibrationMat, 3);
    fitMatrixWidth(flxgrdCalibrationMat);
    lblMatrixCaption = label(QStringLiteral("lblMatrixCaption"), c::MatrixCaption);
    lblMatrixCaption->setWordWrap(true);
    lblMatrixStale = label(QStringLiteral("lblMatrixStale"), c::FitStale);
    lblMatrixStale->setWordWrap(true);
    lblMatrixStale->setStyleSheet(QStringLiteral("color: #b00000; font-weight: bold"));
    QSizePolicy keepsRoom = lblMatrixStale->sizePolicy();
    keepsRoom.setRetainSizeWhenHidden(true); // nothing moves when it shows
    lblMatrixStale->setSizePolicy(keepsRoom);
    lblMatrixStale->setVisible(false);
    frmFitQuality = frame(QStringLiteral("frmFitQuality"), c::FitFrame);
    lblFitQuality = named(new QLabel(frmFitQuality), QStringLiteral("lblFitQuality"));
    lblFitQuality->setWordWrap(true);
    lblFitQuality->setTextFormat(Qt::PlainText);
    lblFitQuality->setAlignment(Qt::AlignLeft | Qt::AlignTop);

    frmCalibrationErrors = frame(QStringLiteral("frmCalibrationErrors"), c::ErrorsFrame);
    flxgrdErrors = makeGrid(frmCalibrationErrors, QStringLiteral("flxgrdErrors"), 0, 4,
                            plain(strings::text(c::ErrorsFrame)), texts(c::ErrorsColumnPoint, 4));
    flxgrdErrors->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    flxgrdErrors->horizontalHeader()->setStretchLastSection(true);
    flxgrdErrors->setMinimumWidth(flxgrdErrors->fontMetrics().horizontalAdvance(
                                      QStringLiteral("Point -000.000 -0.000000 -0.000000")) +
                                  40);

    frmConditions = frame(QStringLiteral("frmConditions"), c::ConditionsFrame);
    lblCTemp = label(QStringLiteral("lblCTemp"), c::CTemp);
    txtCTemp = box(QStringLiteral("txtCTemp"), lblCTemp, 8);
    lblCRH = label(QStringLiteral("lblCRH"), c::CRH);
    txtCRH = box(QStringLiteral("txtCRH"), lblCRH, 8);
    lblCPres = label(QStringLiteral("lblCPres"), c::CPres);
    txtCPres = box(QStringLiteral("txtCPres"), lblCPres, 8);

    std::tie(frmZero, lblZeroCh, lblZeroAverage, lblZeroAve, lblZeroSDev, lblZeroSd, lblZeroT,
             lblZeroTTxt, lblZeroDate, lblZeroDateTxt) =
        resultPanel(this, c::ZeroFrame,
                    {"frmZero", "lblZeroCh", "lblZeroAverage", "lblZeroAve", "lblZeroSDev",
                     "lblZeroSd", "lblZeroT", "lblZeroTTxt", "lblZeroDate", "lblZeroDateTxt"},
                    QStringLiteral("-8888888.8"))
            .parts();
    std::tie(frmData, lblDataCh, lblDataAverage, lblDataAve, lblDataSDev, lblDataSD, lblDataT,
             lblDataTtxt, lblDataDate, lblDataDateTxt) =
        resultPanel(this, c::DataFrame,
                    {"frmData", "lblDataCh", "lblDataAverage", "lblDataAve", "lblDataSDev",
                     "lblDataSD", "lblDataT", "lblDataTtxt", "lblDataDate", "lblDataDateTxt"},
                    QStringLiteral("-0.000000"))
            .parts();

    frmScaling = buildScalingPanel();
    fraSignals = buildSignalsPanel();

    cmdOK = button(QStringLiteral("cmdOK"), c::Ok);
    cmdCancel = button(QStringLiteral("cmdCancel"), c::Cancel);
    ProgressBar1 = named(new QProgressBar(this), QStringLiteral("ProgressBar1"));
    ProgressBar1->setValue(0);
    StatusBar1 = makeStatusBar();
}

QGroupBox* frmCalibrate::buildScalingPanel() {
    auto* panel =
        named(new QGroupBox(strings::text(c::ScalingFrame), this), QStringLiteral("frmScaling"));
    cmdScaleZero =
        named(new QPushButton(strings::text(c::ScaleZero), panel), QStringLiteral("cmdScaleZero"));
    frmScalingValue = named(new QGroupBox(strings::text(c::ScalingValueFrame), panel),
                            QStringLiteral("frmScalingValue"));
    txtScale = named(new QLineEdit(frmScalingValue), QStringLiteral("txtScale"));
    txtScale->setAccessibleName(plain(strings::text(c::ScalingValueFrame)));
    txtScale->setMaximumWidth(txtScale->fontMetrics().horizontalAdvance(u'0') * 8 + 12);
    lblScaleStored = named(new QLabel(frmScalingValue), QStringLiteral("lblScaleStored"));
    lblScaleSuggested = named(new QLabel(frmScalingValue), QStringLiteral("lblScaleSuggested"));
    for (QLabel* shown : {lblScaleStored, lblScaleSuggested})
        shown->setMinimumWidth(shown->fontMetrics().horizontalAdvance(
            strings::text(c::ScaleSuggested) + QStringLiteral("-00.0000")));
    cmdScale = named(new QPushButton(strings::text(c::Scale), frmScalingValue),
                     QStringLiteral("cmdScale"));
    flxgrdLinearity =
        makeGrid(panel, QStringLiteral("flxgrdLinearity"), 0, 4,
                 plain(strings::text(c::ScalingFrame)), texts(c::LinearityColumnFz, 4));
    flxgrdLinearity->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    flxgrdLinearity->horizontalHeader()->setStretchLastSection(true);
    flxgrdLinearity->setMinimumWidth(4 * (flxgrdLinearity->fontMetrics().horizontalAdvance(
                                              strings::text(c::LinearityColumnUnload)) +
                                          14) +
                                     2 * flxgrdLinearity->frameWidth());
    frmScaledMatrix = named(new QGroupBox(strings::text(c::ScaledMatrixFrame), panel),
                            QStringLiteral("frmScaledMatrix"));
    flxgrdScaledCalibrationMat =
        makeGrid(frmScaledMatrix, QStringLiteral("flxgrdScaledCalibrationMat"), 3, 3,
                 plain(strings::text(c::ScaledMatrixFrame)));
    fitRows(flxgrdScaledCalibrationMat, 3);
    fitMatrixWidth(flxgrdScaledCalibrationMat);
    lblScaledMatrixCaption =
        named(new QLabel(strings::text(c::ScaledMatrixCaption), frmScaledMatrix),
              QStringLiteral("lblScaledMatrixCaption"));
    lblScaledMatrixCaption->setWordWrap(true);

    // The value on one line under the grids, so the panel stays low.
    auto* value = new QHBoxLayout(frmScalingValue);
    value->addWidget(txtScale);
    value->addWidget(cmdScale);
    value->addSpacing(12);
    value->addWidget(lblScaleStored);
    value->addSpacing(12);
    value->addWidget(lblScaleSuggested);
    value->addStretch();
    auto* scaled = new QVBoxLayout(frmScaledMatrix);
    scaled->addWidget(flxgrdScaledCalibrationMat);
    scaled->addWidget(lblScaledMatrixCaption);
    auto* grids = new QHBoxLayout;
    grids->addWidget(flxgrdLinearity, 1);
    grids->addWidget(frmScaledMatrix);
    auto* layout = new QVBoxLayout(panel);
    m_stepButtons = new QGridLayout; // the step buttons, made when the steps are known
    layout->addLayout(m_stepButtons);
    layout->addLayout(grids);
    layout->addWidget(frmScalingValue);
    return panel;
}

// One button per linearity step of the calibration, loading steps above the unloading ones,
// and the grids as high as the steps and points they show.
void frmCalibrate::sizeToCalibration() {
    const CalibrationSession& session = *m_session;
    const CalibrationRecord& record = session.calibration().record;
    const int steps = int(record.steps.size());
    if (int(cmdScaleLoad.size()) != steps) {
        qDeleteAll(cmdScaleLoad);
        cmdScaleLoad.clear();
        constexpr int PerRow = 4;
        const int loading = steps / 2;
        const int loadingRows = (loading + PerRow - 1) / PerRow;
        const int rows = loadingRows + (steps - loading + PerRow - 1) / PerRow;
        m_stepButtons->addWidget(cmdScaleZero, 0, 0, std::max(1, rows), 1);
        for (int step = 0; step < steps; ++step) {
            auto* button = named(new QPushButton(frmScaling), indexed("cmdScaleLoad", step));
            button->setAutoDefault(false);
            const int place = step < loading ? step : step - loading;
            const int row = (step < loading ? 0 : loadingRows) + place / PerRow;
            m_stepButtons->addWidget(button, row, 1 + place % PerRow);
            button->show(); // at once, not when the event loop next runs: nothing moves later
            connect(button, &QPushButton::clicked, m_session,
                    [this, step] { m_session->takeStep(step); });
            cmdScaleLoad.push_back(button);
        }
        fitRows(flxgrdLinearity, loading);
    }
    for (int step = 0; step < steps; ++step)
        cmdScaleLoad[std::size_t(step)]->setText(session.stepCaption(step));
    // Beyond a dozen points the table scrolls rather than push the scaling panel off screen.
    constexpr int MostErrorRows = 12;
    fitRows(flxgrdErrors, std::min(int(record.points.size()), MostErrorRows));
}

QGroupBox* frmCalibrate::buildSignalsPanel() {
    auto* panel =
        named(new QGroupBox(strings::text(c::SignalsFrame), this), QStringLiteral("fraSignals"));
    chkScroll = named(new QCheckBox(strings::text(c::Scroll), panel), QStringLiteral("chkScroll"));
    chkGrid = named(new QCheckBox(strings::text(c::Grid), panel), QStringLiteral("chkGrid"));
    chkAutoScale =
        named(new QCheckBox(strings::text(c::AutoScale), panel), QStringLiteral("chkAutoScale"));
    for (QCheckBox* check : {chkScroll, chkGrid, chkAutoScale}) {
        check->setChecked(true);
        check->setAccessibleName(plain(check->text()));
    }
    cmdDisplay =
        named(new QPushButton(strings::text(c::DisplayOn), panel), QStringLiteral("cmdDisplay"));
    const std::array<int, 2> options{c::SignalBridges, c::SignalForces};
    for (int i = 0; i < 2; ++i) {
        optSignal[i] =
            named(new QRadioButton(strings::text(options[i]), panel), indexed("optSignal", i));
        optSignal[i]->setAccessibleName(plain(optSignal[i]->text()));
    }
    optSignal[0]->setChecked(true);

    auto* grid = new QGridLayout;
    for (int i = 0; i < Channels; ++i) {
        KXIStripChart[i] = named(new StripChart(clock(), panel), indexed("KXIStripChart", i));
        KXIStripChart[i]->setIndex(i);
        KXIStripChart[i]->setMinimumHeight(ChartMinimumHeight);
        lblSignal[i] = named(new QLabel(panel), indexed("lblSignal", i));
        lblMax[i] = named(new QLabel(strings::text(c::Max), panel), indexed("lblMax", i));
        lblMin[i] = named(new QLabel(strings::text(c::Min), panel), indexed("lblMin", i));
        addChartRow(*grid, i, KXIStripChart[i], lblMax[i], lblSignal[i], lblMin[i]);
    }
    finishChartRows(*grid, fontMetrics().horizontalAdvance(QStringLiteral("-0.0000000")));
    // The controls stand beside the charts, so the charts keep the panel's whole height.
    auto* controls = new QVBoxLayout;
    controls->addWidget(cmdDisplay);
    for (QRadioButton* option : optSignal)
        controls->addWidget(option);
    for (QCheckBox* check : {chkScroll, chkGrid, chkAutoScale})
        controls->addWidget(check);
    controls->addStretch();
    auto* layout = new QHBoxLayout(panel);
    layout->addLayout(grid, 1);
    layout->addLayout(controls);
    return panel;
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
    matrix->addWidget(lblMatrixStale);
    matrix->addStretch();
    (new QVBoxLayout(frmCalibrationErrors))->addWidget(flxgrdErrors);
    // The findings scroll within a fixed height, so a longer summary (few points, several
    // outliers) never pushes the panels around it.
    auto* findings = new QScrollArea(frmFitQuality);
    findings->setWidget(lblFitQuality);
    findings->setWidgetResizable(true);
    findings->setFrameShape(QFrame::NoFrame);
    findings->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    findings->setFixedHeight(6 * fontMetrics().lineSpacing());
    (new QVBoxLayout(frmFitQuality))->addWidget(findings);

    auto* left = new QVBoxLayout;
    for (QWidget* panel : std::initializer_list<QWidget*>{frmAcqParam, frmOperator, frmFile,
                                                          frmConditions, frmZero, frmData})
        left->addWidget(panel);
    left->addStretch();
    auto* middle = new QVBoxLayout;
    middle->addWidget(frmCalibration, 3);
    middle->addWidget(fraSignals, 2);
    auto* results = new QGridLayout;
    results->addWidget(frmCalibrationMatrix, 0, 0);
    results->addWidget(frmCalibrationErrors, 0, 1);
    results->addWidget(frmFitQuality, 1, 0, 1, 2);
    results->setColumnStretch(1, 1);
    results->setRowStretch(0, 1);
    auto* right = new QVBoxLayout;
    right->addLayout(results, 1);
    right->addWidget(frmScaling);

    auto* columns = new QHBoxLayout;
    columns->addLayout(left);
    columns->addLayout(middle, 1);
    columns->addLayout(right, 1);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(ProgressBar1, 1);
    buttons->addWidget(cmdOK);
    buttons->addWidget(cmdCancel);
    // Frames sit close together: the dialog must fit a 1366 x 768 screen.
    for (QGroupBox* group : findChildren<QGroupBox*>()) {
        group->layout()->setContentsMargins(6, 2, 6, 4);
        group->layout()->setSpacing(3);
    }
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 2);
    layout->setSpacing(4);
    layout->addLayout(columns, 1);
    layout->addLayout(buttons);
    layout->addWidget(StatusBar1);
}

} // namespace kx
