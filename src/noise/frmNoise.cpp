#include "noise/frmNoise.h"

#include "noise/NoiseChart.h"
#include "noise/NoiseResultText.h"
#include "resources/StringTable.h"
#include "support/Clock.h"
#include "support/Folders.h"
#include "support/IniFile.h"
#include "support/NumberFormat.h"
#include "support/Rounding.h"
#include "support/SaveAtomically.h"

#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QStatusBar>
#include <QVBoxLayout>
#include <algorithm>

namespace kx {

namespace {
constexpr int AcquireCaption = 10;
constexpr int OkCaption = 20;
constexpr int CancelCaption = 30;

// The library's settling option of a zero acquisition, passed as the plate expects it.
constexpr qint32 ZeroOption = 30;
constexpr int TimerMs = 1000;

QLabel* valueLabel(QLabel* label, const QString& accessibleName) {
    label->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label->setMinimumWidth(label->fontMetrics().horizontalAdvance(QStringLiteral("00000.000")));
    label->setAccessibleName(QString(accessibleName).remove(u'&').remove(u':').trimmed());
    return label;
}
} // namespace

frmNoise::frmNoise(const ToolContext& context, QWidget* parent)
    : ToolDialog(context, strings::NoiseBlock, parent) {
    setObjectName(QStringLiteral("frmNoise"));
    setWindowTitle(text(0));

    cmdAcquire = new QPushButton(text(AcquireCaption), this);
    cmdAcquire->setObjectName(QStringLiteral("cmdAcquire"));
    cmdOK = new QPushButton(text(OkCaption), this);
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    cmdOK->setDefault(true);
    cmdCancel = new QPushButton(text(CancelCaption), this);
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    ProgressBar1 = makeProgressBar();
    StatusBar1 = makeStatusBar();
    StatusBar1Panel1 = new QLabel(StatusBar1);
    StatusBar1Panel1->setObjectName(QStringLiteral("StatusBar1Panel1"));
    StatusBar1Panel2 = new QLabel(StatusBar1);
    StatusBar1Panel2->setObjectName(QStringLiteral("StatusBar1Panel2"));
    StatusBar1->addWidget(StatusBar1Panel1, 1);
    StatusBar1->addPermanentWidget(StatusBar1Panel2);
    // The progress of a test shows beside the status, so the dialog keeps its size.
    StatusBar1->addPermanentWidget(ProgressBar1, 1);
    Timer1 = clock().createTimer(this);
    Timer1->setObjectName(QStringLiteral("Timer1"));

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(cmdAcquire);
    buttons->addStretch();
    buttons->addWidget(cmdOK);
    buttons->addWidget(cmdCancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(buildTestParamFrame());
    layout->addWidget(buildResultsFrame(), 1);
    layout->addLayout(buttons);
    layout->addWidget(StatusBar1);

    connect(cmdAcquire, &QPushButton::clicked, this, &frmNoise::cmdAcquire_Click);
    connect(cmdOK, &QPushButton::clicked, this, &QWidget::close);
    connect(cmdCancel, &QPushButton::clicked, this, &QWidget::close);
    connect(Timer1, &Timer::timeout, this, &frmNoise::Timer1_Timer);
    // Then the abort, the message and the controls: cmdAcquire and cmdCancel on, cmdOK off.
    setDeviceErrorActions({.stop = [this] {
        stopRun();
        repaint();
    }});
}

QLabel* frmNoise::makeLabel(const char* objectName, const QString& caption, QWidget* parent) {
    auto* label = new QLabel(caption, parent);
    label->setObjectName(QLatin1String(objectName));
    return label;
}

QGroupBox* frmNoise::buildTestParamFrame() {
    namespace s = strings::noise;
    frmTestParam = new QGroupBox(strings::text(s::TestParamFrame), this);
    frmTestParam->setObjectName(QStringLiteral("frmTestParam"));
    lblTitleF = makeLabel("lblTitleF", strings::text(s::TitleF), frmTestParam);
    lblF = valueLabel(makeLabel("lblF", {}, frmTestParam), lblTitleF->text());
    lblSampFreq = makeLabel("lblSampFreq", strings::text(s::SampFreq), frmTestParam);
    lblFreqTxt = valueLabel(makeLabel("lblFreqTxt", {}, frmTestParam), lblSampFreq->text());
    lblTitleV = makeLabel("lblTitleV", strings::text(s::TitleV), frmTestParam);
    lblV = valueLabel(makeLabel("lblV", {}, frmTestParam), lblTitleV->text());
    lblExcTitke = makeLabel("lblExcTitke", strings::text(s::ExcTitke), frmTestParam);
    lblExcitationTxt =
        valueLabel(makeLabel("lblExcitationTxt", {}, frmTestParam), lblExcTitke->text());
    lblDuration = makeLabel("lblDuration", strings::text(s::Duration), frmTestParam);
    lblDurationTxt = valueLabel(makeLabel("lblDurationTxt", {}, frmTestParam), lblDuration->text());

    auto* grid = new QGridLayout(frmTestParam);
    grid->addWidget(lblTitleF, 0, 0);
    grid->addWidget(lblF, 0, 1);
    grid->addWidget(lblSampFreq, 0, 3);
    grid->addWidget(lblFreqTxt, 0, 4);
    grid->addWidget(lblTitleV, 1, 0);
    grid->addWidget(lblV, 1, 1);
    grid->addWidget(lblExcTitke, 1, 3);
    grid->addWidget(lblExcitationTxt, 1, 4);
    grid->addWidget(lblDuration, 0, 6);
    grid->addWidget(lblDurationTxt, 0, 7);
    grid->setColumnMinimumWidth(2, 24);
    grid->setColumnMinimumWidth(5, 24);
    grid->setColumnStretch(8, 1);
    return frmTestParam;
}

QGroupBox* frmNoise::buildResultsFrame() {
    frmResults = new QGroupBox(strings::text(strings::noise::ResultsFrame), this);
    frmResults->setObjectName(QStringLiteral("frmResults"));
    lstResults = new QListWidget(frmResults);
    lstResults->setObjectName(QStringLiteral("lstResults"));
    lstResults->setAccessibleName(QString(frmResults->title()).remove(u':'));
    // Fixed pitch, so the columns of the lines stand under each other.
    lstResults->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    const int lineWidth =
        lstResults->fontMetrics().horizontalAdvance(QString(PrintZoneWidth * 10, u'0'));
    lstResults->setMinimumSize(lineWidth, 320);
    picNoise = new NoiseChart(frmResults);
    picNoise->setObjectName(QStringLiteral("picNoise"));
    picNoise->setAccessibleName(strings::text(strings::noise::ChartDeviation));
    picNoise->setMinimumSize(360, 460);

    auto* row = new QHBoxLayout(frmResults);
    row->addWidget(lstResults, 3);
    row->addWidget(picNoise, 2);
    return frmResults;
}

void frmNoise::loading() {
    const IniFile ini = IniFile::sharedProfile();
    CreateFolderPath(FolderOfPath(ini.path()));
    m_plan = NoisePlan::read(ini);
    m_planRead = true;
    m_results = NoiseResults(m_plan.channels, m_plan.frequencyCount(), m_plan.excitationCount());
    m_sequence = NoiseSequence(m_plan.frequencyCount(), m_plan.excitationCount());
    picNoise->setData(&m_plan, &m_results);
    lblDurationTxt->setText(formatGeneral(m_plan.testDuration));

    const bool ready = device() && runDevice([this] {
                           m_file = NoiseResultFile(
                               firstFreeNoiseFile(DocumentsFolder(), device()->SerialNumber()));
                           m_savedFrequency = device()->SampleFrequency(Which::Current);
                           m_savedExcitation = device()->GageVoltage(Which::Current);
                       });
    cmdAcquire->setEnabled(ready);
    setStatus(strings::text(ready ? strings::noise::Ready : strings::noise::NoPlatform));
    if (!device())
        return;
    connect(device(), &PlateDevice::ZeroProgress, this, &frmNoise::ZeroProgress);
    connect(device(), &PlateDevice::ZeroDone, this,
            [this](qint32, const ChannelValues& r1, const ChannelValues& r2,
                   const ChannelValues& r3) { ZeroDone(r1, r2, r3); });
}

void frmNoise::cmdAcquire_Click() {
    if (!device() || m_running)
        return;
    cmdAcquire->setEnabled(false);
    m_results.clear();
    lstResults->clear();
    picNoise->update();
    m_sequence.restart();
    m_running = true;
    prepareTest();
}

void frmNoise::prepareTest() {
    const qsizetype f = m_sequence.frequencyIndex();
    const qsizetype e = m_sequence.excitationIndex();
    const bool set = runDevice([&] {
        device()->SetSampleFrequency(Which::Current, m_plan.frequencies[f]);
        device()->SetGageVoltage(Which::Current, m_plan.excitations[e]);
        // The file shows what the plate took, not what was asked.
        m_plan.frequencies[f] = device()->SampleFrequency(Which::Current);
        m_plan.excitations[e] = device()->GageVoltage(Which::Current);
    });
    if (!set) {
        stopRun();
        return;
    }
    const QString of = strings::text(strings::noise::Of);
    lblF->setText(QString::number(f + 1) + of + QString::number(m_plan.frequencyCount()));
    lblV->setText(QString::number(e + 1) + of + QString::number(m_plan.excitationCount()));
    lblExcitationTxt->setText(formatNumber(m_plan.excitations[e], u"0.000"));
    lblFreqTxt->setText(formatNumber(m_plan.frequencies[f], u"0.000"));
    lblDurationTxt->setText(formatGeneral(m_plan.testDuration));
    setStatus(strings::text(strings::noise::WaitingToStart));
    m_waitStart = clock().tickCount();
    Timer1->start(TimerMs);
}

void frmNoise::Timer1_Timer() {
    const quint32 elapsed = clock().tickCount() - m_waitStart;
    const float wait = m_sequence.waitSeconds(m_plan);
    if (!NoiseSequence::waitIsOver(elapsed, wait)) {
        setStatus(m_sequence.countdownText(elapsed, wait));
        return;
    }
    Timer1->stop();
    setStatus({}); // the progress bar tells from here on
    startTest();
}

void frmNoise::startTest() {
    const bool started = runDevice([this] {
        const double hertz = device()->SampleFrequency(Which::Current);
        const qint32 samples =
            std::max(1, roundHalfEven(static_cast<double>(m_plan.testDuration) * hertz));
        ProgressBar1->setMaximum(samples);
        ProgressBar1->setValue(0);
        showMeasuring(true);
        device()->FlushData();
        device()->CalibrateSelf();
        const double settled = device()->SampleFrequency(Which::Current);
        m_measuring = true;
        device()->StartZero(samples, true, ZeroOption, roundHalfEven(0.5 * settled));
    });
    if (!started)
        stopRun();
}

void frmNoise::ZeroProgress(qint32 samples) {
    if (m_measuring)
        ProgressBar1->setValue(std::min(samples, ProgressBar1->maximum()));
}

void frmNoise::ZeroDone(const ChannelValues& r1, const ChannelValues& r2, const ChannelValues& r3) {
    if (!m_measuring)
        return;
    m_measuring = false;
    const qsizetype f = m_sequence.frequencyIndex();
    const qsizetype e = m_sequence.excitationIndex();
    m_results.store(f, e, r1, r2, r3);
    lstResults->addItem(noiseListLine(m_plan, m_results, f, e));
    lstResults->scrollToBottom();
    picNoise->update();
    showMeasuring(false);
    saveResults();
    if (m_sequence.advance())
        prepareTest();
    else
        finishRun();
}

void frmNoise::finishRun() {
    Timer1->stop();
    m_running = false;
    cmdAcquire->setEnabled(true);
    setStatus(strings::text(strings::noise::TestsDone));
    saveResults();
    savePicture();
    restorePlate();
}

void frmNoise::stopRun() {
    if (!m_running)
        return;
    Timer1->stop();
    m_running = false;
    if (m_measuring && !deviceRemoved())
        runDevice([this] { device()->StopAcquisition(); });
    m_measuring = false;
    showMeasuring(false);
    cmdAcquire->setEnabled(true);
    setStatus(strings::text(strings::noise::Ready));
    // What was measured is in the file already, unless its last save failed.
    if (m_file.failing())
        saveResults();
    if (!m_results.empty())
        savePicture();
    restorePlate();
}

void frmNoise::restorePlate() {
    if (!device() || deviceRemoved())
        return;
    runDevice([this] {
        device()->SetSampleFrequency(Which::Current, m_savedFrequency);
        device()->SetGageVoltage(Which::Current, m_savedExcitation);
    });
}

void frmNoise::saveResults() {
    switch (m_file.save(noiseResultFile(m_plan, m_results))) {
    case NoiseResultFile::Outcome::Saved:
        StatusBar1Panel2->clear();
        break;
    case NoiseResultFile::Outcome::Failed:
        StatusBar1Panel2->setText(strings::text(strings::noise::FileNotSaved));
        break;
    case NoiseResultFile::Outcome::StillFailing:
        break;
    }
}

void frmNoise::savePicture() {
    QString path = m_file.path();
    path.replace(path.size() - 4, 4, QStringLiteral(".png"));
    if (const SaveResult saved = saveAtomically(path, picNoise->png()); !saved)
        StatusBar1Panel2->setText(saved.error);
}

void frmNoise::showMeasuring(bool measuring) {
    ProgressBar1->setVisible(measuring);
    cmdOK->setEnabled(!measuring);
    cmdCancel->setEnabled(!measuring);
}

void frmNoise::setStatus(const QString& status) {
    StatusBar1Panel1->setText(status);
}

void frmNoise::unloading() {
    stopRun();
    if (m_planRead)
        m_plan.write(IniFile::sharedProfile());
    if (device())
        disconnect(device(), nullptr, this, nullptr);
}

} // namespace kx
