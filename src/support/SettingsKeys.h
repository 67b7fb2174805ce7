#pragma once

namespace kx {

// The per-user settings keys, one per dialog. Each is a whole path under the settings root;
// code never composes or spells a path itself.
inline constexpr char kAcquisitionKey[] =
    "Software\\Quentral, LLC.\\Plates Control Panel\\Acquisition";
inline constexpr char kMeterKey[] = "Software\\Quentral, LLC.\\Plates Control Panel\\Meter";
inline constexpr char kScaleKey[] = "Software\\Quentral, LLC.\\Plates Control Panel\\Scale";
inline constexpr char kScaleAutozeroKey[] =
    "Software\\Quentral, LLC.\\Plates Control Panel\\Scale\\Autozero";
inline constexpr char kCalibrationKey[] =
    "Software\\Quentral, LLC.\\Plates Control Panel\\Calibration";

} // namespace kx
