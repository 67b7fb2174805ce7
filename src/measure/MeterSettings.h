#pragma once

#include <QtGlobal>

namespace kx {

// The channel meter's settings, under the "Meter" key.
struct MeterSettings {
    qint32 RefreshRateHz = 5;
    qint32 ExcitationMv = -5000; // set on the plate as volts; negative reverses the polarity
    qint32 SamplingFreqHz = 60;

    // The stored values, each missing or malformed one replaced by its default.
    static MeterSettings load();
    void save() const;

    float excitationVolts() const { return static_cast<float>(ExcitationMv) / 1000.0f; }
};

} // namespace kx
