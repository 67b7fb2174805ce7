#pragma once

namespace kx {

class Clock;
class Prompt;

// What the main window hands every tool dialog it creates: the run's clock and the prompt
// through which the dialog reaches the user.
struct ToolContext {
    Clock& clock;
    Prompt& prompt;
};

} // namespace kx
