#include "measure/MeterSettings.h"

#include "support/Settings.h"
#include "support/SettingsKeys.h"

namespace kx {

namespace {
constexpr auto User = SettingsRoot::CurrentUser;
const QString Key = QLatin1String(kMeterKey);
const QString RefreshRate = QStringLiteral("Refresh Rate (Hz)");
const QString Excitation = QStringLiteral("Excitation (mV)");
const QString SamplingFreq = QStringLiteral("Sampling Freq (Hz)");
} // namespace

MeterSettings MeterSettings::load() {
    const MeterSettings d;
    return {GetSettingLong(User, Key, RefreshRate, d.RefreshRateHz),
            GetSettingLong(User, Key, Excitation, d.ExcitationMv),
            GetSettingLong(User, Key, SamplingFreq, d.SamplingFreqHz)};
}

void MeterSettings::save() const {
    SaveSettingLong(User, Key, RefreshRate, RefreshRateHz);
    SaveSettingLong(User, Key, Excitation, ExcitationMv);
    SaveSettingLong(User, Key, SamplingFreq, SamplingFreqHz);
}

} // namespace kx
