#include "support/SettingsStore.h"

#include <QByteArray>
#include <QStringList>
#include <cstring>
#include <vector>
#include <windows.h>

namespace kx {
namespace {

constexpr DWORD kQueryBufferSize = 512;

// CurrentUser is the only root.
HKEY rootKey(SettingsRoot) {
    return HKEY_CURRENT_USER;
}

LONG createKey(HKEY parent, const QString& path, HKEY* key) {
    return RegCreateKeyExA(parent, path.toLocal8Bit().constData(), 0, nullptr, 0, KEY_ALL_ACCESS,
                           nullptr, key, nullptr);
}

} // namespace

std::optional<SettingValue> readSettingValue(SettingsRoot root, const QString& keyPath,
                                             const QString& valueName) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(rootKey(root), keyPath.toLocal8Bit().constData(), 0, KEY_QUERY_VALUE, &key) !=
        ERROR_SUCCESS)
        return std::nullopt;
    char data[kQueryBufferSize] = {};
    DWORD type = 0;
    DWORD size = kQueryBufferSize;
    const LONG status = RegQueryValueExA(key, valueName.toLocal8Bit().constData(), nullptr, &type,
                                         reinterpret_cast<BYTE*>(data), &size);
    RegCloseKey(key);
    if (status != ERROR_SUCCESS)
        return std::nullopt;
    switch (type) {
    case REG_DWORD: {
        qint32 number = 0;
        std::memcpy(&number, data, sizeof number);
        return number;
    }
    case REG_SZ:
        if (size < 1)
            return std::nullopt;
        return QString::fromLocal8Bit(data, static_cast<qsizetype>(qstrnlen(data, size)));
    case REG_EXPAND_SZ:
        // Taken as it is: environment references are not expanded.
        if (size < 1)
            return std::nullopt;
        return QString::fromLocal8Bit(data, static_cast<qsizetype>(qstrnlen(data, sizeof data)));
    default:
        return std::nullopt;
    }
}

SaveResult writeSettingValue(SettingsRoot root, const QString& keyPath, const QString& valueName,
                             const SettingValue& value) {
    QByteArray data;
    DWORD type = REG_DWORD;
    if (const QString* text = std::get_if<QString>(&value)) {
        data = text->toLocal8Bit(); // no terminating NUL is stored
        type = REG_SZ;
    } else {
        const qint32 number = std::get<qint32>(value);
        data = QByteArray(reinterpret_cast<const char*>(&number), sizeof number);
    }
    const QByteArray name = valueName.toLocal8Bit();
    const auto setOn = [&](HKEY key) -> SaveResult {
        if (RegSetValueExA(key, name.constData(), 0, type,
                           reinterpret_cast<const BYTE*>(data.constData()),
                           static_cast<DWORD>(data.size())) == ERROR_SUCCESS)
            return {};
        return {QStringLiteral("The registry value %1 cannot be written.").arg(valueName)};
    };

    HKEY key = nullptr;
    if (createKey(rootKey(root), keyPath, &key) == ERROR_SUCCESS) {
        const SaveResult result = setOn(key);
        RegCloseKey(key);
        return result;
    }
    // Where the whole path cannot be created in one call, create it one level at a time,
    // holding every level open until the value is set.
    std::vector<HKEY> levels;
    HKEY parent = rootKey(root);
    for (const QString& level : keyPath.split(u'\\')) {
        HKEY child = nullptr;
        if (createKey(parent, level, &child) != ERROR_SUCCESS)
            break;
        levels.push_back(child);
        parent = child;
    }
    SaveResult result{QStringLiteral("The registry key %1 cannot be created.").arg(keyPath)};
    if (levels.size() == static_cast<std::size_t>(keyPath.count(u'\\') + 1))
        result = setOn(parent);
    for (auto level = levels.rbegin(); level != levels.rend(); ++level)
        RegCloseKey(*level);
    return result;
}

QString settingsStoreLocation() {
    return QStringLiteral("HKEY_CURRENT_USER\\Software\\Quentral, LLC.\\Plates Control Panel");
}

} // namespace kx
