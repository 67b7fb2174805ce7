#include "device/DeviceErrorProfile.h"

#include "resources/StringTable.h"

#include <stdexcept>

namespace kx {

namespace {
using enum ReactionStep;
} // namespace

DeviceErrorProfile deviceErrorProfile(int block) {
    namespace s = strings;
    DeviceErrorProfile p;
    p.block = block;
    switch (block) {
    case s::MainBlock:
        // The main window learns of removals from the driver's list events instead.
        p.removal = {};
        p.notResponding = {.steps = {Message}};
        break;
    case s::ZeroBlock:
        p.removalCloseDelayMs = 500;
        p.timeouts = {.steps = {Stop, Abort, Message, Recover, Controls},
                      .enable = {QStringLiteral("cmdAcquire"), QStringLiteral("cmdCancel")}};
        p.faults = p.timeouts;
        break;
    case s::MeterBlock:
        p.removalCloseDelayMs = 500;
        p.timeouts = {.steps = {Stop, Message, Recover}};
        p.faults = {.steps = {Label}};
        break;
    case s::ScaleBlock:
        p.removalCloseDelayMs = 500;
        p.timeouts = {.steps = {Stop, Abort, Message, Status}, .statusText = 1};
        p.faults = {.steps = {Stop, Abort, Status, Message, Label},
                    .messageText = 2,
                    .statusText = 1,
                    .labelText = 0};
        break;
    case s::AcquireBlock:
        p.removalCloseDelayMs = 500;
        p.timeouts = {.steps = {Stop, Message, Recover}};
        p.faults = {.steps = {Stop, Message, Label}, .labelText = 1};
        break;
    case s::ProgramIdBlock:
    case s::EncoderBlock:
        // Only the removal; the encoder closes through its timer like the streaming dialogs.
        p.removalCloseDelayMs = block == s::EncoderBlock ? 500 : 0;
        break;
    case s::NoiseBlock:
        p.timeouts = {.steps = {Stop, Abort, Message, Controls},
                      .enable = {QStringLiteral("cmdAcquire"), QStringLiteral("cmdCancel")},
                      .disable = {QStringLiteral("cmdOK")}};
        break;
    case s::CalibrateBlock:
        p.removalCloseDelayMs = 500;
        p.timeouts = {.steps = {Abort, Message, Recover}};
        p.faults = {.steps = {Abort, Message}};
        break;
    case s::PlateInfoExBlock:
        p.timeouts = {.steps = {Message, Controls},
                      .enable = {QStringLiteral("cmdOK"), QStringLiteral("cmdResetTemp"),
                                 QStringLiteral("cmdResetEnum"), QStringLiteral("cmdResetTime")}};
        break;
    default:
        throw std::out_of_range("no window owns this block of string resources");
    }
    return p;
}

int deviceEventTextOffset(DeviceEvent event) {
    switch (event) {
    case DeviceEvent::BufferOverRun:
        return strings::OverrunOffset;
    case DeviceEvent::DataClipped:
        return strings::ClippingOffset;
    case DeviceEvent::Removal:
        return strings::RemovalOffset;
    case DeviceEvent::ReadTimeout:
    case DeviceEvent::NotResponding:
        return strings::ReadTimeoutOffset;
    case DeviceEvent::WriteTimeout:
        return strings::WriteTimeoutOffset;
    }
    Q_UNREACHABLE();
    return 0;
}

const DeviceErrorReaction& DeviceErrorProfile::reaction(DeviceEvent event) const {
    switch (event) {
    case DeviceEvent::ReadTimeout:
    case DeviceEvent::WriteTimeout:
        return timeouts;
    case DeviceEvent::BufferOverRun:
    case DeviceEvent::DataClipped:
        return faults;
    case DeviceEvent::NotResponding:
        return notResponding;
    case DeviceEvent::Removal:
        break;
    }
    return removal;
}

} // namespace kx
