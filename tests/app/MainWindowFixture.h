#pragma once

#include "RecordingPrompt.h"
#include "TempEnvironment.h"
#include "app/frmMain.h"
#include "sim/Scenario.h"
#include "sim/SimDriver.h"
#include "sim/SimPlate.h"
#include "support/ManualClock.h"

#include <QApplication>
#include <QComboBox>
#include <QCoreApplication>
#include <QLineEdit>
#include <QTest>
#include <gtest/gtest.h>
#include <memory>

namespace kx::test {

// The real main window on simulated plates, a manual clock and a recording prompt. start()
// runs the load step and lets its 1000 ms pass; by default two plates are connected, serial
// 20418 with firmware 2.x and 11093 with firmware 1.x.
class MainWindowFixture : public ::testing::Test {
protected:
    static inline const QString Fw2Plate = QStringLiteral("20418");
    static inline const QString Fw1Plate = QStringLiteral("11093");

    void TearDown() override { window.reset(); }

    void create(Scenario scenario = Scenario::defaults()) {
        window = std::make_unique<frmMain>(clock, prompt, [this, scenario] {
            auto driver = std::make_unique<SimDriver>(clock);
            scenario.applyTo(*driver);
            sim = driver.get();
            return driver;
        });
    }

    void start(Scenario scenario = Scenario::defaults()) {
        create(std::move(scenario));
        window->load();
        clock.advance(1000);
        // The window asked to be activated; focus moves between its controls only once it is.
        QCoreApplication::processEvents();
        ASSERT_EQ(QApplication::activeWindow(), window.get());
    }

    template <typename T = QWidget>
    T* control(const QString& objectName) const {
        T* found = window->findChild<T*>(objectName);
        EXPECT_NE(found, nullptr) << objectName.toStdString();
        return found;
    }
    QLineEdit* box(const QString& objectName) const { return control<QLineEdit>(objectName); }
    QString text(const QString& objectName) const { return box(objectName)->text(); }

    // What a user does to pick a list entry.
    void select(int index) {
        window->cbxDevice->setCurrentIndex(index);
        Q_EMIT window->cbxDevice->activated(index);
    }
    void select(const QString& serial) { select(window->cbxDevice->findText(serial)); }

    // Replaces the box's text as a user would and confirms it with Enter.
    void type(const QString& objectName, const QString& typed) {
        QLineEdit* edit = box(objectName);
        edit->selectAll();
        if (typed.isEmpty())
            QTest::keyClick(edit, Qt::Key_Backspace);
        else
            QTest::keyClicks(edit, typed);
        QTest::keyClick(edit, Qt::Key_Return);
    }

    QStringList entries() const {
        QStringList list;
        for (int i = 0; i < window->cbxDevice->count(); ++i)
            list << window->cbxDevice->itemText(i);
        return list;
    }

    SimPlate* plate(const QString& serial) const { return sim->plate(serial); }
    SimPlate* selectedPlate() const { return qobject_cast<SimPlate*>(window->selectedDevice()); }

    TempEnvironment environment;
    ManualClock clock;
    RecordingPrompt prompt;
    SimDriver* sim = nullptr;
    std::unique_ptr<frmMain> window;
};

} // namespace kx::test
