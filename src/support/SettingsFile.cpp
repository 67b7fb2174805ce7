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

SettingsFile SettingsFile::fromText(const QByteArray& bytes) {
    SettingsFile file;
    const QStringView rootName = kRootName;
    // The key the lines belong to; none before the first key line and after a skipped one.
    std::optional<std::size_t> key;
    bool underSkippedKey = false;
    QByteArrayView rest = bytes;
    if (rest.startsWith("\xEF\xBB\xBF"))
        rest = rest.sliced(3);
    while (!rest.isEmpty()) {
        const qsizetype end = rest.indexOf('\n');
        const QByteArrayView raw = end < 0 ? rest : rest.first(end);
        rest = end < 0 ? QByteArrayView() : rest.sliced(end + 1);
        // Kept as it came, a CR before the line end included, so a rewrite changes nothing.
        const auto skip = [&] {
            (key ? file.m_keys[*key].skipped : file.m_skippedAtTop).append(raw.toByteArray());
        };

        QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        const QString decoded = decoder(raw);
        if (decoder.hasError()) {
            skip();
            continue;
        }
        const QStringView line = QStringView(decoded).trimmed();
        if (line.isEmpty() || line.startsWith(u';'))
            continue;
        if (line.startsWith(u'[')) {
            // The root is a key too: values can be set there.
            const QStringView path =
                line.endsWith(u']') ? line.sliced(1, line.size() - 2) : QStringView();
            const bool isUserKey =
                path.startsWith(rootName, Qt::CaseInsensitive) &&
                (path.size() == rootName.size() || path[rootName.size()] == u'\\');
            const QString keyPath = isUserKey ? fullPath(SettingsRoot::CurrentUser,
                                                         path.sliced(rootName.size()).toString())
                                              : QString();
            if (!isUserKey || keyPath.count(u'\\') > kMaxKeyDepth) {
                skip();
                underSkippedKey = true;
                continue;
            }
            key = file.createKey(keyPath);
            underSkippedKey = false;
            continue;
        }
        qsizetype pos = 0;
        const std::optional<QString> name = readQuoted(line, pos);
        const std::optional<SettingValue> data = name && pos < line.size() && line[pos] == u'='
                                                     ? readData(line.sliced(pos + 1))
                                                     : std::nullopt;
        if (!key || underSkippedKey || !data) {
            skip();
            continue;
        }
        setIn(file.m_keys[*key], *name, *data);
    }
    return file;
}

QList<QByteArray> SettingsFile::skippedLines() const {
    QList<QByteArray> lines = m_skippedAtTop;
    for (const Key& key : m_keys)
        lines += key.skipped;
    return lines;
}

QByteArray SettingsFile::toText() const {
    QByteArray bytes = "; KX Force Platforms Control Panel user settings\n";
    const auto appendSkipped = [&bytes](const QList<QByteArray>& lines) {
        for (const QByteArray& line : lines)
            bytes += line + '\n';
    };
    appendSkipped(m_skippedAtTop);
    for (const Key& key : m_keys) {
        QString text = QStringLiteral("\n[") + key.path + QStringLiteral("]\n");
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
        bytes += text.toUtf8();
        appendSkipped(key.skipped);
    }
    return bytes;
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
        m_keys.push_back({path.left(*end), {}, {}});
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
