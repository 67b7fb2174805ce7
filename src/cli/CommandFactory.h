#pragma once

#include <memory>

namespace kx {
class Clock;
class PlateDriver;
} // namespace kx

namespace kx::cli {

class Command;
class Console;
struct Invocation;

// The command an invocation asks for, on the plates of `driver` and the time of `clock`; both
// must outlive it.
std::unique_ptr<Command> makeCommand(const Invocation& invocation, Console& console, Clock& clock,
                                     PlateDriver& driver);

} // namespace kx::cli
