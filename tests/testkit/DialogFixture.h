#pragma once

#include "GuiActions.h"
#include "RecordingPrompt.h"
#include "TempEnvironment.h"
#include "device/ToolContext.h"
#include "device/ToolDialog.h"
#include "sim/Scenario.h"
#include "sim/SimDriver.h"
#include "sim/SimPlate.h"
#include "support/ManualClock.h"

#include <functional>
#include <memory>

namespace kx::test {

// Simulated plates on the manual clock, opened as the main window opens them, a private
// settings store, a prompt that records what the user would see, and one dialog of type D
// opened on its own. Settings written before openDialog() are what the dialog loads.
template <typename D>
class DialogFixture : public ::testing::Test {
protected:
    void TearDown() override { dialog.reset(); }

    // Plates are added before openPlates().
    SimPlate* addPlate(const QString& serial, quint8 firmwareMajor = 2, bool calibrated = true) {
        SimPlateConfig config;
        config.serial = serial;
        config.firmwareMajor = firmwareMajor;
        config.calibrated = calibrated;
        return driver.addPlate(config);
    }
    void openPlates() {
        driver.OpenDevices(PlateVendorId, PlateProductId1, PlateProductId2);
        clock.settle();
    }
    // The default plates opened; gives 20418 (firmware 2.x), next to 11093 (firmware 1.x).
    SimPlate& openDefaultPlates() {
        Scenario::defaults().applyTo(driver);
        openPlates();
        return *driver.plate(QStringLiteral("20418"));
    }
    // As the main window hosts it: prepare (the service flag, say), hand over the plate, show.
    D& openDialog(PlateDevice* device, const std::function<void(D&)>& prepare = {}) {
        dialog = std::make_unique<D>(ToolContext{clock, prompt});
        QObject::connect(dialog.get(), &ToolDialog::unloaded, [this] { ++unloads; });
        if (prepare)
            prepare(*dialog);
        dialog->setDevice(device);
        dialog->show();
        return *dialog;
    }
    // Moves the clock a step at a time until `done` holds, at most `limitMs`.
    bool advanceUntil(const std::function<bool()>& done, int limitMs, int stepMs = 1) {
        for (int ms = 0; ms < limitMs && !done(); ms += stepMs)
            clock.advance(stepMs);
        return done();
    }

    TempEnvironment environment;
    ManualClock clock{1000};
    RecordingPrompt prompt;
    SimDriver driver{clock};
    std::unique_ptr<D> dialog;
    int unloads = 0;
};

} // namespace kx::test
