#pragma once

#include "support/SaveAtomically.h"
#include "support/Settings.h"

#include <QString>
#include <QtGlobal>
#include <optional>
#include <variant>

namespace kx {

// A stored setting: a text or a 32-bit number.
using SettingValue = std::variant<QString, qint32>;

// The platform's store behind Settings.h, one implementation per platform: the registry on
// Windows, the settings file elsewhere. Both read the value as a reader with a 512-byte buffer
// would (a text is cut at its first NUL; a longer value is not read). A read fails silently; a
// write says why it failed.
std::optional<SettingValue> readSettingValue(SettingsRoot root, const QString& keyPath,
                                             const QString& valueName);
SaveResult writeSettingValue(SettingsRoot root, const QString& keyPath, const QString& valueName,
                             const SettingValue& value);
// Where the store keeps the values: the settings file's path, or the registry key.
QString settingsStoreLocation();

} // namespace kx
