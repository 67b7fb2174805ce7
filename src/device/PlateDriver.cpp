#include "device/PlateDriver.h"

namespace kx {

PlateDriver::~PlateDriver() = default;

} // namespace kx
