#include "measure/AcquireSettings.h"

#include "measure/TimeAxis.h"
#include "support/Folders.h"
#include "support/NumberFormat.h"
#include "support/Rounding.h"
#include "support/Settings.h"
#include "support/SettingsKeys.h"

#include <optional>

namespace kx {
namespace {

const QString kKey = QLatin1String(kAcquisitionKey);
constexpr auto kRoot = SettingsRoot::CurrentUser;

qint32 number(const char* name, qint32 fallback) {
    return GetSettingLong(kRoot, kKey, QLatin1String(name), fallback);
}

// A number kept as text; nothing when the text is not a number.
std::optional<double> textNumber(const char* name, const char* fallback) {
    bool ok = false;
    const double value =
        GetSettingString(kRoot, kKey, QLatin1String(name), QLatin1String(fallback)).toDouble(&ok);
    return ok ? std::optional(value) : std::nullopt;
}

// The main window stores the converter resolution as a number, the acquisition defaults as a
// text: take whichever is there.
qint32 storedAdResolution() {
    constexpr qint32 missing = -1;
    if (const qint32 bits = number("AD Resolution", missing); bits != missing)
        return bits;
    return roundHalfEven(textNumber("AD Resolution", "20").value_or(20));
}

// A chart span no chart could show reads as none chosen.
float chartSpan(const char* name) {
    const double seconds = textNumber(name, "0").value_or(0);
    return seconds > 0 && seconds <= TimeAxis::kLongestSpan ? static_cast<float>(seconds) : 0.0f;
}

} // namespace

AcquireSettings AcquireSettings::load() {
    AcquireSettings s;
    s.refreshTextHz = number("Refresh Text (Hz)", s.refreshTextHz);
    s.refreshGraphHz = number("Refresh Rate Graph (Hz)", s.refreshGraphHz);
    s.grid = number("Grid Style", 1) != 0;
    s.scrolling = number("Scrolling", 0) != 0;
    s.leftToRight = number("Scroll Left To Right", 1) != 0;
    const qint32 type = number("Display Type", 1);
    s.displayType = type >= 0 && type <= 2 ? static_cast<DisplayType>(type) : DisplayType::Voltages;
    s.minFzMilliNewtons = number("Min Fz (mN)", s.minFzMilliNewtons);
    const double res = textNumber("Min Autoscale Res", "0.001").value_or(0.001);
    s.minAutoscaleRes = res >= 0.00001 && res <= 1 ? static_cast<float>(res) : 0.001f;
    const qint32 bits = storedAdResolution();
    s.adResolution = bits >= 1 && bits <= 24 ? bits : 20;
    s.lastFilePath =
        GetSettingString(kRoot, kKey, QStringLiteral("Last File Path"), DocumentsFolder());
    s.chartSpanSeconds = chartSpan("Chart Span (s)");
    s.driftChartSpanSeconds = chartSpan("Drift Chart Span (s)");
    return s;
}

void AcquireSettings::save() const {
    SaveSettingLong(kRoot, kKey, QStringLiteral("Refresh Text (Hz)"), refreshTextHz);
    SaveSettingLong(kRoot, kKey, QStringLiteral("Refresh Rate Graph (Hz)"), refreshGraphHz);
    SaveSettingLong(kRoot, kKey, QStringLiteral("Grid Style"), grid ? 1 : 0);
    SaveSettingLong(kRoot, kKey, QStringLiteral("Scrolling"), scrolling ? 1 : 0);
    SaveSettingLong(kRoot, kKey, QStringLiteral("Scroll Left To Right"), leftToRight ? 1 : 0);
    SaveSettingLong(kRoot, kKey, QStringLiteral("Display Type"), static_cast<qint32>(displayType));
    SaveSettingLong(kRoot, kKey, QStringLiteral("Min Fz (mN)"), minFzMilliNewtons);
    SaveSettingString(kRoot, kKey, QStringLiteral("Min Autoscale Res"),
                      formatGeneral(minAutoscaleRes));
    SaveSettingLong(kRoot, kKey, QStringLiteral("AD Resolution"), adResolution);
    saveLastFilePath(lastFilePath);
    SaveSettingString(kRoot, kKey, QStringLiteral("Chart Span (s)"),
                      formatGeneral(chartSpanSeconds));
    SaveSettingString(kRoot, kKey, QStringLiteral("Drift Chart Span (s)"),
                      formatGeneral(driftChartSpanSeconds));
}

void AcquireSettings::saveLastFilePath(const QString& folder) {
    SaveSettingString(kRoot, kKey, QStringLiteral("Last File Path"), folder);
}

qint32 AcquireSettings::textPeriodMs() const {
    return periodMsFromHertz(refreshTextHz);
}

qint32 AcquireSettings::graphPeriodMs() const {
    return periodMsFromHertz(refreshGraphHz);
}

} // namespace kx
