#pragma once

#include <QList>
#include <QStringList>

namespace kx {

// What a window holding a plate is told about the plate, besides its data.
enum class DeviceEvent {
    Removal,       // the plate was unplugged
    ReadTimeout,   // reading from the plate timed out
    WriteTimeout,  // writing to the plate timed out
    BufferOverRun, // the converter buffer overran
    DataClipped,   // signals clipped
    NotResponding  // the driver's PlateNotResponding (main window only)
};

// The place of an event's texts inside a window's block of string resources (+900 ... +940).
int deviceEventTextOffset(DeviceEvent event);

// One step of a window's reaction to a device event; a reaction runs its steps in order.
enum class ReactionStep {
    Stop,    // the window's own stop routine for its display or test
    Abort,   // AbortAcquisition on the plate
    Message, // critical message box
    Status,  // status-bar text
    Label,   // error label text, made visible
    Recover, // the window's own reset (end the display, return to idle, clear read-outs)
    Controls // enable and disable the named controls
};

// How a window reacts to one group of events. The texts are found at
// block + deviceEventTextOffset(event) + the step's own offset below.
struct DeviceErrorReaction {
    QList<ReactionStep> steps{}; // empty: the window ignores these events
    int messageText = 0;
    int statusText = 0;
    int labelText = 0;
    QStringList enable{};  // object names of controls enabled by the Controls step
    QStringList disable{}; // ... and disabled by it
};

// A window's reactions to every device event.
struct DeviceErrorProfile {
    int block = 0; // the window's block of string resources
    DeviceErrorReaction removal{.steps = {ReactionStep::Message}}; // then the window closes
    int removalCloseDelayMs = 0;  // after the removal's reaction: 0 closes at once
    DeviceErrorReaction timeouts; // ReadTimeout, WriteTimeout
    DeviceErrorReaction faults;   // BufferOverRun, DataClipped
    DeviceErrorReaction notResponding;

    const DeviceErrorReaction& reaction(DeviceEvent event) const;
};

// The profile of the window that owns `block` (kx::strings::MainBlock, ZeroBlock, ...).
// Throws std::out_of_range for a number that is no window's block.
DeviceErrorProfile deviceErrorProfile(int block);

} // namespace kx
