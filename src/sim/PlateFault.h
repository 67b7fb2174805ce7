#pragma once

namespace kx {

// Failures a simulated plate can be made to suffer, on demand or on a schedule.
enum class PlateFault {
    Unplug,        // the plate's Removal, then the driver's PlateRemoved
    NotResponding, // the driver's PlateNotResponding; the plate fails every call until replugged
    ReadTimeout,   // these four stop the running acquisition and raise the plate's event
    WriteTimeout,
    BufferOverRun,
    DataClipped,
};

} // namespace kx
