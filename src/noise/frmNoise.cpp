#include "noise/frmNoise.h"

#include "noise/NoiseChart.h"
#include "noise/NoiseResultText.h"
#include "noise/NoiseSession.h"
#include "resources/StringTable.h"
#include "support/Folders.h"
#include "support/IniFile.h"
#include "support/NumberFormat.h"

#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QStatusBar>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>

namespace kx {

namespace {
constexpr int AcquireCaption = 10;
constexpr int OkCaption = 20;
constexpr int CancelCaption = 30;
// The results list shows this many characters of its lines and scrolls sideways for the rest,
// so the dialog fits a 1366 x 768 screen beside the picture.
constexpr int VisibleLineCharacters = 64;
const QColor SuspectColour(200, 0, 0);

QLabel* valueLabel(QLabel* label, const QString& accessibleName) {
    label->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label->setMinimumWidth(label->fontMetrics().horizontalAdvance(QStringLiteral("00000.000")));
    label->setAccessibleName(QString(accessibleName).remove(u'&').remove(u':').trimmed());
    return label;
}

} // namespace

frmNoise::frmNoise(const ToolContext& context, QWidget* parent)
    : ToolDialog(context, strings::NoiseBlock, parent)
    , m_session(new NoiseSession(context.clock, context.prompt, this)) {
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
    // A long reason must not widen the dialog past the screen: the panel shares the room there
    // is while it has something to say, and its tip gives the whole text.
    StatusBar1Panel2->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    StatusBar1Panel2->hide();
    StatusBar1->addPermanentWidget(StatusBar1Panel2, 1);
    // The progress of a test shows beside the status, so the dialog keeps its size.
    StatusBar1->addPermanentWidget(ProgressBar1, 1);
    Timer1 = m_session->waitTimer();

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

    connect(cmdAcquire, &QPushButton::clicked, m_session, &NoiseSession::start);
    connect(cmdOK, &QPushButton::clicked, this, &QDialog::accept);
    connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_session, &NoiseSession::changed, this, &frmNoise::showSession);
    connect(m_session, &NoiseSession::progressed, this, &frmNoise::showProgress);
    connect(m_session, &NoiseSession::runStarted, lstResults, &QListWidget::clear);
    connect(m_session, &NoiseSession::testStored, this, &frmNoise::showTest);
    connect(m_session, &NoiseSession::testMarked, this, &frmNoise::showTest);
    // A silent plate ends its test as a read time-out does, with the same message and controls.
    connect(m_session, &NoiseSession::silent, this,
            [this] { reportDeviceEvent(DeviceEvent::ReadTimeout); });
    m_session->setPicture([this] { return picNoise->png(); });
    // Then the abort, the message and the controls: cmdAcquire and cmdCancel on, cmdOK off.
    // Only a test being measured can time out; a late event changes nothing.
    setDeviceErrorActions({.stop =
                               [this] {
                                   m_session->stop(NoiseSession::Ending::TimedOut);
                                   repaint();
                               },
                           .applies = [this](DeviceEvent) { return m_session->measuring(); }});
}

QString frmNoise::resultPath() const {
    return m_session->resultPath();
}

bool frmNoise::running() const {
    return m_session->running();
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
    lblRun = makeLabel("lblRun", strings::text(s::Run), frmTestParam);
    lblRunTxt = valueLabel(makeLabel("lblRunTxt", {}, frmTestParam), lblRun->text());
    lblRunTxt->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);

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
    grid->addWidget(lblRun, 1, 6);
    grid->addWidget(lblRunTxt, 1, 7, 1, 2);
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
    // Fixed pitch, so the columns of the lines stand under each other; scrolled in pixels, so
    // that the heading can follow exactly.
    lstResults->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    lstResults->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    lstResults->setAccessibleName(QString(frmResults->title()).remove(u':'));
    lstResults->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    const int lineWidth =
        lstResults->fontMetrics().horizontalAdvance(QString(VisibleLineCharacters, u'0'));
    lstResults->setMinimumSize(lineWidth, 240);
    // The heading is the same fixed-pitch text, set in from the frame as the list's items are,
    // in a strip that follows the results when they scroll sideways.
    lblHeading = new QLabel(frmResults);
    lblHeading->setObjectName(QStringLiteral("lblHeading"));
    lblHeading->setFont(lstResults->font());
    lblHeading->setTextFormat(Qt::PlainText);
    const int inset =
        lstResults->style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, lstResults) + 1;
    lblHeading->setContentsMargins(inset, 2, inset, 2);
    fraHeading = new QScrollArea(frmResults);
    fraHeading->setObjectName(QStringLiteral("fraHeading"));
    fraHeading->setFrameStyle(lstResults->frameStyle());
    fraHeading->setWidget(lblHeading);
    fraHeading->setFocusPolicy(Qt::NoFocus);
    fraHeading->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    fraHeading->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    fraHeading->setBackgroundRole(QPalette::Base);
    fraHeading->setMinimumWidth(lineWidth);
    fraHeading->setFixedHeight(2 * lblHeading->fontMetrics().lineSpacing() + 4 +
                               2 * fraHeading->frameWidth());
    // As wide as the results' lines (a negative average or a suspect mark makes one longer
    // than the heading), so the two scroll alike to the end.
    connect(lstResults->horizontalScrollBar(), &QScrollBar::rangeChanged, lblHeading,
            [this](int, int most) {
                lblHeading->resize(std::max(lblHeading->sizeHint().width(),
                                            most + fraHeading->viewport()->width()),
                                   lblHeading->height());
            });
    connect(lstResults->horizontalScrollBar(), &QScrollBar::valueChanged,
            fraHeading->horizontalScrollBar(), &QScrollBar::setValue);
    picNoise = new NoiseChart(frmResults);
    picNoise->setObjectName(QStringLiteral("picNoise"));
    picNoise->setAccessibleName(strings::text(strings::noise::ChartDeviation));
    picNoise->setMinimumSize(360, 420);

    auto* list = new QVBoxLayout;
    list->setSpacing(0);
    list->addWidget(fraHeading);
    list->addWidget(lstResults, 1);
    auto* row = new QHBoxLayout(frmResults);
    row->addLayout(list, 3);
    row->addWidget(picNoise, 2);
    return frmResults;
}

void frmNoise::loading() {
    const bool ready = m_session->open(device(), IniFile::sharedProfile(), DocumentsFolder());
    const NoiseSession& session = *m_session;
    picNoise->setData(&session.plan(), &session.results());
    lblHeading->setText(noiseListHeading(session.results().channels()).join(u'\n'));
    lblHeading->adjustSize();
    lblDurationTxt->setText(formatGeneral(session.plan().testDuration));
    cmdAcquire->setEnabled(ready);
    showSession();
}

void frmNoise::showSession() {
    const NoiseSession& session = *m_session;
    StatusBar1Panel1->setText(session.status());
    StatusBar1Panel2->setText(session.fileStatus());
    StatusBar1Panel2->setToolTip(session.fileStatus());
    StatusBar1Panel2->setVisible(!session.fileStatus().isEmpty());
    lblRunTxt->setText(session.progressText());
    // The controls follow the session's changes of state only: a device error's reaction sets
    // them its own way after the session has stopped.
    if (session.running() != m_shownRunning) {
        m_shownRunning = session.running();
        cmdAcquire->setEnabled(!m_shownRunning);
        // A stray Enter must not end a night's run.
        cmdOK->setDefault(!m_shownRunning);
    }
    if (session.measuring() != m_shownMeasuring) {
        m_shownMeasuring = session.measuring();
        ProgressBar1->setVisible(m_shownMeasuring);
        cmdOK->setEnabled(!m_shownMeasuring);
        cmdCancel->setEnabled(!m_shownMeasuring);
        showProgress();
    }
    if (session.running()) {
        const NoisePlan& plan = session.plan();
        const qsizetype f = session.sequence().frequencyIndex();
        const qsizetype e = session.sequence().excitationIndex();
        const QString of = strings::text(strings::noise::Of);
        lblF->setText(QString::number(f + 1) + of + QString::number(plan.frequencyCount()));
        lblV->setText(QString::number(e + 1) + of + QString::number(plan.excitationCount()));
        lblExcitationTxt->setText(formatNumber(plan.excitations[e], u"0.000"));
        lblFreqTxt->setText(formatNumber(plan.frequencies[f], u"0.000"));
    }
}

void frmNoise::showProgress() {
    ProgressBar1->setMaximum(m_session->progressMaximum());
    ProgressBar1->setValue(m_session->progress());
}

void frmNoise::showTest(qsizetype test) {
    QListWidgetItem* item = lstResults->item(int(test));
    if (!item) {
        item = new QListWidgetItem(lstResults);
        lstResults->scrollToBottom();
    }
    const NoiseResults& results = m_session->results();
    const qsizetype nF = results.frequencies();
    item->setText(m_session->listLine(test));
    if (results.marks(test % nF, test / nF) != NoiseResults::NotSuspect)
        item->setForeground(SuspectColour);
    picNoise->update();
}

void frmNoise::done(int result) {
    if (!m_session->mayLeave(result == QDialog::Accepted, deviceRemoved()))
        return;
    ToolDialog::done(result);
}

void frmNoise::keyPressEvent(QKeyEvent* event) {
    // With no default button during a run, Enter would do nothing at all; it asks instead, as
    // OK would.
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enter && m_session->running() && event->modifiers() == Qt::NoModifier) {
        accept();
        return;
    }
    ToolDialog::keyPressEvent(event);
}

void frmNoise::unloading() {
    m_session->stop(deviceRemoved() ? NoiseSession::Ending::Removed
                                    : NoiseSession::Ending::Stopped);
    m_session->savePlan(IniFile::sharedProfile());
    if (device())
        disconnect(device(), nullptr, m_session, nullptr);
}

} // namespace kx
