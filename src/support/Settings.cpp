#include "support/Settings.h"

#include "support/SettingsStore.h"
#include "support/TrimSpaces.h"

namespace kx {

QString GetSettingString(SettingsRoot root, const QString& keyPath, const QString& valueName,
                         const QString& defaultText) {
    const std::optional<SettingValue> stored = readSettingValue(root, keyPath, valueName);
    const QString* text = stored ? std::get_if<QString>(&*stored) : nullptr;
    const QString trimmed = text ? trimSpaces(*text) : QString();
    return trimmed.isEmpty() ? trimSpaces(defaultText) : trimmed;
}

void SaveSettingString(SettingsRoot root, const QString& keyPath, const QString& valueName,
                       const QString& text) {
    // One space, not nothing: the next read trims it away and falls back to its default.
    writeSettingValue(root, keyPath, valueName, text.isEmpty() ? QStringLiteral(" ") : text);
}

qint32 GetSettingLong(SettingsRoot root, const QString& keyPath, const QString& valueName,
                      qint32 defaultValue) {
    const std::optional<SettingValue> stored = readSettingValue(root, keyPath, valueName);
    const qint32* number = stored ? std::get_if<qint32>(&*stored) : nullptr;
    return number ? *number : defaultValue;
}

void SaveSettingLong(SettingsRoot root, const QString& keyPath, const QString& valueName,
                     qint32 value) {
    writeSettingValue(root, keyPath, valueName, value);
}

} // namespace kx
