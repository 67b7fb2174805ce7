#include "measure/frmAcquire.h"

#include "measure/CaptureFileDialog.h"
#include "measure/CaptureJournal.h"
#include "measure/CaptureSaver.h"
#include "measure/CentreOfPressure.h"
#include "measure/ChartRows.h"
#include "measure/StripChart.h"
#include "measure/UnsavedRowsQuestion.h"
#include "resources/StringTable.h"
#include "support/Clock.h"
#include "support/Folders.h"
#include "support/Prompt.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScopedValueRollback>
#include <QVBoxLayout>
#include <cmath>

namespace kx {
namespace {

namespace a = strings::acquire;

// Offsets in the dialog's block of string resources.
constexpr int CloseCaption = 10;
constexpr int DisplayOnCaption = 20;
constexpr int DisplayOffCaption = 21;
constexpr int CaptureOnCaption = 30;
constexpr int CaptureOffCaption = 31;
constexpr int DriftOnCaption = 40;
constexpr int DriftOffCaption = 41;
constexpr int TestCaption = 50;
constexpr int OptionsCaption = 100;
constexpr int SignalOpCaption = 110;
constexpr int ScrollDirCaption = 120;
constexpr int LeftToRightCaption = 121;
constexpr int RightToLeftCaption = 122;
constexpr int ScrollCaption = 130;
constexpr int AutoScaleCaption = 140;
constexpr int GridCaption = 150;
constexpr int PositionCaption = 200;
constexpr int PosXCaption = 210;
constexpr int PosYCaption = 220;
constexpr int PosDataCaption = 230;
constexpr int AveCaption = 240;
constexpr int StdCaption = 250;
constexpr int CaptureStatusCaption = 300;
constexpr int CaptureIsOff = 310;
constexpr int CaptureIsOn = 311;
constexpr int SignalsCaption = 400;

// Chart names of each signal set, and their smallest autoscale spans in units of
// "Min Autoscale Res".
constexpr std::array<int, 3> SignalNames{410, 420, 430};
constexpr std::array<std::array<float, 3>, 3> MinSpans{
    {{400.0f, 100.0f, 100.0f}, {1.0f, 1.0f, 1.0f}, {400.0f, 0.5f, 0.5f}}};

const QColor Green(0, 255, 0);
const QColor Red(255, 0, 0);

// The run time's message for a division whose result is not a number.
const char DivisionByZero[] = "Division by zero";

// The self-test draws one point per millisecond, like a 1000 Hz plate, handed over in slices
// so the window keeps answering while it runs.
constexpr int TestSliceMs = 10;

// The plate hands back a capture's block just after StopCapture returns; a library that has
// not done so within this time never will, and the dialog is left without it.
constexpr int BlockWaitMs = 2000;

// 8000 × 3300 twips at 15 twips per pixel.
constexpr QSize MinimumSize(533, 220);

template <typename T>
T* named(T* widget, const QString& objectName) {
    widget->setObjectName(objectName);
    return widget;
}

QLabel* label(QWidget* parent, const QString& objectName, const QString& caption = {}) {
    return named(new QLabel(caption, parent), objectName);
}

QString indexed(const char* name, int index) {
    return QLatin1String(name) + QString::number(index);
}

} // namespace

frmAcquire::frmAcquire(const ToolContext& context, QWidget* parent)
    : ToolDialog(context, strings::AcquireBlock, parent)
    , m_journal(new CaptureJournal(context.clock, this))
    , m_saver(new CaptureSaver(this))
    , m_blockWait(context.clock.createTimer(this))
    , m_testTimer(context.clock.createTimer(this)) {
    setObjectName(QStringLiteral("frmAcquire"));
    setWindowTitle(text(0));
    setWindowFlags(windowFlags() | Qt::WindowMinMaxButtonsHint);
    buildControls();
    layOutControls();
    connectControls();
    setMinimumSize(MinimumSize);
    resize(900, 600);
}

frmAcquire::~frmAcquire() = default;

void frmAcquire::buildControls() {
    cmdOK = named(new QPushButton(text(CloseCaption)), QStringLiteral("cmdOK"));
    cmdDisplay = named(new QPushButton(text(DisplayOnCaption)), QStringLiteral("cmdDisplay"));
    cmdCapture = named(new QPushButton(text(CaptureOnCaption)), QStringLiteral("cmdCapture"));
    cmdDrift = named(new QPushButton(text(DriftOnCaption)), QStringLiteral("cmdDrift"));
    cmdTest = named(new QPushButton(text(TestCaption)), QStringLiteral("cmdTest"));
    cmdCapture->setEnabled(false);

    frmOptions = named(new QGroupBox(text(OptionsCaption)), QStringLiteral("frmOptions"));
    fraSignalOp = named(new QGroupBox(text(SignalOpCaption)), QStringLiteral("fraSignalOp"));
    fraScrollDir = named(new QGroupBox(text(ScrollDirCaption)), QStringLiteral("fraScrollDir"));
    frmPosition = named(new QGroupBox(text(PositionCaption)), QStringLiteral("frmPosition"));
    frmCaptureStatus =
        named(new QGroupBox(text(CaptureStatusCaption)), QStringLiteral("frmCaptureStatus"));
    frmSignals = named(new QGroupBox(text(SignalsCaption)), QStringLiteral("frmSignals"));

    const std::array<int, 3> signalCaptions{a::SignalForces, a::SignalVoltages, a::SignalPostural};
    for (int i = 0; i < 3; ++i)
        optSignal[i] = named(new QRadioButton(strings::text(signalCaptions[i]), fraSignalOp),
                             indexed("optSignal", i));
    optDirection[0] = named(new QRadioButton(text(LeftToRightCaption), fraScrollDir),
                            QStringLiteral("optDirection0"));
    optDirection[1] = named(new QRadioButton(text(RightToLeftCaption), fraScrollDir),
                            QStringLiteral("optDirection1"));
    optDirection[0]->setChecked(true);
    chkScroll = named(new QCheckBox(text(ScrollCaption)), QStringLiteral("chkScroll"));
    chkAutoScale = named(new QCheckBox(text(AutoScaleCaption)), QStringLiteral("chkAutoScale"));
    chkGrid = named(new QCheckBox(text(GridCaption)), QStringLiteral("chkGrid"));
    chkAutoScale->setChecked(true);

    lblPosX = label(frmPosition, QStringLiteral("lblPosX"), text(PosXCaption));
    lblPosY = label(frmPosition, QStringLiteral("lblPosY"), text(PosYCaption));
    lblPosData = label(frmPosition, QStringLiteral("lblPosData"), text(PosDataCaption));
    lblSAve = label(frmPosition, QStringLiteral("lblSAve"), text(AveCaption));
    lblSStd = label(frmPosition, QStringLiteral("lblSStd"), text(StdCaption));
    lblX = label(frmPosition, QStringLiteral("lblX"));
    lblY = label(frmPosition, QStringLiteral("lblY"));
    lblData = label(frmPosition, QStringLiteral("lblData"));
    lblAve = label(frmPosition, QStringLiteral("lblAve"));
    lblSTD = label(frmPosition, QStringLiteral("lblSTD"));

    lblCapture = label(frmCaptureStatus, QStringLiteral("lblCapture"), text(CaptureIsOff));
    lblTimeCap =
        label(frmCaptureStatus, QStringLiteral("lblTimeCap"), strings::text(a::CaptureTime));
    lblSampleCap =
        label(frmCaptureStatus, QStringLiteral("lblSampleCap"), strings::text(a::CaptureSamples));
    lblFreqCap =
        label(frmCaptureStatus, QStringLiteral("lblFreqCap"), strings::text(a::CaptureFrequency));
    lblTime = label(frmCaptureStatus, QStringLiteral("lblTime"));
    lblSample = label(frmCaptureStatus, QStringLiteral("lblSample"));
    lblFreq = label(frmCaptureStatus, QStringLiteral("lblFreq"));
    lblError = label(frmCaptureStatus, QStringLiteral("lblError"));
    QFont bold = lblError->font();
    bold.setBold(true);
    lblError->setFont(bold);
    QPalette red = lblError->palette();
    red.setColor(QPalette::WindowText, Qt::red);
    lblError->setPalette(red);
    // The flag keeps its place while hidden, so the frame does not jump when it shows.
    QSizePolicy keepPlace = lblError->sizePolicy();
    keepPlace.setRetainSizeWhenHidden(true);
    lblError->setSizePolicy(keepPlace);
    lblError->hide();
    prgSave = named(new QProgressBar(frmCaptureStatus), QStringLiteral("prgSave"));
    prgSave->setRange(0, 100);
    prgSave->hide();

    for (int i = 0; i < 3; ++i) {
        KXIStripChart[i] = named(new StripChart(clock(), frmSignals), indexed("KXIStripChart", i));
        KXIStripChart[i]->setIndex(i);
        KXIStripChart[i]->setMinimumHeight(40);
        lblSignal[i] = label(frmSignals, indexed("lblSignal", i));
        lblMax[i] = label(frmSignals, indexed("lblMax", i));
        lblMin[i] = label(frmSignals, indexed("lblMin", i));
    }
}

void frmAcquire::layOutControls() {
    auto* signalOp = new QVBoxLayout(fraSignalOp);
    for (QRadioButton* option : optSignal)
        signalOp->addWidget(option);
    auto* scrollDir = new QVBoxLayout(fraScrollDir);
    for (QRadioButton* option : optDirection)
        scrollDir->addWidget(option);
    scrollDir->addStretch();
    auto* checks = new QVBoxLayout;
    checks->addWidget(chkScroll);
    checks->addWidget(chkAutoScale);
    checks->addWidget(chkGrid);
    checks->addStretch();
    auto* options = new QHBoxLayout(frmOptions);
    options->addWidget(fraSignalOp);
    options->addWidget(fraScrollDir);
    options->addLayout(checks);

    auto* position = new QGridLayout(frmPosition);
    const std::array<std::pair<QLabel*, QLabel*>, 5> positionRows{{{lblPosX, lblX},
                                                                   {lblPosY, lblY},
                                                                   {lblPosData, lblData},
                                                                   {lblSAve, lblAve},
                                                                   {lblSStd, lblSTD}}};
    for (int row = 0; row < 5; ++row) {
        position->addWidget(positionRows[row].first, row, 0);
        position->addWidget(positionRows[row].second, row, 1);
    }
    position->setColumnStretch(1, 1);
    // Room for a value with six decimals, so the frame keeps its width as values come.
    lblX->setMinimumWidth(lblX->fontMetrics().horizontalAdvance(QStringLiteral("-0000.000000")));

    auto* captureStatus = new QGridLayout(frmCaptureStatus);
    captureStatus->addWidget(lblCapture, 0, 0, 1, 2);
    const std::array<std::pair<QLabel*, QLabel*>, 3> captureRows{
        {{lblTimeCap, lblTime}, {lblSampleCap, lblSample}, {lblFreqCap, lblFreq}}};
    for (int row = 0; row < 3; ++row) {
        captureStatus->addWidget(captureRows[row].first, row + 1, 0);
        captureStatus->addWidget(captureRows[row].second, row + 1, 1);
    }
    captureStatus->addWidget(lblError, 4, 0, 1, 2);
    captureStatus->addWidget(prgSave, 5, 0, 1, 2);
    captureStatus->setColumnStretch(1, 1);
    captureStatus->setRowStretch(6, 1);
    lblFreq->setMinimumWidth(
        lblFreq->fontMetrics().horizontalAdvance(QStringLiteral("00000.00 Hz")));

    // The three charts share the frame's height in equal thirds, each with its name and its
    // scale limits at its left.
    auto* signalsGrid = new QGridLayout(frmSignals);
    for (int i = 0; i < 3; ++i)
        addChartRow(*signalsGrid, i, KXIStripChart[i], lblMax[i], lblSignal[i], lblMin[i]);
    finishChartRows(*signalsGrid, fontMetrics().horizontalAdvance(QStringLiteral("-0.000000000")));

    m_buttons = new QWidget(this);
    auto* buttons = new QVBoxLayout(m_buttons);
    buttons->setContentsMargins({});
    for (QPushButton* button : {cmdDisplay, cmdCapture, cmdDrift, cmdTest, cmdOK})
        buttons->addWidget(button);
    buttons->addStretch();

    auto* bottom = new QHBoxLayout;
    bottom->addWidget(frmOptions);
    bottom->addWidget(frmPosition);
    bottom->addWidget(frmCaptureStatus);
    bottom->addWidget(m_buttons);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(frmSignals, 1);
    layout->addLayout(bottom);
}

void frmAcquire::connectControls() {
    connect(cmdDisplay, &QPushButton::clicked, this, &frmAcquire::cmdDisplay_Click);
    connect(cmdCapture, &QPushButton::clicked, this, &frmAcquire::cmdCapture_Click);
    connect(cmdDrift, &QPushButton::clicked, this, &frmAcquire::cmdDrift_Click);
    connect(cmdTest, &QPushButton::clicked, this, &frmAcquire::cmdTest_Click);
    connect(cmdOK, &QPushButton::clicked, this, &frmAcquire::cmdOK_Click);
    for (int i = 0; i < 3; ++i)
        connect(optSignal[i], &QRadioButton::clicked, this, [this, i] { optSignal_Click(i); });
    connect(optDirection[1], &QRadioButton::toggled, this, [this](bool rightToLeft) {
        m_settings.leftToRight = !rightToLeft;
        for (StripChart* chart : KXIStripChart)
            chart->setRightToLeft(rightToLeft);
    });
    connect(chkScroll, &QCheckBox::toggled, this, [this](bool on) {
        m_settings.scrolling = on;
        for (StripChart* chart : KXIStripChart)
            chart->setScrolling(on);
    });
    connect(chkAutoScale, &QCheckBox::toggled, this, [this](bool on) {
        for (StripChart* chart : KXIStripChart)
            chart->setAutoScale(on);
    });
    connect(chkGrid, &QCheckBox::toggled, this, [this](bool on) {
        m_settings.grid = on;
        for (StripChart* chart : KXIStripChart)
            chart->setGridStyle(on ? StripChart::kHorizontalGrid | StripChart::kVerticalGrid : 0);
    });
    for (int i = 0; i < 3; ++i) {
        connect(KXIStripChart[i], &StripChart::CursorMove, this, &frmAcquire::cursorMove);
        connect(KXIStripChart[i], &StripChart::ScaleTopChanged, lblMax[i],
                [label = lblMax[i]](float value) { label->setText(formatGeneral(value)); });
        connect(KXIStripChart[i], &StripChart::ScaleBottomChanged, lblMin[i],
                [label = lblMin[i]](float value) { label->setText(formatGeneral(value)); });
        // The stacked charts keep one span; the last one chosen is kept for this mode.
        connect(KXIStripChart[i], &StripChart::SpanChanged, this, [this](float seconds) {
            if (m_applyingSpan)
                return;
            (m_drift ? m_settings.driftChartSpanSeconds : m_settings.chartSpanSeconds) = seconds;
            const QScopedValueRollback applying(m_applyingSpan, true);
            for (StripChart* chart : KXIStripChart)
                chart->setSpan(seconds);
        });
    }
    frmSignals->setMouseTracking(true);
    frmSignals->installEventFilter(this);

    connect(m_testTimer, &Timer::timeout, this, &frmAcquire::feedTestSignal);
    connect(m_blockWait, &Timer::timeout, this, &frmAcquire::leaveAfterBlock);
    connect(m_saver, &CaptureSaver::progress, prgSave, &QProgressBar::setValue);
    connect(m_saver, &CaptureSaver::finished, this, &frmAcquire::saveFinished);
    connect(m_journal, &CaptureJournal::failed, this, &frmAcquire::journalFailed);

    setDeviceErrorActions({
        .stop = [this] { stopAcquisition(); },
        .showStatus = {},
        .showLabel =
            [this](const QString& flag) {
                lblError->setText(flag);
                lblError->show();
            },
        .recover =
            [this](DeviceEvent) {
                if (m_display)
                    cmdDisplay_Click();
                update();
            },
        .close = {},
    });
}

void frmAcquire::setDevice(PlateDevice* device) {
    if (PlateDevice* previous = this->device())
        disconnect(previous, nullptr, this, nullptr);
    ToolDialog::setDevice(device);
    if (device)
        open(*device);
}

void frmAcquire::open(PlateDevice& plate) {
    connect(&plate, &PlateDevice::ForcesIn, this, &frmAcquire::ForcesIn);
    connect(&plate, &PlateDevice::TestDone, this, &frmAcquire::TestDone);
    m_settings = AcquireSettings::load();
    m_minFz = m_settings.minFz();
    m_textPeriodMs = m_settings.textPeriodMs();
    runDevice([&] { plate.SetResolution(m_settings.adResolution); });
    m_display = m_capture = m_drift = false;
    for (StripChart* chart : KXIStripChart)
        chart->setRefreshInterval(m_settings.graphPeriodMs());
    // Copies first: the handlers of the boxes write the settings back as they apply them.
    const AcquireSettings settings = m_settings;
    chkAutoScale->setChecked(true);
    chkGrid->setChecked(settings.grid);
    chkScroll->setChecked(settings.scrolling);
    optDirection[settings.leftToRight ? 0 : 1]->setChecked(true);
    for (StripChart* chart : KXIStripChart) {
        chart->setAutoScale(chkAutoScale->isChecked());
        chart->setGridStyle(
            chkGrid->isChecked() ? StripChart::kHorizontalGrid | StripChart::kVerticalGrid : 0);
        chart->setScrolling(chkScroll->isChecked());
        chart->setRightToLeft(optDirection[1]->isChecked());
    }
    optSignal[static_cast<int>(settings.displayType)]->setChecked(true);
    applySignalSet(settings.displayType);
    setChartRate(KXIStripChart[0]->SampleRate());
}

void frmAcquire::setChartRate(float pointsPerSecond) {
    const float span = m_drift ? m_settings.driftChartSpanSeconds : m_settings.chartSpanSeconds;
    // Until a span is chosen for this mode the charts show their usual 5000 points.
    const double rate = pointsPerSecond > 0 ? pointsPerSecond : 1.0; // as the charts count
    const auto defaultSpan = static_cast<float>(double(StripChart::kDefaultPointsAcross) / rate);
    const QScopedValueRollback applying(m_applyingSpan, true);
    for (StripChart* chart : KXIStripChart) {
        chart->setSampleRate(pointsPerSecond);
        chart->setSpan(span > 0 ? span : defaultSpan);
    }
}

void frmAcquire::unloading() {
    // A save still writing is abandoned: its file never appears, and the journal stays for
    // the next start to offer.
    if (m_saver->isRunning()) {
        delete m_saver;
        m_saver = nullptr;
    }
    m_testTimer->stop();
    m_blockWait->stop();
    // Only the display is switched off here: a drift recording goes on, as it always has.
    if (m_display)
        cmdDisplay_Click();
    // Rows not saved stay on the disk, to be offered at the next start.
    if (m_journal->rowCount() == 0)
        m_journal->remove();
    else
        m_journal->close();
    if (device())
        m_settings.save();
}

void frmAcquire::cmdDisplay_Click() {
    PlateDevice* plate = device();
    if (!m_display) {
        if (!plate)
            return;
        const bool started = runDevice([&] {
            plate->FlushData();
            plate->CalibrateSelf();
            m_sampleRate = plate->SampleFrequency(Which::Current);
            setChartRate(m_sampleRate);
            plate->StartAcquisition(true, false, true, false, true);
        });
        if (!started)
            return;
        m_display = true;
        cmdDisplay->setText(text(DisplayOffCaption));
        cmdCapture->setEnabled(true);
        cmdDrift->setEnabled(false);
        return;
    }
    // The capture ends first, as by Capture OFF, so its segment reaches the table.
    if (m_capture)
        cmdCapture_Click();
    stopAcquisition();
    m_display = false;
    cmdDisplay->setText(text(DisplayOnCaption));
    cmdCapture->setEnabled(false);
    cmdDrift->setEnabled(true);
}

void frmAcquire::stopAcquisition() {
    if (device() && !deviceRemoved())
        runDevice([this] { device()->StopAcquisition(); });
    for (StripChart* chart : KXIStripChart)
        chart->StopPlot();
}

void frmAcquire::cmdCapture_Click() {
    PlateDevice* plate = device();
    if (!plate)
        return;
    if (!m_capture) {
        if (!openJournal())
            return;
        if (!m_drift) {
            if (!runDevice([plate] { plate->StartCapture(true); }))
                return;
            m_journal->beginSegment();
        }
        m_capture = true;
        m_captureStart = clock().tickCount();
        cmdCapture->setText(text(CaptureOffCaption));
        lblCapture->setText(text(CaptureIsOn));
        setTraceColor(Red);
        return;
    }
    endCapture();
}

bool frmAcquire::openJournal() {
    if (m_journal->isOpen() && !m_journal->hasFailed())
        return true;
    QString error = m_journal->errorString();
    if (!m_journal->hasFailed()) {
        CaptureJournalHeader header{{},           m_displayType, m_drift,
                                    m_sampleRate, m_minFz,       clock().currentDateTime()};
        if (!runDevice([&] { header.plateSerial = device()->SerialNumber(); }))
            return false;
        if (m_journal->create(UnsavedCapturesFolder(), header))
            return true;
        error = m_journal->errorString();
    }
    prompt().critical(strings::text(a::JournalNotCreated).arg(error));
    return false;
}

bool frmAcquire::endCapture() {
    bool blockOwed = false;
    m_captureEnd = clock().tickCount();
    if (m_drift) {
        if (!m_saving)
            m_journal->appendSeparator();
        showCaptureTotal(m_journal->rowCount());
    } else if (PlateDevice* plate = device()) {
        m_journal->endSegment();
        blockOwed = runDevice([plate] { plate->StopCapture(); });
    }
    m_capture = false;
    cmdCapture->setText(text(CaptureOnCaption));
    lblCapture->setText(text(CaptureIsOff));
    setTraceColor(Green);
    return blockOwed;
}

void frmAcquire::journalFailed(const QString& error, qint64 rowsKept) {
    if (m_capture)
        endCapture();
    prompt().critical(strings::text(a::JournalFailed).arg(error).arg(rowsKept));
}

void frmAcquire::setTraceColor(const QColor& color) {
    for (StripChart* chart : KXIStripChart)
        chart->setTraceColor(color);
}

void frmAcquire::cmdDrift_Click() {
    PlateDevice* plate = device();
    if (!plate)
        return;
    if (!m_drift) {
        float rate = 0;
        const bool started = runDevice([&] {
            plate->StartAcquisition(true, false, true, false, true);
            rate = plate->SampleFrequency(Which::Current);
        });
        if (!started)
            return;
        m_sampleRate = rate;
        const qint32 samplesPerPoint = DriftAccumulator::samplesPerPointFor(rate);
        // The display counted its samples here too: the first point starts from nothing.
        m_accumulator.reset();
        m_accumulator.setSamplesPerPoint(samplesPerPoint);
        m_drift = true;
        cmdDrift->setText(text(DriftOffCaption));
        cmdDisplay->setEnabled(false);
        cmdCapture->setEnabled(true);
        // Ahead of the capture flag, which only cmdCapture changes.
        lblCapture->setText(text(CaptureIsOn));
        // Below 0.5 Hz every sample is a point.
        const float pointRate =
            samplesPerPoint > 0 ? rate / static_cast<float>(samplesPerPoint) : rate;
        setChartRate(pointRate);
        return;
    }
    stopAcquisition();
    m_drift = false;
    cmdDrift->setText(text(DriftOnCaption));
    cmdDisplay->setEnabled(true);
    cmdCapture->setEnabled(false);
    lblCapture->setText(text(CaptureIsOff));
}

void frmAcquire::cmdTest_Click() {
    if (m_test)
        return;
    m_test.emplace();
    m_testTimer->start(TestSliceMs);
}

void frmAcquire::feedTestSignal() {
    for (int i = 0; i < TestSliceMs && !m_test->atEnd(); ++i) {
        const float value = m_test->next();
        for (StripChart* chart : KXIStripChart)
            chart->AddPoint(value);
    }
    if (m_test->atEnd()) {
        m_testTimer->stop();
        m_test.reset();
    }
}

void frmAcquire::optSignal_Click(int index) {
    const auto type = static_cast<DisplayType>(index);
    if (type == m_displayType)
        return;
    for (StripChart* chart : KXIStripChart)
        chart->Clear();
    // The limits shown belong to the cleared trace; the next autoscale writes new ones.
    for (const auto& labels : {lblMax, lblMin})
        for (QLabel* label : labels)
            label->clear();
    applySignalSet(type);
}

void frmAcquire::applySignalSet(DisplayType type) {
    m_displayType = type;
    m_settings.displayType = type;
    const auto set = static_cast<std::size_t>(type);
    for (std::size_t i = 0; i < 3; ++i) {
        KXIStripChart[i]->setMinSpan(MinSpans[set][i] * m_settings.minAutoscaleRes);
        lblSignal[i]->setText(text(SignalNames[set] + static_cast<int>(i)));
    }
}

void frmAcquire::ForcesIn(qint32 sampleNumber, const Float3& forces, const Float3& volts) {
    if (m_drift) {
        const std::optional<DriftPoint> point = m_accumulator.add(forces, volts, m_minFz);
        if (point) {
            if (!plot(point->chartValues(m_displayType)))
                return;
            if (m_capture && !m_saving)
                m_journal->append(point->captureRow());
        }
    } else {
        m_accumulator.countSample();
        if (m_capture && !m_saving)
            m_journal->appendSample(forces, volts);
        if (!plot(chartValues(m_displayType, forces, volts, centreOfPressure(forces, m_minFz))))
            return;
    }
    refreshStatus(sampleNumber);
}

bool frmAcquire::plot(const ChartValues& values) {
    for (const std::optional<float>& value : values) {
        if (value && !std::isfinite(*value)) {
            arithmeticError();
            return false;
        }
    }
    for (std::size_t i = 0; i < 3; ++i) {
        if (values[i])
            KXIStripChart[i]->AddPoint(*values[i]);
        else
            KXIStripChart[i]->AddBlank(false, false, 0, 0);
    }
    return true;
}

void frmAcquire::arithmeticError() {
    // Stop first, so no further sample comes while the box is open.
    if (m_display)
        cmdDisplay_Click();
    if (m_drift)
        cmdDrift_Click();
    prompt().critical(QLatin1String(DivisionByZero));
}

void frmAcquire::refreshStatus(qint32 sampleNumber) {
    const quint32 now = clock().tickCount();
    if (quint32(now - m_lastText) <= static_cast<quint32>(m_textPeriodMs))
        return;
    m_lastText = now;
    const double elapsed = static_cast<double>(quint32(now - m_captureStart)) + 1.0;
    if (m_capture) {
        const qint64 count = m_drift ? m_journal->rowCount() : sampleNumber;
        showCaptureStatus(count, elapsed / 1000.0, elapsed);
    }
    if (lblError->isVisible())
        lblError->hide();
    if (m_cursorChart != 0) {
        const StripChart* chart = KXIStripChart[static_cast<std::size_t>(m_cursorChart - 1)];
        lblAve->setText(valueFormat().format(chart->Mean()));
        lblSTD->setText(valueFormat().format(chart->StdDev()));
    }
}

void frmAcquire::showCaptureStatus(qint64 rows, double seconds, double elapsedMs) {
    lblTime->setText(m_seconds.format(seconds));
    lblSample->setText(QString::number(rows));
    lblFreq->setText(m_hertz.format(static_cast<double>(rows) * 1000.0 / elapsedMs));
}

void frmAcquire::showCaptureTotal(qint64 rows) {
    // The texts last shown may be a text period old. A segment the plate recorded ends, in
    // the file, at its last row's time; drift rows are a second apart whatever the file says.
    const double elapsed = static_cast<double>(quint32(m_captureEnd - m_captureStart)) + 1.0;
    const double seconds =
        m_drift || m_sampleRate <= 0 ? elapsed / 1000.0 : static_cast<double>(rows) / m_sampleRate;
    showCaptureStatus(rows, seconds, elapsed);
}

void frmAcquire::TestDone(qint32, const QList<Float3>& forces, const QList<Float3>& volts) {
    // While a save reads the journal it must not change; a block arriving then is not kept.
    if (m_drift || m_saving || (!m_journal->isOpen() && !openJournal()))
        return;
    m_journal->takeBlock(forces, volts);
    if (!m_journal->hasFailed())
        showCaptureTotal(std::min(forces.size(), volts.size()));
    if (m_blockWait->isEnabled())
        leaveAfterBlock();
}

void frmAcquire::cursorMove(int index, float x, float y, bool valid, float value) {
    lblX->setText(m_threeDecimals.format(x));
    lblY->setText(valueFormat().format(y));
    lblData->setText(valid ? valueFormat().format(value) : strings::text(a::NotAvailable));
    m_cursorChart = index + 1;
}

void frmAcquire::clearCursor() {
    for (QLabel* value : {lblX, lblY, lblData, lblAve, lblSTD})
        value->clear();
    m_cursorChart = 0;
}

const NumberFormat& frmAcquire::valueFormat() const {
    return m_displayType == DisplayType::Forces ? m_threeDecimals : m_sixDecimals;
}

bool frmAcquire::eventFilter(QObject* watched, QEvent* event) {
    if (watched == frmSignals && event->type() == QEvent::MouseMove && m_cursorChart != 0)
        clearCursor();
    return ToolDialog::eventFilter(watched, event);
}

void frmAcquire::keyPressEvent(QKeyEvent* event) {
    // Esc is the "Cancel" button's key: it saves what was captured, like the button.
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        cmdOK->click();
        return;
    }
    ToolDialog::keyPressEvent(event);
}

void frmAcquire::closeEvent(QCloseEvent* event) {
    // The table is being read by the save, or waits for its last block; the dialog closes
    // once the file is written.
    if (m_saving || m_blockWait->isEnabled()) {
        event->ignore();
        return;
    }
    // The title-bar button leaves like cmdOK: captured rows are saved first, and a cancelled
    // save keeps the window with its rows. A capture on has its rows from Capture ON: a drift
    // capture's first point is a second away, and leaving before it loses nothing.
    if (m_journal->rowCount() > 0) {
        event->ignore();
        cmdOK_Click();
        return;
    }
    ToolDialog::closeEvent(event);
}

void frmAcquire::cmdOK_Click() {
    if (m_saving || m_blockWait->isEnabled())
        return;
    // A capture still on ends as by Capture OFF, and its segment is saved with the others.
    if (m_capture && endCapture()) {
        m_buttons->setEnabled(false);
        m_blockWait->start(BlockWaitMs);
        return;
    }
    saveAndLeave();
}

void frmAcquire::leaveAfterBlock() {
    m_blockWait->stop();
    m_buttons->setEnabled(true);
    saveAndLeave();
}

void frmAcquire::saveAndLeave() {
    const qint64 rows = m_journal->rowCount();
    if (rows > 0) {
        const UnsavedRowsAnswer answer = askAboutUnsavedRows(
            prompt(), strings::text(a::SaveBeforeClosing).arg(rows), rows, false);
        if (answer == UnsavedRowsAnswer::Save) {
            askAndSave();
            return;
        }
        m_journal->remove();
    }
    done(QDialog::Accepted);
}

void frmAcquire::askAndSave() {
    const std::optional<QString> chosen =
        prompt().saveFileName(captureFileDialog(m_settings.lastFilePath));
    if (!chosen)
        return; // cancelled: nothing written, the dialog stays with its rows
    const QString path = chosen->trimmed();
    m_settings.lastFilePath = FolderOfPath(path);
    // An unplugged plate cannot be asked: its frequency is the one the capture began with.
    float rate = m_journal->header().sampleFrequency;
    if (device() && !deviceRemoved() &&
        !runDevice([&] { rate = device()->SampleFrequency(Which::Current); }))
        return;
    m_saving = true;
    m_buttons->setEnabled(false);
    prgSave->setValue(0);
    prgSave->show();
    // The last second's rows first reach the disk; the save reads the journal from there.
    m_journal->whenWritten([this, path, rate] {
        if (m_saver)
            m_saver->start(m_journal->path(), path, rate, m_minFz);
    });
}

void frmAcquire::saveFinished(bool ok, const QString& error) {
    m_saving = false;
    prgSave->hide();
    m_buttons->setEnabled(true);
    if (ok) {
        m_journal->remove();
        done(QDialog::Accepted);
        return;
    }
    // The journal is whole: offer another place.
    prompt().critical(error);
    askAndSave();
}

} // namespace kx
