#include "support/Settings.h"

#include "support/SettingsStore.h"
#include "support/TrimSpaces.h"
#include "support/UnsavedSettings.h"

namespace kx {

namespace {

// The current user's store is the only one (SettingsRoot has one value), so its location names
// the kept values.
SaveResult writeKept(const QString& keyPath, const QString& valueName, const SettingValue& value) {
    return writeSettingValue(SettingsRoot::CurrentUser, keyPath, valueName, value);
}

SaveResult save(const QString& keyPath, const QString& valueName, const SettingValue& value) {
    return UnsavedSettings::instance().write(settingsStoreLocation(), keyPath, valueName, value,
                                             writeKept);
}

std::optional<SettingValue> read(SettingsRoot root, const QString& keyPath,
                                 const QString& valueName) {
    if (auto kept = UnsavedSettings::instance().kept(settingsStoreLocation(), keyPath, valueName))
        return kept;
    return readSettingValue(root, keyPath, valueName);
}

} // namespace

QString GetSettingString(SettingsRoot root, const QString& keyPath, const QString& valueName,
                         const QString& defaultText) {
    const std::optional<SettingValue> stored = read(root, keyPath, valueName);
    const QString* text = stored ? std::get_if<QString>(&*stored) : nullptr;
    const QString trimmed = text ? trimSpaces(*text) : QString();
    return trimmed.isEmpty() ? trimSpaces(defaultText) : trimmed;
}

SaveResult SaveSettingString(SettingsRoot, const QString& keyPath, const QString& valueName,
                             const QString& text) {
    // One space, not nothing: the next read trims it away and falls back to its default.
    return save(keyPath, valueName, text.isEmpty() ? QStringLiteral(" ") : text);
}

qint32 GetSettingLong(SettingsRoot root, const QString& keyPath, const QString& valueName,
                      qint32 defaultValue) {
    const std::optional<SettingValue> stored = read(root, keyPath, valueName);
    const qint32* number = stored ? std::get_if<qint32>(&*stored) : nullptr;
    return number ? *number : defaultValue;
}

SaveResult SaveSettingLong(SettingsRoot, const QString& keyPath, const QString& valueName,
                           qint32 value) {
    return save(keyPath, valueName, value);
}

SaveResult retryUnsavedSettings() {
    return UnsavedSettings::instance().retry(settingsStoreLocation(), writeKept);
}

QString settingsLocation() {
    return settingsStoreLocation();
}

} // namespace kx
