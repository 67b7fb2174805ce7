#include "MainWindowBench.h"

#include <QTest>

namespace kx::test {

void MainWindowBench::create(Scenario scenario) {
    window = std::make_unique<frmMain>(clock, prompt, [this, scenario] {
        auto driver = std::make_unique<SimDriver>(clock);
        scenario.applyTo(*driver);
        sim = driver.get();
        return driver;
    });
}

void MainWindowBench::start(Scenario scenario) {
    create(std::move(scenario));
    window->load();
    clock.advance(1000);
    // The window asked to be activated; focus moves between its controls only once it is.
    QCoreApplication::processEvents();
    ASSERT_EQ(QApplication::activeWindow(), window.get());
}

void MainWindowBench::enterServiceMode() {
    QTest::mouseClick(window->centralWidget(), Qt::MiddleButton,
                      Qt::ShiftModifier | Qt::ControlModifier, QPoint(2, 2));
    ASSERT_TRUE(window->servicePanels());
}

void MainWindowBench::select(const QString& serial) {
    const int index = window->cbxDevice->findText(serial);
    window->cbxDevice->setCurrentIndex(index);
    Q_EMIT window->cbxDevice->activated(index);
}

QStringList MainWindowBench::entries() const {
    QStringList list;
    for (int i = 0; i < window->cbxDevice->count(); ++i)
        list << window->cbxDevice->itemText(i);
    return list;
}

} // namespace kx::test
