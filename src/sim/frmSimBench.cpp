#include "sim/frmSimBench.h"

#include "device/TextBoxValidation.h"
#include "sim/BenchInput.h"
#include "sim/BenchLoadingStrip.h"
#include "sim/BenchPlacement.h"
#include "sim/SimDriver.h"
#include "sim/SimPlate.h"
#include "sim/SimPlatePage.h"
#include "support/Clock.h"
#include "support/ScaledClock.h"

#include <QComboBox>
#include <QEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QShortcut>
#include <QTabWidget>
#include <QVBoxLayout>

namespace kx {

namespace {

// Gravity at the earth's surface lies between about 9.76 and 9.84 m/s².
const BenchRange SiteGravity{QStringLiteral("Gravity"), 9.7, 9.9, QStringLiteral("m/s²")};

// Every digit a scenario or the user gave, so the value can be copied into a calibration.
QString gravityText(double value) {
    return QString::number(value, 'g', 10);
}

constexpr double SpeedPresets[] = {1, 10, 100, 1000};

QString speedText(double speed) {
    return QStringLiteral("×") + QString::number(speed);
}

// Tenths matter only for the slowest.
QString achievedText(double speed) {
    return QStringLiteral("×") + QString::number(speed, 'f', speed < 10 ? 1 : 0);
}

} // namespace

frmSimBench::frmSimBench(SimDriver& driver, Clock& clock, QWidget* parent)
    : QWidget(parent, Qt::Window)
    , m_driver(&driver)
    , m_clock(clock)
    , m_refresh(clock.createTimer(this))
    , m_strip(new BenchLoadingStrip(this)) {
    setObjectName(QStringLiteral("frmSimBench"));
    setWindowTitle(tr("Simulated Plates"));

    txtGravity = new QLineEdit(this);
    txtGravity->setObjectName(QStringLiteral("txtGravity"));
    txtGravity->setAccessibleName(tr("Site gravity (m/s²)"));
    showNumber(*txtGravity, gravityText(driver.gravity()));
    txtGravity->setMaximumWidth(120);
    TextBoxValidation::attach(txtGravity, [this] { setGravity(); });

    tabPlates = new QTabWidget(this);
    tabPlates->setObjectName(QStringLiteral("tabPlates"));
    tabPlates->setAccessibleName(tr("Plates"));
    for (SimPlate* plate : driver.plates()) {
        auto* page = new SimPlatePage(driver, *plate, tabPlates);
        connect(page, &SimPlatePage::refused, this, &frmSimBench::showRefusal);
        tabPlates->addTab(page, plate->serial());
        m_pages.append(page);
    }

    lblMessage = new QLabel(this);
    lblMessage->setObjectName(QStringLiteral("lblMessage"));
    lblMessage->setStyleSheet(QStringLiteral("color: #b00020;"));
    lblMessage->setWordWrap(true);

    cmdLoadingStrip = new QPushButton(tr("&Loading strip on top"), this);
    cmdLoadingStrip->setObjectName(QStringLiteral("cmdLoadingStrip"));
    cmdLoadingStrip->setAccessibleName(tr("Loading strip on top"));
    cmdLoadingStrip->setToolTip(tr("A small window with the calibration's points and Unload that "
                                   "stays above the program's dialogs"));

    auto* site = new QFormLayout;
    site->addRow(tr("Site gravity (m/s²)"), txtGravity);
    site->addRow(tr("Time"), buildTimeControl());
    auto* top = new QHBoxLayout;
    top->addLayout(site, 1);
    top->addWidget(cmdLoadingStrip, 0, Qt::AlignTop);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(tabPlates, 1);
    layout->addWidget(lblMessage);

    connect(m_refresh, &Timer::timeout, this, &frmSimBench::refresh);
    connect(cmdLoadingStrip, &QPushButton::clicked, this, &frmSimBench::showLoadingStrip);
    connect(m_strip, &BenchLoadingStrip::benchWanted, this, &frmSimBench::bringToFront);
    connect(tabPlates, &QTabWidget::currentChanged, this, [this](int index) {
        m_strip->follow(index >= 0 && index < m_pages.size() ? m_pages[index] : nullptr);
    });
    m_strip->follow(m_pages.value(0));
    // The pages point into the driver: once it is going, nothing here may touch them.
    connect(&driver, &QObject::destroyed, this, [this] {
        m_driver = nullptr;
        m_refresh->stop();
        m_strip->hide();
        hide();
        deleteLater();
    });
}

QWidget* frmSimBench::buildTimeControl() {
    auto* row = new QWidget(this);
    cbxSpeed = new QComboBox(row);
    cbxSpeed->setObjectName(QStringLiteral("cbxSpeed"));
    cbxSpeed->setAccessibleName(tr("Time"));
    cbxSpeed->setToolTip(tr("How many times faster than real time the plates, the waits and the "
                            "timers of the whole program run"));
    lblSpeed = new QLabel(row);
    lblSpeed->setObjectName(QStringLiteral("lblSpeed"));
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(cbxSpeed);
    layout->addWidget(lblSpeed, 1);
    // Only a program whose time can run faster has the control.
    row->setEnabled(false);
    lblSpeed->setText(tr("real time"));
    connect(cbxSpeed, &QComboBox::activated, this, [this](int index) {
        if (m_time)
            m_time->setSpeed(cbxSpeed->itemData(index).toDouble());
    });
    return row;
}

void frmSimBench::setTimeControl(ScaledClock& clock) {
    m_time = &clock;
    cbxSpeed->clear();
    for (const double speed : SpeedPresets)
        cbxSpeed->addItem(speedText(speed), speed);
    cbxSpeed->parentWidget()->setEnabled(true);
    connect(&clock, &ScaledClock::speedChanged, this, &frmSimBench::showSpeed);
    showSpeed(clock.speed());
}

void frmSimBench::showSpeed(double speed) {
    int index = cbxSpeed->findData(speed);
    if (index < 0) {
        // A speed from the command line between the presets, in its place among them.
        index = 0;
        while (index < cbxSpeed->count() && cbxSpeed->itemData(index).toDouble() < speed)
            ++index;
        cbxSpeed->insertItem(index, speedText(speed), speed);
    }
    cbxSpeed->setCurrentIndex(index);
    refreshSpeed();
}

void frmSimBench::refreshSpeed() {
    if (!m_time)
        return;
    const double asked = m_time->speed();
    const double achieved = m_time->achievedSpeed();
    const bool keepsUp = achieved >= KeepsUpAbove * asked;
    lblSpeed->setText(keepsUp ? tr("runs at %1").arg(achievedText(achieved))
                              : tr("this computer keeps up only %1").arg(achievedText(achieved)));
    lblSpeed->setStyleSheet(keepsUp ? QString() : QStringLiteral("color: #b00020;"));
}

void frmSimBench::setGuidePoints(const QList<QPointF>& points) {
    for (SimPlatePage* page : std::as_const(m_pages))
        page->setGuidePoints(points);
    m_strip->refresh();
}

void frmSimBench::setGuidePointSource(std::function<QList<QPointF>()> source) {
    m_guideSource = std::move(source);
    loadGuidePoints();
}

void frmSimBench::loadGuidePoints() {
    if (m_guideSource && m_driver)
        setGuidePoints(m_guideSource());
}

void frmSimBench::showCalibrationPoint(const QString& serial, int index) {
    if (!m_driver)
        return;
    loadGuidePoints();
    SimPlatePage* shown = index >= 0 ? page(serial) : nullptr;
    for (SimPlatePage* candidate : std::as_const(m_pages))
        candidate->setCurrentGuide(candidate == shown ? index : -1);
    if (!shown) {
        m_strip->setCurrentPoint(-1);
        return;
    }
    tabPlates->setCurrentWidget(shown);
    m_strip->follow(shown);
    m_strip->setCurrentPoint(index);
    // The calibration dialog covers the bench: its loading controls come up on top.
    if (isVisible())
        showLoadingStrip();
}

void frmSimBench::showLoadingStrip() {
    m_strip->refresh();
    if (!m_strip->isVisible()) {
        m_strip->adjustSize();
        if (const QScreen* display = screen())
            m_strip->move(
                loadingStripCorner(display->availableGeometry(), m_strip->frameGeometry().size()));
    }
    m_strip->show();
    m_strip->raise();
}

void frmSimBench::placeBeside(QWidget& window) {
    m_besideOf = &window;
    window.installEventFilter(this);
}

bool frmSimBench::eventFilter(QObject* watched, QEvent* event) {
    // Once, when the main window first shows, and once it has placed itself: after that the
    // user places the windows.
    if (watched == m_besideOf && event->type() == QEvent::Show) {
        m_besideOf->removeEventFilter(this);
        m_clock.singleShot(0, this, [this] { placeBesideNow(); });
    }
    return QWidget::eventFilter(watched, event);
}

void frmSimBench::placeBesideNow() {
    const QScreen* display = m_besideOf ? m_besideOf->screen() : nullptr;
    if (!display)
        return;
    const QSize frame = frameGeometry().size() - size();
    const SideBySide placed =
        SideBySide::on(display->availableGeometry(), m_besideOf->frameGeometry(),
                       frameGeometry().size(), minimumSizeHint().width() + frame.width());
    m_besideOf->move(placed.window);
    resize(placed.bench.size() - frame);
    move(placed.bench.topLeft());
    m_besideOf = nullptr;
}

SimPlatePage* frmSimBench::page(const QString& serial) const {
    for (SimPlatePage* candidate : m_pages)
        if (candidate->plate().serial().compare(serial, Qt::CaseInsensitive) == 0)
            return candidate;
    return nullptr;
}

void frmSimBench::installShortcut(QWidget& host) {
    auto* open = new QShortcut(shortcut(), &host);
    open->setContext(Qt::WindowShortcut);
    connect(open, &QShortcut::activated, this, &frmSimBench::bringToFront);
}

void frmSimBench::bringToFront() {
    show();
    raise();
    activateWindow();
}

void frmSimBench::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    loadGuidePoints();
    refresh();
    m_refresh->start(RefreshMs);
}

void frmSimBench::hideEvent(QHideEvent* event) {
    m_refresh->stop();
    QWidget::hideEvent(event);
}

void frmSimBench::setGravity() {
    if (!m_driver)
        return;
    if (const std::optional<double> gravity = takeNumber(
            *txtGravity, SiteGravity, [this](const QString& why) { showRefusal(why); })) {
        m_driver->setGravity(*gravity);
        showNumber(*txtGravity, gravityText(*gravity));
        lblMessage->clear();
    }
}

void frmSimBench::refresh() {
    if (!m_driver)
        return;
    for (int i = 0; i < m_pages.size(); ++i) {
        m_pages[i]->refresh();
        tabPlates->setTabText(i, m_pages[i]->plate().serial());
    }
    if (m_strip->isVisible())
        m_strip->refresh();
    refreshSpeed();
}

void frmSimBench::showRefusal(const QString& why) {
    lblMessage->setText(why);
}

} // namespace kx
