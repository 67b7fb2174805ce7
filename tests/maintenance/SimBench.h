#pragma once

#include "RecordingPrompt.h"
#include "device/ToolContext.h"
#include "sim/SimDriver.h"
#include "sim/SimPlate.h"
#include "support/ManualClock.h"

#include <gtest/gtest.h>

namespace kx::test {

// Simulated plates on the manual clock, opened as the main window opens them, and a prompt
// that records what the user would see.
class SimBench : public testing::Test {
protected:
    // Plates are added before open().
    SimPlate* addPlate(const QString& serial, quint8 firmwareMajor = 2, bool calibrated = true) {
        SimPlateConfig config;
        config.serial = serial;
        config.firmwareMajor = firmwareMajor;
        config.calibrated = calibrated;
        return driver.addPlate(config);
    }
    void open() {
        driver.OpenDevices(PlateVendorId, PlateProductId1, PlateProductId2);
        clock.settle();
    }
    ToolContext context() { return {clock, prompt}; }

    ManualClock clock;
    RecordingPrompt prompt;
    SimDriver driver{clock};
};

} // namespace kx::test
