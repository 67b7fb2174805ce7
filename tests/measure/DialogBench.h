#pragma once

#include "../sim/SimBench.h"
#include "RecordingPrompt.h"
#include "TempEnvironment.h"
#include "device/ToolContext.h"
#include "device/ToolDialog.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>

namespace kx::test {

// A tool dialog's surroundings: simulated plates on a manual clock, a private settings store
// and a prompt that records what the user would see.
struct DialogBench : SimBench {
    // Moves the clock one millisecond at a time until `done` holds; false if it still does
    // not after `limitMs`.
    bool advanceUntil(const std::function<bool()>& done, int limitMs) {
        for (int ms = 0; ms < limitMs && !done(); ++ms)
            clock.advance(1);
        return done();
    }

    TempEnvironment environment;
    RecordingPrompt prompt;
    ToolContext context{clock, prompt};
};

// One tool dialog, opened on simulated plate 20418 (firmware 2.x) or any other, counting how
// often it unloads. Settings written before open() are what the dialog loads.
template <class Dialog>
class ToolFixture : public ::testing::Test {
protected:
    void TearDown() override { dialog.reset(); }

    void open(PlateDevice* device) {
        dialog = std::make_unique<Dialog>(bench.context);
        QObject::connect(dialog.get(), &ToolDialog::unloaded, [this] { ++unloaded; });
        dialog->setDevice(device);
        dialog->show();
    }
    void advance(qint64 ms) { bench.clock.advance(ms); }

    DialogBench bench;
    RecordingPrompt& prompt = bench.prompt;
    SimPlate& plate = bench.plate("20418");
    std::unique_ptr<Dialog> dialog;
    int unloaded = 0;
};

} // namespace kx::test
