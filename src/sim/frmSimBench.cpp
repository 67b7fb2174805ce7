#include "sim/frmSimBench.h"

#include "device/TextBoxValidation.h"
#include "sim/BenchInput.h"
#include "sim/SimDriver.h"
#include "sim/SimPlate.h"
#include "sim/SimPlatePage.h"
#include "support/Clock.h"

#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
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

} // namespace

frmSimBench::frmSimBench(SimDriver& driver, Clock& clock, QWidget* parent)
    : QWidget(parent, Qt::Window)
    , m_driver(&driver)
    , m_refresh(clock.createTimer(this)) {
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

    auto* site = new QFormLayout;
    site->addRow(tr("Site gravity (m/s²)"), txtGravity);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(site);
    layout->addWidget(tabPlates, 1);
    layout->addWidget(lblMessage);

    connect(m_refresh, &Timer::timeout, this, &frmSimBench::refresh);
    // The pages point into the driver: once it is going, nothing here may touch them.
    connect(&driver, &QObject::destroyed, this, [this] {
        m_driver = nullptr;
        m_refresh->stop();
        hide();
        deleteLater();
    });
}

void frmSimBench::setGuidePoints(const QList<QPointF>& points) {
    for (SimPlatePage* page : std::as_const(m_pages))
        page->setGuidePoints(points);
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
}

void frmSimBench::showRefusal(const QString& why) {
    lblMessage->setText(why);
}

} // namespace kx
