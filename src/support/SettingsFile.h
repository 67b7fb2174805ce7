#pragma once

#include "support/Settings.h"
#include "support/SettingsStore.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <optional>
#include <vector>

namespace kx {

// The per-user settings where there is no registry: keys holding named texts and numbers,
// kept in a UTF-8 text file laid out like a registry export, one section per key:
//
//     ; KX Force Platforms Control Panel user settings
//
//     [HKEY_CURRENT_USER\Software\Quentral, LLC.\Plates Control Panel\Acquisition]
//     "Last File Path"="/home/ann/Documents"
//     "Refresh Text (Hz)"=dword:00000005
//
// A text is quoted, with "\\", "\"", "\n" and "\r" escaped; a number is "dword:" and eight
// hexadecimal digits, read back as a signed 32-bit integer. Blank lines and lines starting
// with ";" are ignored. A line that does not parse (not UTF-8, a value outside a key, a key
// that is not the user's) is skipped, and so is every value under a skipped key line; the
// skipped lines are kept byte for byte and written again after the values of the key they
// followed, so a hand edit gone wrong costs neither the other settings nor itself. Key paths and
// value names are matched without regard to case; a key exists whether or not it holds values, and
// setting a value creates its key and every missing level above it, as the registry does. As there,
// keys nest at most 512 levels deep.
class SettingsFile {
public:
    // $KX_SETTINGS_FILE when set, else "Quentral/Plates Control Panel.reg" in the user's
    // configuration folder (XDG config home).
    static QString location();

    // The store the text holds, with the lines that could not be read set aside.
    static SettingsFile fromText(const QByteArray& text);
    QByteArray toText() const;

    // The lines fromText() skipped, without their "\n", in file order.
    QList<QByteArray> skippedLines() const;

    std::optional<SettingValue> value(SettingsRoot root, const QString& keyPath,
                                      const QString& valueName) const;
    void setValue(SettingsRoot root, const QString& keyPath, const QString& valueName,
                  const SettingValue& value);

private:
    struct Value {
        QString name;
        SettingValue data;
    };
    struct Key {
        QString path; // with its root: "HKEY_CURRENT_USER\Software\..."
        std::vector<Value> values;
        QList<QByteArray> skipped; // unreadable lines that followed this key's line
    };

    std::optional<std::size_t> findKey(const QString& path) const;
    std::size_t createKey(const QString& path); // the key's index

    static void setIn(Key& key, const QString& valueName, const SettingValue& value);

    std::vector<Key> m_keys;          // in the order of creation
    QList<QByteArray> m_skippedAtTop; // unreadable lines before the first key
};

} // namespace kx
