#include "support/SettingsFile.h"

#include <QStandardPaths>
#include <QStringDecoder>
#include <QStringList>
#include <QStringTokenizer>
#include <algorithm>

namespace kx {
namespace {

constexpr char16_t kRootName[] = u"HKEY_CURRENT_USER";
constexpr QStringView kNumberTag = u"dword:";
// Levels below the root at most, as in the registry. Deeper keys are not a settings file: each
// of their levels would be a key written out with its whole path.
constexpr qsizetype kMaxKeyDepth = 512;

// The full path of a key, its levels separated by single "\".
QString fullPath(SettingsRoot, const QString& keyPath) {
    QStringList levels = keyPath.split(u'\\', Qt::SkipEmptyParts);
    levels.prepend(QString::fromUtf16(kRootName));
    return levels.join(u'\\');
}

QString quoted(const QString& text) {
    QString result = QStringLiteral("\"");
    for (const QChar c : text) {
        switch (c.unicode()) {
        case u'\\':
            result += u"\\\\";
            break;
        case u'"':
            result += u"\\\"";
            break;
        case u'\n':
            result += u"\\n";
            break;
        case u'\r':
            result += u"\\r";
            break;
        default:
            result += c;
        }
    }
    return result + u'"';
}

// Reads a quoted text starting at `pos`, leaving `pos` after the closing quote.
std::optional<QString> readQuoted(QStringView line, qsizetype& pos) {
    if (pos >= line.size() || line[pos] != u'"')
        return std::nullopt;
    QString text;
    for (++pos; pos < line.size(); ++pos) {
        const QChar c = line[pos];
        if (c == u'"') {
            ++pos;
            return text;
        }
        if (c != u'\\') {
            text += c;
            continue;
        }
        if (++pos == line.size())
            return std::nullopt;
        switch (line[pos].unicode()) {
        case u'\\':
        case u'"':
            text += line[pos];
            break;
        case u'n':
            text += u'\n';
            break;
        case u'r':
            text += u'\r';
            break;
        default:
            return std::nullopt;
        }
    }
    return std::nullopt;
}

std::optional<SettingValue> readData(QStringView data) {
    if (data.startsWith(u'"')) {
        qsizetype pos = 0;
        std::optional<QString> text = readQuoted(data, pos);
        if (!text || pos != data.size())
            return std::nullopt;
        return *text;
    }
    if (!data.startsWith(kNumberTag, Qt::CaseInsensitive))
        return std::nullopt;
    const QStringView digits = data.sliced(kNumberTag.size());
    if (digits.isEmpty() || digits.size() > 8)
        return std::nullopt;
    const auto isHexDigit = [](QChar c) {
        return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
    };
    if (!std::all_of(digits.begin(), digits.end(), isHexDigit))
        return std::nullopt;
    return static_cast<qint32>(digits.toUInt(nullptr, 16));
}

} // namespace

QString SettingsFile::location() {
    const QString overridden = qEnvironmentVariable("KX_SETTINGS_FILE");
    if (!overridden.isEmpty())
        return overridden;
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/Quentral/Plates Control Panel.reg");
}

std::optional<SettingsFile> SettingsFile::fromText(const QByteArray& bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder(bytes);
    if (decoder.hasError())
        return std::nullopt;

    SettingsFile file;
    std::optional<std::size_t> key;
    const QStringView rootName = kRootName;
    for (QStringView line : QStringTokenizer(text, u'\n')) {
        line = line.trimmed();
        if (line.isEmpty() || line.startsWith(u';'))
            continue;
        if (line.startsWith(u'[')) {
            if (!line.endsWith(u']'))
                return std::nullopt;
            // The root is a key too: values can be set there.
            const QStringView path = line.sliced(1, line.size() - 2);
            if (!path.startsWith(rootName, Qt::CaseInsensitive) ||
                (path.size() > rootName.size() && path[rootName.size()] != u'\\'))
                return std::nullopt;
            const QString keyPath =
                fullPath(SettingsRoot::CurrentUser, path.sliced(rootName.size()).toString());
            if (keyPath.count(u'\\') > kMaxKeyDepth)
                return std::nullopt;
            key = file.createKey(keyPath);
            continue;
        }
        qsizetype pos = 0;
        const std::optional<QString> name = readQuoted(line, pos);
        if (!key || !name || pos == line.size() || line[pos] != u'=')
            return std::nullopt;
        const std::optional<SettingValue> data = readData(line.sliced(pos + 1));
        if (!data)
            return std::nullopt;
        setIn(file.m_keys[*key], *name, *data);
    }
    return file;
}

QByteArray SettingsFile::toText() const {
    QString text = QStringLiteral("; KX Force Platforms Control Panel user settings\n");
    for (const Key& key : m_keys) {
        text += QStringLiteral("\n[") + key.path + QStringLiteral("]\n");
        for (const Value& value : key.values) {
            text += quoted(value.name) + u'=';
            if (const QString* data = std::get_if<QString>(&value.data))
                text += quoted(*data);
            else
                text += kNumberTag.toString() +
                        QStringLiteral("%1").arg(static_cast<quint32>(std::get<qint32>(value.data)),
                                                 8, 16, QLatin1Char('0'));
            text += u'\n';
        }
    }
    return text.toUtf8();
}

std::optional<SettingValue> SettingsFile::value(SettingsRoot root, const QString& keyPath,
                                                const QString& valueName) const {
    const std::optional<std::size_t> key = findKey(fullPath(root, keyPath));
    if (!key)
        return std::nullopt;
    for (const Value& value : m_keys[*key].values) {
        if (value.name.compare(valueName, Qt::CaseInsensitive) == 0)
            return value.data;
    }
    return std::nullopt;
}

void SettingsFile::setValue(SettingsRoot root, const QString& keyPath, const QString& valueName,
                            const SettingValue& value) {
    setIn(m_keys[createKey(fullPath(root, keyPath))], valueName, value);
}

std::optional<std::size_t> SettingsFile::findKey(const QString& path) const {
    for (std::size_t i = 0; i < m_keys.size(); ++i) {
        // Paths of different lengths never match; checking that first spares comparing the
        // long common start of every level of a deep key.
        if (m_keys[i].path.size() == path.size() &&
            m_keys[i].path.compare(path, Qt::CaseInsensitive) == 0)
            return i;
    }
    return std::nullopt;
}

std::size_t SettingsFile::createKey(const QString& path) {
    if (const std::optional<std::size_t> existing = findKey(path))
        return *existing;
    // Like nested registry keys, every level below the root exists. Keys are made only here,
    // each after its parent, so the missing levels are those below the deepest one found:
    // looking from the bottom up stops early, however deep the key.
    std::vector<qsizetype> missingEnds{path.size()}; // deepest first
    const qsizetype rootEnd = path.indexOf(u'\\');
    for (qsizetype end = path.lastIndexOf(u'\\'); end > rootEnd && !findKey(path.left(end));
         end = path.lastIndexOf(u'\\', end - 1))
        missingEnds.push_back(end);
    for (auto end = missingEnds.rbegin(); end != missingEnds.rend(); ++end)
        m_keys.push_back({path.left(*end), {}});
    return m_keys.size() - 1;
}

void SettingsFile::setIn(Key& key, const QString& valueName, const SettingValue& value) {
    for (Value& existing : key.values) {
        if (existing.name.compare(valueName, Qt::CaseInsensitive) == 0) {
            existing.data = value;
            return;
        }
    }
    key.values.push_back({valueName, value});
}

} // namespace kx
