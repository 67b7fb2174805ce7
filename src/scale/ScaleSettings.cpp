#include "scale/ScaleSettings.h"

#include "support/Rounding.h"
#include "support/Settings.h"
#include "support/SettingsKeys.h"

namespace kx {

namespace {

constexpr auto User = SettingsRoot::CurrentUser;
constexpr float MsPerSecond = 1000.0f;

qint32 readLong(const char* key, const char* name, qint32 defaultValue) {
    return GetSettingLong(User, QLatin1String(key), QLatin1String(name), defaultValue);
}

float readSingle(const char* key, const char* name, float defaultValue) {
    return static_cast<float>(readLong(key, name, roundHalfEven(defaultValue)));
}

float readSeconds(const char* key, const char* name, float defaultSeconds) {
    return static_cast<float>(readLong(key, name, roundHalfEven(defaultSeconds * MsPerSecond))) /
           MsPerSecond;
}

void saveLong(const char* key, const char* name, qint32 value) {
    SaveSettingLong(User, QLatin1String(key), QLatin1String(name), value);
}

void saveSingle(const char* key, const char* name, float value) {
    saveLong(key, name, roundHalfEven(value));
}

void saveSeconds(const char* key, const char* name, float seconds) {
    saveSingle(key, name, seconds * MsPerSecond);
}

} // namespace

ScaleSettings ScaleSettings::load() {
    const ScaleSettings d;
    ScaleSettings s;
    s.AutoZeroEnabled = readLong(kScaleAutozeroKey, "Enabled", d.AutoZeroEnabled ? -1 : 0) != 0;
    s.AutoZeroIntervalMs = readLong(kScaleAutozeroKey, "Interval (ms)", d.AutoZeroIntervalMs);
    s.AutoZeroDuration = readSeconds(kScaleAutozeroKey, "Duration (ms)", d.AutoZeroDuration);
    s.MinTare = readSingle(kScaleAutozeroKey, "Min Tare (N)", d.MinTare);
    s.MaxTare = readSingle(kScaleAutozeroKey, "Max Tare (N)", d.MaxTare);
    s.ZeroDuration = readSeconds(kScaleKey, "Zero Duration (ms)", d.ZeroDuration);
    s.ScaleFrequency = readSingle(kScaleKey, "Frequency (Hz)", d.ScaleFrequency);
    s.AverageSamples = readLong(kScaleKey, "Average Samples", d.AverageSamples);
    s.AverageResetDifference =
        readSingle(kScaleKey, "Average Reset Difference (N)", d.AverageResetDifference);
    s.DisplayIntervalMs = readLong(kScaleKey, "Display Upd Interval (ms)", d.DisplayIntervalMs);
    s.DisplayDecimals = readLong(kScaleKey, "Display Decimals", d.DisplayDecimals);
    return s;
}

void ScaleSettings::save() const {
    // A Boolean is stored as its integer value: true is -1.
    saveLong(kScaleAutozeroKey, "Enabled", AutoZeroEnabled ? -1 : 0);
    saveLong(kScaleAutozeroKey, "Interval (ms)", AutoZeroIntervalMs);
    saveSeconds(kScaleAutozeroKey, "Duration (ms)", AutoZeroDuration);
    saveSingle(kScaleAutozeroKey, "Min Tare (N)", MinTare);
    saveSingle(kScaleAutozeroKey, "Max Tare (N)", MaxTare);
    saveSeconds(kScaleKey, "Zero Duration (ms)", ZeroDuration);
    saveSingle(kScaleKey, "Frequency (Hz)", ScaleFrequency);
    saveLong(kScaleKey, "Average Samples", AverageSamples);
    saveSingle(kScaleKey, "Average Reset Difference (N)", AverageResetDifference);
    saveLong(kScaleKey, "Display Upd Interval (ms)", DisplayIntervalMs);
    saveLong(kScaleKey, "Display Decimals", DisplayDecimals);
}

} // namespace kx
