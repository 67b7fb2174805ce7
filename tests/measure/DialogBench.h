#pragma once

#include "../sim/SimBench.h"
#include "RecordingPrompt.h"
#include "TempEnvironment.h"
#include "device/ToolContext.h"

#include <functional>

namespace kx::test {

// A tool dialog's surroundings: simulated plates on a manual clock, a private settings store
// and a prompt that records what the user would see.
struct DialogBench : SimBench {
    explicit DialogBench(const Scenario& scenario = Scenario::defaults())
        : SimBench(scenario) {}

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

} // namespace kx::test
