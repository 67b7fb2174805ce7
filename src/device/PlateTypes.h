#pragma once

#include <QList>
#include <QMetaType>
#include <QtGlobal>
#include <array>

namespace kx {

// Selector of the plate's parameter operations.
enum class Which : qint16 {
    Current = 0, // the value in force
    Default = -1 // the power-on default stored in the plate
};

// Three channels of one sample: forces {Fz [N], Mx [N·m], My [N·m]} or bridge voltages
// {V1, V2, V3} [V], normalised to 1 V of excitation. A loaded plate reports negative Fz.
using Float3 = std::array<float, 3>;

// Per-channel results of a zero acquisition, in converter codes, channel 1 first. A plate
// may report fewer than four channels.
using ChannelValues = QList<double>;

// The seven bytes of a plate's USB identity: EEPROM flag, then vendor, product and device
// identifiers, two bytes each.
using UsbIdentity = std::array<quint8, 7>;

// USB numbers under which the plates enumerate.
inline constexpr int PlateVendorId = 3330;
inline constexpr int PlateProductId1 = 1;
inline constexpr int PlateProductId2 = 2;

} // namespace kx

Q_DECLARE_METATYPE(kx::Float3)
