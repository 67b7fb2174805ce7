#include "device/PlateDevice.h"

namespace kx {

PlateDevice::~PlateDevice() = default;

} // namespace kx
