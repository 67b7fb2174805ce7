#include "maintenance/UsbIdentityPresets.h"

namespace kx {

namespace {
constexpr quint8 EepromFlag = 0xB0;
constexpr quint8 VendorHigh = 0x02;
constexpr quint8 VendorLow = 0x0D;
constexpr quint8 DeviceHigh = 0x01;
constexpr quint8 DeviceLow = 0x00;
} // namespace

UsbIdentity forcePlatformDefaults(quint8 firmwareMajor) {
    // An unsigned byte comparison: every major number from 2 up to 255 is the new generation.
    const quint8 productHigh = firmwareMajor < 2 ? 0x01 : 0x02;
    return {EepromFlag, VendorHigh, VendorLow, productHigh, 0x03, DeviceHigh, DeviceLow};
}

UsbIdentity secondPlateDefaults() {
    // The same on every firmware generation.
    return {EepromFlag, VendorHigh, VendorLow, 0x01, 0x04, DeviceHigh, DeviceLow};
}

} // namespace kx
