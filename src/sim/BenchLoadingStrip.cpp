#include "sim/BenchLoadingStrip.h"

#include "sim/SimPlate.h"
#include "sim/SimPlatePage.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace kx {

namespace {

QPushButton* makeButton(const QString& caption, const QString& objectName,
                        const QString& accessibleName, QWidget* parent) {
    auto* button = new QPushButton(caption, parent);
    button->setObjectName(objectName);
    button->setAccessibleName(accessibleName);
    button->setFocusPolicy(Qt::NoFocus); // a click must not take the focus from the dialog
    return button;
}

} // namespace

BenchLoadingStrip::BenchLoadingStrip(QWidget* parent)
    : QWidget(parent, Qt::Tool | Qt::WindowStaysOnTopHint) {
    setObjectName(QStringLiteral("frmLoadingStrip"));
    setWindowTitle(tr("Loading"));
    lblPlate = new QLabel(this);
    lblPlate->setObjectName(QStringLiteral("lblPlate"));
    cmdUnload = makeButton(tr("&Unload"), QStringLiteral("cmdStripUnload"), tr("Unload"), this);
    cmdBench = makeButton(tr("Bench..."), QStringLiteral("cmdStripBench"), tr("Bench"), this);
    m_points = new QHBoxLayout;
    m_points->setSpacing(2);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(6, 4, 6, 4);
    layout->addWidget(lblPlate);
    layout->addLayout(m_points);
    layout->addSpacing(8);
    layout->addWidget(cmdUnload);
    layout->addWidget(cmdBench);
    connect(cmdUnload, &QPushButton::clicked, this, [this] {
        if (m_page)
            m_page->unload();
    });
    connect(cmdBench, &QPushButton::clicked, this, &BenchLoadingStrip::benchWanted);
    refresh();
}

void BenchLoadingStrip::follow(SimPlatePage* page) {
    if (page == m_page)
        return;
    m_page = page;
    m_current = -1;
    refresh();
}

void BenchLoadingStrip::setCurrentPoint(int index) {
    m_current = index;
    for (int i = 0; i < cmdPoint.size(); ++i)
        cmdPoint[i]->setChecked(i == m_current);
}

void BenchLoadingStrip::refresh() {
    lblPlate->setText(m_page
                          ? tr("%1, %2 kg:").arg(m_page->plate().serial(), m_page->txtMass->text())
                          : tr("No plate"));
    cmdUnload->setEnabled(m_page);
    const qsizetype points = m_page ? m_page->guidePoints().size() : 0;
    if (points != cmdPoint.size())
        rebuildPoints();
}

void BenchLoadingStrip::rebuildPoints() {
    qDeleteAll(cmdPoint);
    cmdPoint.clear();
    const qsizetype points = m_page ? m_page->guidePoints().size() : 0;
    for (int i = 0; i < points; ++i) {
        const QString number = QString::number(i + 1);
        QPushButton* button = makeButton(number, QStringLiteral("cmdPoint") + number,
                                         tr("Weight to point %1").arg(number), this);
        button->setCheckable(true);
        button->setToolTip(
            tr("Takes everything off the plate and puts the mass on point %1").arg(number));
        button->setFixedWidth(button->fontMetrics().horizontalAdvance(QStringLiteral("00")) + 16);
        // The press shows the calibration's point, not the last click.
        connect(button, &QPushButton::clicked, this, [this, i] {
            if (m_page)
                m_page->placeAtGuide(i);
            setCurrentPoint(m_current);
        });
        m_points->addWidget(button);
        cmdPoint.append(button);
    }
    setCurrentPoint(m_current);
    adjustSize();
}

} // namespace kx
