#pragma once

#include "support/IniFile.h"

#include <gtest/gtest.h>
#include <initializer_list>
#include <utility>

namespace kx::test {

// Puts values of the noise plan into the shared profile.
inline void writeNoisePlan(std::initializer_list<std::pair<const char*, const char*>> values) {
    for (const auto& [key, value] : values)
        EXPECT_TRUE(IniFile::sharedProfile().setValue("Noise", key, value));
}

// A plan that runs in seconds: two frequencies, two excitations, 2 s tests after 1 s waits.
inline void writeSmallNoisePlan() {
    writeNoisePlan({{"Frequencies", "2"},
                    {"Excitations", "2"},
                    {"Test Duration", "2"},
                    {"Initial Delay", "1"},
                    {"Frequency Settling Time", "1"},
                    {"Excitation Settling Time", "1"}});
}

} // namespace kx::test
