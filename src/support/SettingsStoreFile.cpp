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
    bool damaged = false; // the file exists but holds no readable settings
};

// Says once per damaged file, not at every read, that its settings are not used.
void warnDamaged(const QString& path) {
    static QString warnedAbout;
    const QFileInfo info(path);
    const QString identity = path + u'|' + QString::number(info.size()) + u'|' +
                             info.lastModified().toString(Qt::ISODateWithMs);
    if (identity == warnedAbout)
        return;
    warnedAbout = identity;
    qWarning("User settings file %s cannot be read; defaults are used, and the file will be kept "
             "as %s.<date-time>.corrupt when settings are next saved.",
             qUtf8Printable(path), qUtf8Printable(path));
}

LoadedFile load(const QString& path) {
    QFile file(path);
    if (!file.exists())
        return {};
    if (file.open(QIODevice::ReadOnly)) {
        if (std::optional<SettingsFile> parsed = SettingsFile::fromText(file.readAll()))
            return {std::move(*parsed), false};
    }
    warnDamaged(path);
    return {{}, true};
}

// Moves a damaged file out of the way of the next write; false when it cannot be moved.
bool keepAside(const QString& path) {
    const QString stem =
        path + u'.' + QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString aside = stem + QStringLiteral(".corrupt");
    for (int n = 2; QFileInfo::exists(aside); ++n)
        aside = stem + u'-' + QString::number(n) + QStringLiteral(".corrupt");
    return QFile::rename(path, aside);
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

void writeSettingValue(SettingsRoot root, const QString& keyPath, const QString& valueName,
                       const SettingValue& value) {
    const QString path = SettingsFile::location();
    LoadedFile file = load(path);
    if (file.damaged && !keepAside(path))
        return; // never overwrite settings that could not be read
    file.settings.setValue(root, keyPath, valueName, value);
    QDir().mkpath(QFileInfo(path).absolutePath());
    saveAtomically(path, file.settings.toText());
}

} // namespace kx
