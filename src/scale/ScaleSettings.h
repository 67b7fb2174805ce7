#pragma once

#include <QtGlobal>

namespace kx {

// The scale's settings, under the "Scale" and "Scale\Autozero" keys. Durations are kept in
// seconds and stored in milliseconds; every single-precision value is stored as a whole
// number, rounded half to even (a tare of 2.5 N comes back as 2 N).
struct ScaleSettings {
    bool AutoZeroEnabled = true;
    qint32 AutoZeroIntervalMs = 2000;
    float AutoZeroDuration = 0.2f; // s
    float MinTare = 1.0f;          // N
    float MaxTare = 80.0f;         // N
    float ZeroDuration = 5.0f;     // s
    float ScaleFrequency = 64.0f;  // Hz
    qint32 AverageSamples = 3840;
    float AverageResetDifference = 5.0f; // N
    qint32 DisplayIntervalMs = 500;
    qint32 DisplayDecimals = 0;

    // The stored values, each missing or malformed one replaced by its default.
    static ScaleSettings load();
    void save() const;
};

} // namespace kx
