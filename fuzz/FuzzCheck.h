#pragma once

#include <cstdio>
#include <cstdlib>

namespace kx::fuzz {

// An invariant of a fuzz target. A broken one is told on stderr and aborts, which the replay
// driver and libFuzzer both report with the input that broke it.
inline void check(bool holds, const char* invariant) {
    if (holds)
        return;
    std::fprintf(stderr, "fuzz target: broken: %s\n", invariant);
    std::abort();
}

} // namespace kx::fuzz
