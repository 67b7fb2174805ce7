#include "noise/NoisePlan.h"

#include "support/Folders.h"
#include "support/IniFile.h"
#include "support/NumberFormat.h"
#include "support/Rounding.h"

#include <QLocale>
#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

namespace kx {

namespace {

const QString Section = QStringLiteral("Noise");
const QString FrequenciesKey = QStringLiteral("Frequencies");
const QString ExcitationsKey = QStringLiteral("Excitations");
const QString ChannelsKey = QStringLiteral("Channels");
const QString DurationKey = QStringLiteral("Test Duration");
const QString FrequencySettlingKey = QStringLiteral("Frequency Settling Time");
const QString ExcitationSettlingKey = QStringLiteral("Excitation Settling Time");
const QString InitialDelayKey = QStringLiteral("Initial Delay");

constexpr int DefaultFrequencies = 5;
constexpr int DefaultExcitations = 20;
// Longest wait or test accepted from the file: one week.
constexpr float MaxSeconds = 7 * 24 * 3600;

QString frequencyKey(qsizetype index) {
    return QStringLiteral("Frequency %1").arg(index);
}
QString excitationKey(qsizetype index) {
    return QStringLiteral("Excitation %1").arg(index);
}
float defaultFrequency(qsizetype index) {
    return 32.0f * static_cast<float>(1u << std::min<qsizetype>(index, 30));
}
float defaultExcitation(qsizetype index) {
    return 0.25f * static_cast<float>(index + 1);
}

std::optional<double> number(const IniFile& ini, const QString& key) {
    bool ok = false;
    const double value = QLocale::c().toDouble(ini.value(Section, key, {}).trimmed(), &ok);
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    return value;
}

int count(const IniFile& ini, const QString& key, int fallback, int most) {
    const auto value = number(ini, key);
    return value ? std::clamp(roundHalfEven(*value), 1, most) : fallback;
}

// A positive single no larger than `most`, else the default.
float positive(const IniFile& ini, const QString& key, float fallback, float most) {
    const auto value = number(ini, key);
    return value && *value > 0 && *value <= most ? static_cast<float>(*value) : fallback;
}

// Any finite value within +-`most`: an excitation may be 0 or of reversed polarity.
float bounded(const IniFile& ini, const QString& key, float fallback, float most) {
    const auto value = number(ini, key);
    return value && std::abs(*value) <= most ? static_cast<float>(*value) : fallback;
}

// A time may be 0 (no wait).
float seconds(const IniFile& ini, const QString& key, float fallback) {
    const auto value = number(ini, key);
    return value && *value >= 0 && *value <= MaxSeconds ? static_cast<float>(*value) : fallback;
}

} // namespace

NoisePlan NoisePlan::defaults() {
    NoisePlan plan;
    for (qsizetype i = 0; i < DefaultFrequencies; ++i)
        plan.frequencies << defaultFrequency(i);
    for (qsizetype i = 0; i < DefaultExcitations; ++i)
        plan.excitations << defaultExcitation(i);
    return plan;
}

NoisePlan NoisePlan::read(const IniFile& ini) {
    NoisePlan plan;
    const int nF = count(ini, FrequenciesKey, DefaultFrequencies, MaxFrequencies);
    const int nE = count(ini, ExcitationsKey, DefaultExcitations, MaxExcitations);
    plan.channels = count(ini, ChannelsKey, plan.channels, MaxChannels);
    // A test must be long enough to hold a sample; the waits may be zero.
    plan.testDuration = positive(ini, DurationKey, plan.testDuration, MaxSeconds);
    plan.frequencySettling = seconds(ini, FrequencySettlingKey, plan.frequencySettling);
    plan.excitationSettling = seconds(ini, ExcitationSettlingKey, plan.excitationSettling);
    plan.initialDelay = seconds(ini, InitialDelayKey, plan.initialDelay);
    for (qsizetype i = 0; i < nF; ++i)
        plan.frequencies << positive(ini, frequencyKey(i), defaultFrequency(i), 1e6f);
    for (qsizetype i = 0; i < nE; ++i)
        plan.excitations << bounded(ini, excitationKey(i), defaultExcitation(i), 1e3f);
    return plan;
}

void NoisePlan::write(const IniFile& ini) const {
    const QString folder = FolderOfPath(ini.path());
    if (!FolderExists(folder))
        CreateFolderPath(folder);
    std::vector<IniFile::Value> values{
        {Section, FrequenciesKey, QString::number(frequencies.size())},
        {Section, ExcitationsKey, QString::number(excitations.size())},
        {Section, ChannelsKey, QString::number(channels)},
        {Section, DurationKey, formatGeneral(testDuration)},
        {Section, FrequencySettlingKey, formatGeneral(frequencySettling)},
        {Section, ExcitationSettlingKey, formatGeneral(excitationSettling)},
        {Section, InitialDelayKey, formatGeneral(initialDelay)}};
    for (qsizetype i = 0; i < frequencies.size(); ++i)
        values.push_back({Section, frequencyKey(i), formatGeneral(frequencies[i])});
    for (qsizetype i = 0; i < excitations.size(); ++i)
        values.push_back({Section, excitationKey(i), formatGeneral(excitations[i])});
    // One save for the whole plan; none when the profile holds it already.
    ini.setValues(values);
}

} // namespace kx
