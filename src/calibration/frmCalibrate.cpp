#include "calibration/frmCalibrate.h"

#include "calibration/CalibrationReportPdf.h"
#include "calibration/CalibrationSession.h"
#include "calibration/CalibrationTexts.h"
#include "calibration/FitSummary.h"
#include "calibration/LinearityScaling.h"
#include "calibration/PlatePicture.h"
#include "device/TextBoxValidation.h"
#include "measure/SignalSet.h"
#include "measure/StripChart.h"
#include "measure/TimeAxis.h"
#include "resources/StringTable.h"
#include "support/IniFile.h"
#include "support/Prompt.h"

#include <QCheckBox>
#include <QDir>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScopedValueRollback>
#include <QStatusBar>
#include <QTableWidget>

namespace kx {

namespace {

namespace c = strings::calibrate;

// The grid shows exactly these rows; cells beyond a row's texts are empty. A stale result is
// shown grey.
void fillGrid(QTableWidget* grid, const std::vector<QStringList>& rows, bool stale = false) {
    if (grid->rowCount() != int(rows.size()))
        grid->setRowCount(int(rows.size()));
    for (int row = 0; row < grid->rowCount(); ++row) {
        for (int column = 0; column < grid->columnCount(); ++column) {
            QTableWidgetItem* item = grid->item(row, column);
            if (!item) {
                item = new QTableWidgetItem;
                item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
                grid->setItem(row, column, item);
            }
            const QStringList& cells = rows[std::size_t(row)];
            item->setText(column < cells.size() ? cells[column] : QString());
            item->setForeground(stale ? grid->palette().brush(QPalette::Disabled, QPalette::Text)
                                      : grid->palette().brush(QPalette::Text));
            item->setBackground(QBrush());
        }
    }
}

std::vector<QStringList> matrixRows(const CalMatrix& matrix) {
    std::vector<QStringList> rows;
    for (const auto& row : matrix) {
        QStringList cells;
        for (const float cell : row)
            cells << shownNumber(cell, u"0.000");
        rows.push_back(cells);
    }
    return rows;
}

} // namespace

frmCalibrate::frmCalibrate(const ToolContext& context, QWidget* parent)
    : ToolDialog(context, strings::CalibrateBlock, parent)
    , m_session(new CalibrationSession(context.clock, context.prompt, this)) {
    setObjectName(QStringLiteral("frmCalibrate"));
    setWindowTitle(text(0));
    buildControls();
    layOutControls();
    connectControls();
    connectSession();
    // As large as a 1366 x 768 screen allows, for a large plate picture.
    resize(minimumSizeHint().expandedTo(QSize(1340, 700)));
}

frmCalibrate::~frmCalibrate() = default;

void frmCalibrate::setFitProgram(const QString& program) {
    m_session->setFitProgram(program);
}

void frmCalibrate::connectControls() {
    // Enter in a box confirms that box, never a button the technician did not aim at.
    for (QPushButton* button : findChildren<QPushButton*>()) {
        button->setAutoDefault(false);
        button->setDefault(false);
    }
    CalibrationSession* s = m_session;
    connect(cmdNext, &QPushButton::clicked, s, &CalibrationSession::next);
    connect(picPlate, &PlatePicture::clicked, s, &CalibrationSession::click);
    connect(cmdZero, &QPushButton::clicked, s, &CalibrationSession::takeZero);
    connect(cmdData, &QPushButton::clicked, s, &CalibrationSession::takeData);
    connect(cmdMatrix, &QPushButton::clicked, s, &CalibrationSession::computeMatrix);
    connect(cmdScaleZero, &QPushButton::clicked, s, &CalibrationSession::takeScalingZero);
    connect(cmdScale, &QPushButton::clicked, s,
            [this] { m_session->applyScale(txtScale->text()); });
    connect(cmdFileSave, &QPushButton::clicked, s, &CalibrationSession::save);
    connect(cmdFileName, &QPushButton::clicked, s, &CalibrationSession::open);
    connect(cmdReport, &QPushButton::clicked, this, &frmCalibrate::cmdReport_Click);
    connect(cmdDisplay, &QPushButton::clicked, this, &frmCalibrate::cmdDisplay_Click);
    connect(cmdOK, &QPushButton::clicked, this, &frmCalibrate::cmdOK_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &QWidget::close);
    connect(txtOpNow, &QLineEdit::textChanged, s, &CalibrationSession::setOperatorCode);
    connect(txtDuration, &QLineEdit::textChanged, s, &CalibrationSession::setDuration);
    using Condition = CalibrationSession::Condition;
    for (const auto& [box, condition] :
         {std::pair{txtCTemp, Condition::Temperature}, std::pair{txtCRH, Condition::Humidity},
          std::pair{txtCPres, Condition::Pressure}})
        connect(box, &QLineEdit::textChanged, s,
                [s, condition](const QString& text) { s->setCondition(condition, text); });
    TextBoxValidation::attach(txtExcitation,
                              [this] { m_session->setExcitation(txtExcitation->text()); });

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
    connect(optSignal[0], &QRadioButton::toggled, this, [this] {
        for (StripChart* chart : KXIStripChart)
            chart->Clear();
        showSignalNames();
    });
    for (int i = 0; i < Channels; ++i) {
        connect(KXIStripChart[i], &StripChart::ScaleTopChanged, lblMax[i],
                [label = lblMax[i]](float value) { label->setText(formatGeneral(value)); });
        connect(KXIStripChart[i], &StripChart::ScaleBottomChanged, lblMin[i],
                [label = lblMin[i]](float value) { label->setText(formatGeneral(value)); });
        // The stacked charts keep one span, the last one the user chose.
        connect(KXIStripChart[i], &StripChart::SpanChanged, this, [this](float seconds) {
            if (m_applyingSpan)
                return;
            m_session->settings().ChartSpanSeconds = seconds;
            const QScopedValueRollback applying(m_applyingSpan, true);
            for (StripChart* chart : KXIStripChart)
                chart->setSpan(seconds);
        });
    }
    // Time-outs abort and return to idle through the reporter; overrun and clipping abort
    // there too, and the dialog returns to idle for them as well.
    setDeviceErrorActions({.recover = [this](DeviceEvent) { m_session->abortAcquisition(); }});
}

void frmCalibrate::connectSession() {
    CalibrationSession* s = m_session;
    connect(s, &CalibrationSession::statusChanged, StatusBar1,
            [this](const QString& status) { StatusBar1->showMessage(status); });
    connect(s, &CalibrationSession::changed, this, &frmCalibrate::showEverything);
    connect(s, &CalibrationSession::formChanged, this, &frmCalibrate::showForm);
    connect(s, &CalibrationSession::currentPointChanged, this, &frmCalibrate::currentPointChanged);
    connect(s, &CalibrationSession::acquisitionStarted, this, [this](qint32 samples) {
        // A zero starts on a clean chart.
        if (m_session->activity() == CalibrationSession::Activity::Zero)
            for (StripChart* chart : KXIStripChart)
                chart->Clear();
        ProgressBar1->setRange(0, samples);
        ProgressBar1->setValue(0);
    });
    connect(s, &CalibrationSession::progressed, ProgressBar1, [this](qint32 samples) {
        ProgressBar1->setValue(std::min(samples, ProgressBar1->maximum()));
    });
    connect(s, &CalibrationSession::acquisitionEnded, ProgressBar1, [this](bool completed) {
        ProgressBar1->setValue(completed ? ProgressBar1->maximum() : 0);
    });
    connect(s, &CalibrationSession::fitRunning, ProgressBar1, [this](bool running) {
        ProgressBar1->setRange(0, running ? 0 : 1);
        ProgressBar1->setValue(running ? 0 : 1);
    });
    connect(s, &CalibrationSession::displayChanged, this, &frmCalibrate::startCharts);
}

void frmCalibrate::loading() {
    m_session->begin(CalibrationSettings::load(IniFile::sharedProfile()), device());
    if (PlateDevice* plate = device()) {
        connect(
            plate, &PlateDevice::ForcesIn, this,
            [this](qint32, const Float3& forces, const Float3& volts) { ForcesIn(forces, volts); });
        // Overrun and clipping have no reset step of their own: the run is over all the same.
        for (auto fault : {&PlateDevice::BufferOverRun, &PlateDevice::DataClipped})
            connect(plate, fault, m_session, &CalibrationSession::abortAcquisition);
    }
    showSignalNames();
    showForm();
    showEverything();
    // The step buttons came with the calibration, after the dialog was laid out for showing:
    // lay it out again now, before it is first painted.
    layout()->activate();
}

void frmCalibrate::unloading() {
    if (device())
        disconnect(device(), nullptr, this, nullptr);
    m_session->end(deviceRemoved());
}

void frmCalibrate::reject() {
    if (m_session->mayLeave())
        ToolDialog::reject();
}

void frmCalibrate::cmdOK_Click() {
    if (!m_session->commit())
        return;
    const QStringList cells = m_session->committedTexts();
    for (int i = 0; i < cells.size(); ++i)
        Q_EMIT matrixCommitted(i / 3, i % 3, cells[i]);
    accept();
}

void frmCalibrate::cmdReport_Click() {
    std::optional<CalibrationSession::ReportRequest> report = m_session->prepareReport();
    if (!report)
        return;
    FileDialogRequest request;
    request.title = strings::text(c::ReportDialogTitle);
    request.filter = strings::text(c::ReportDialogFilter);
    request.defaultExtension = strings::text(c::ReportDialogExtension);
    request.initialFolder = m_session->settings().LastFilePath;
    request.fileName = report->suggestedName + request.defaultExtension;
    request.overwritePrompt = true;
    request.pathMustExist = true;
    const std::optional<QString> path = prompt().saveFileName(request);
    if (!path)
        return;
    if (!writeReportPdf(report->report, *path)) {
        prompt().critical(strings::text(c::ReportNotWritten).arg(QDir::toNativeSeparators(*path)));
        return;
    }
    m_session->reportWritten(*path);
}

// --- The live display -------------------------------------------------------------------

void frmCalibrate::cmdDisplay_Click() {
    if (m_session->isDisplaying())
        m_session->stopDisplay();
    else
        m_session->startDisplay();
}

void frmCalibrate::startCharts(bool on) {
    cmdDisplay->setText(strings::text(on ? c::DisplayOff : c::DisplayOn));
    const QScopedValueRollback applying(m_applyingSpan, true);
    const float span = m_session->settings().ChartSpanSeconds;
    for (StripChart* chart : KXIStripChart) {
        if (!on) {
            chart->StopPlot();
            continue;
        }
        chart->setSampleRate(m_session->sampleFrequency());
        // A stored span no chart can show leaves the charts at their usual 5000 points.
        if (span > 0 && span <= TimeAxis::kLongestSpan)
            chart->setSpan(span);
    }
}

void frmCalibrate::ForcesIn(const Float3& forces, const Float3& volts) {
    if (!m_session->isDisplaying())
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

// --- Panels -----------------------------------------------------------------------------

void frmCalibrate::showForm() {
    const CalibrationForm& form = m_session->form();
    const auto show = [](QLineEdit* box, const QString& text) {
        if (box->text() != text)
            box->setText(text);
    };
    show(txtOpNow, form.operatorCode);
    show(txtCTemp, form.temperature);
    show(txtCRH, form.humidity);
    show(txtCPres, form.pressure);
    show(txtDuration, form.duration);
    show(txtExcitation, form.excitation);
    show(txtScale, form.scale);
    lblExcitationNote->setText(form.excitationNote);
    lblFreqTxt->setText(m_session->hasPlate() ? formatNumber(m_session->sampleFrequency(), u"0.000")
                                              : QString());
}

void frmCalibrate::showEverything() {
    sizeToCalibration();
    showCommands();
    showPicture();
    showPointPanels();
    showMatrix();
    showScaling();
    const Calibration& c = m_session->calibration();
    lblFileName->setText(QDir::toNativeSeparators(m_session->openFile()));
    lblSerialNumFileTxt->setText(c.serialOnFile);
    lblOpPastTxt->setText(c.operatorOnFile);
}

void frmCalibrate::showCommands() {
    const bool idle = m_session->activity() == CalibrationSession::Activity::Idle;
    const bool plate = m_session->hasPlate();
    for (QWidget* control : std::initializer_list<QWidget*>{cmdNext, cmdMatrix, cmdFileSave,
                                                            cmdFileName, cmdScale, cmdOK, picPlate})
        control->setEnabled(idle);
    for (QPushButton* button : {cmdZero, cmdData, cmdScaleZero, cmdDisplay})
        button->setEnabled(idle && plate);
    for (QPushButton* button : cmdScaleLoad)
        button->setEnabled(idle && plate);
    // A report states a matrix that matches the points: none before one is computed again.
    // The button stays live all the same, so that pressing it, with the mouse or from the
    // keyboard, says why there is none; its tip and description say so beforehand.
    const Calibration::FitState fit = m_session->calibration().fitState();
    const QString why = fit == Calibration::FitState::Current ? QString()
                        : fit == Calibration::FitState::Stale ? strings::text(c::ReportWithStaleFit)
                                                              : strings::text(c::ReportWithoutFit);
    cmdReport->setEnabled(idle);
    cmdReport->setToolTip(why);
    cmdReport->setAccessibleDescription(why);
}

void frmCalibrate::showPicture() {
    picPlate->setDrawing(
        PlateDrawing::of(m_session->calibration(), m_session->settings().DisplayPointRadius));
}

void frmCalibrate::showPointPanels() {
    const Calibration& c = m_session->calibration();
    const CalPoint& point = c.record.points[std::size_t(c.currentPoint)];
    const auto show = [](QLabel* label, bool done, auto value, QStringView pattern) {
        label->setText(done ? shownNumber(value, pattern) : QString());
    };
    for (std::size_t i = 0; i < Channels; ++i) {
        show(lblZeroAve[i], point.zeroDone, point.zeroAverage[i], u"0.0");
        show(lblZeroSd[i], point.zeroDone, point.zeroStdDev[i], u"0.0");
        show(lblDataAve[i], point.dataDone, point.dataMean[i], u"0.000000");
        show(lblDataSD[i], point.dataDone, point.dataStdDev[i], u"0.000000");
    }
    show(lblZeroTTxt, point.zeroDone, point.zeroTemperature, u"0.0");
    show(lblDataTtxt, point.dataDone, point.dataTemperature, u"0.0");
    lblZeroDateTxt->setText(point.zeroDone ? dateTimeText(point.zeroDate) : QString());
    lblDataDateTxt->setText(point.dataDone ? dateTimeText(point.dataDate) : QString());
}

void frmCalibrate::showMatrix() {
    const Calibration& c = m_session->calibration();
    const std::optional<FitResult>& fit = c.fit;
    const bool stale = c.fitState() == Calibration::FitState::Stale;
    fillGrid(flxgrdCalibrationMat, fit ? matrixRows(c.matrix) : std::vector<QStringList>(3), stale);
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            const auto& uncertainty = fit ? fit->diagnostics.uncertainty : std::nullopt;
            flxgrdCalibrationMat->item(row, column)
                ->setToolTip(fit ? matrixCellTip(row, column, c.matrix[row][column],
                                                 uncertainty
                                                     ? std::optional((*uncertainty)[row][column])
                                                     : std::nullopt)
                                 : QString());
        }
    }
    std::vector<QStringList> errors;
    if (fit)
        for (const FitErrorRow& error : fit->errors)
            errors.push_back(errorRowTexts(error));
    fillGrid(flxgrdErrors, errors, stale);
    const QColor flaggedColour(255, 210, 210);
    for (std::size_t row = 0; fit && row < fit->diagnostics.flagged.size(); ++row)
        for (int column = 0; column < 4 && fit->diagnostics.flagged[row]; ++column)
            flxgrdErrors->item(int(row), column)->setBackground(flaggedColour);
    lblFitQuality->setText(fit ? FitSummary::text(*fit) : QString());
    lblFitQuality->setEnabled(!stale); // grey: findings of a fit that no longer applies
    lblMatrixStale->setVisible(stale);
}

void frmCalibrate::showScaling() {
    const Calibration& c = m_session->calibration();
    const bool fitted = c.fit.has_value();
    std::vector<QStringList> rows = LinearityScaling::gridRows(c.matrix, c.record.steps);
    // Without a matrix nothing can be computed from the steps: only the applied loads show.
    if (!fitted)
        for (QStringList& row : rows)
            row = row.mid(0, 1);
    const bool stale = c.fitState() == Calibration::FitState::Stale;
    fillGrid(flxgrdLinearity, rows, stale);
    lblScaleSuggested->setEnabled(!stale);
    lblScaleStored->setText(strings::text(c::ScaleStored) +
                            shownNumber(c.record.scaleValue, u"0.0000"));
    lblScaleSuggested->setText(
        strings::text(c::ScaleSuggested) +
        (fitted ? shownNumber(LinearityScaling::suggestedValue(c.matrix, c.record.steps), u"0.0000")
                : QString()));
    fillGrid(flxgrdScaledCalibrationMat,
             fitted ? matrixRows(c.scaledMatrix) : std::vector<QStringList>(3), stale);
}

} // namespace kx
