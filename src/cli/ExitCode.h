#pragma once

namespace kx::cli {

// kxplate's exit status; its manual page lists the same numbers. 1 is never used, so that a
// script can tell kxplate's own answers from a shell's or a crash's.
enum ExitCode : int {
    Success = 0,
    UsageError = 2,  // the command line asks for something kxplate cannot do
    DeviceError = 3, // no such plate, a plate call failed, or the plate reported a fault
    FileError = 4,   // a file could not be read, is damaged, or could not be written
};

// Ctrl+C or SIGTERM ended the command, after it saved what it had gathered: 128 + the signal's
// number, as a shell reports a program the signal killed.
constexpr int interruptedExitCode(int signal) {
    return 128 + signal;
}

} // namespace kx::cli
