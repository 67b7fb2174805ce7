#pragma once

#include "GuiActions.h"
#include "RecordingPrompt.h"
#include "TempEnvironment.h"
#include "app/frmMain.h"
#include "sim/Scenario.h"
#include "sim/SimDriver.h"
#include "sim/SimPlate.h"
#include "support/ManualClock.h"

#include <QComboBox>
#include <memory>

namespace kx::test {

// The real main window on simulated plates, a manual clock and a recording prompt. start()
// runs the load step and lets its 1000 ms pass; by default two plates are connected, serial
// 20418 with firmware 2.x (selected) and 11093 with firmware 1.x.
class MainWindowBench : public ::testing::Test {
protected:
    static inline const QString Fw2Plate = QStringLiteral("20418");
    static inline const QString Fw1Plate = QStringLiteral("11093");

    void TearDown() override { window.reset(); }

    void create(Scenario scenario = Scenario::defaults());
    void start(Scenario scenario = Scenario::defaults());
    // Middle click with exactly Shift and Ctrl on the window's background.
    void enterServiceMode();

    template <typename T = QWidget>
    T* control(const QString& objectName) const {
        return child<T>(window.get(), objectName);
    }
    QLineEdit* box(const QString& objectName) const { return control<QLineEdit>(objectName); }
    QString text(const QString& objectName) const { return box(objectName)->text(); }
    void type(const QString& objectName, const QString& typed) { typeInto(box(objectName), typed); }

    // What a user does to pick a list entry.
    void select(const QString& serial);
    QStringList entries() const;
    SimPlate* plate(const QString& serial) const { return sim->plate(serial); }
    SimPlate* selectedPlate() const { return qobject_cast<SimPlate*>(window->selectedDevice()); }

    TempEnvironment environment;
    ManualClock clock;
    RecordingPrompt prompt;
    SimDriver* sim = nullptr;
    std::unique_ptr<frmMain> window;
};

} // namespace kx::test
