#pragma once

#include "device/PlateTypes.h"

namespace kx {

// The identity records the USB identity dialog offers to fill in. Only the force-platform
// record depends on the plate: firmware generation 2 moved it to product 0x0203.
UsbIdentity forcePlatformDefaults(quint8 firmwareMajor);
UsbIdentity secondPlateDefaults();

} // namespace kx
