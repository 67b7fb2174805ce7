#include "support/SaveAtomically.h"
#include "support/SettingsFile.h"
#include "support/SettingsStore.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace kx {
namespace {

constexpr qsizetype kQueryBufferSize = 512;

struct LoadedFile {
    SettingsFile settings;
    bool unreadable = false; // it exists but could not be opened (its permissions, say)
};

// Says once per state of a file, not at every read, what of it is not used.
void warnOnce(const QString& path, const char* what) {
    static QString warnedAbout;
    const QFileInfo info(path);
    const QString identity = path + u'|' + QString::number(info.size()) + u'|' +
                             info.lastModified().toString(Qt::ISODateWithMs);
    if (identity == warnedAbout)
        return;
    warnedAbout = identity;
    qWarning("User settings file %s: %s", qUtf8Printable(path), what);
}

LoadedFile load(const QString& path) {
    QFile file(path);
    if (!file.exists())
        return {};
    if (!file.open(QIODevice::ReadOnly)) {
        warnOnce(path, "cannot be opened; defaults are used and the file is left as it is.");
        return {{}, true};
    }
    SettingsFile settings = SettingsFile::fromText(file.readAll());
    if (!settings.skippedLines().isEmpty())
        warnOnce(path, "lines that cannot be read are skipped; they are kept in the file.");
    return {std::move(settings), false};
}

} // namespace

std::optional<SettingValue> readSettingValue(SettingsRoot root, const QString& keyPath,
                                             const QString& valueName) {
    std::optional<SettingValue> value =
        load(SettingsFile::location()).settings.value(root, keyPath, valueName);
    if (QString* text = value ? std::get_if<QString>(&*value) : nullptr) {
        if (text->toUtf8().size() > kQueryBufferSize)
            return std::nullopt;
        if (const qsizetype end = text->indexOf(QChar(u'\0')); end >= 0)
            text->truncate(end);
    }
    return value;
}

SaveResult writeSettingValue(SettingsRoot root, const QString& keyPath, const QString& valueName,
                             const SettingValue& value) {
    const QString path = SettingsFile::location();
    LoadedFile file = load(path);
    if (file.unreadable)
        return {QStringLiteral("The settings file %1 cannot be read, so it is left as it is.")
                    .arg(QDir::toNativeSeparators(path))}; // never overwrite what could not be read
    file.settings.setValue(root, keyPath, valueName, value);
    return saveAtomically(path, file.settings.toText());
}

QString settingsStoreLocation() {
    return SettingsFile::location();
}

} // namespace kx
