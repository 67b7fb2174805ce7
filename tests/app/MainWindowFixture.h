#pragma once

// The main window fixture lives in the testkit now; this name stays for the dialog tests that
// still include it.
#include "MainWindowBench.h"

namespace kx::test {
using MainWindowFixture = MainWindowBench;
} // namespace kx::test
