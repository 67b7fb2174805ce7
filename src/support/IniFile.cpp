#include "support/IniFile.h"

#include "support/Folders.h"
#include "support/SaveAtomically.h"
#include "support/UnsavedSettings.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QList>
#include <QStringList>
#include <QStringTokenizer>
#include <optional>
#include <utility>

namespace kx {
namespace {

#ifdef Q_OS_WIN
constexpr char kNewFileLineEnd[] = "\r\n";
#else
constexpr char kNewFileLineEnd[] = "\n";
#endif

// The file as lines: each one's bytes as they are (a CR before the "\n" included), so a write
// gives back every line it does not change byte for byte, whatever its encoding, and each
// one's text for matching.
struct IniText {
    QList<QByteArray> raw;
    QStringList lines; // without their line ends
    QByteArray lineEnd = kNewFileLineEnd;
    bool endsWithLineEnd = true;

    void setLine(qsizetype i, const QString& text) {
        // The CR is the line end's: a last line without its end gets none.
        const bool ended = i < raw.size() - 1 || endsWithLineEnd;
        raw[i] = text.toLocal8Bit() + (lineEnd == "\r\n" && ended ? "\r" : "");
        lines[i] = text;
    }
    void insertLine(qsizetype i, const QString& text) {
        if (i == raw.size()) {
            // A last line without its end gets one before the new line follows it.
            if (!endsWithLineEnd && !raw.isEmpty() && lineEnd == "\r\n")
                raw.last() += '\r';
            endsWithLineEnd = true;
        }
        raw.insert(i, {});
        lines.insert(i, {});
        setLine(i, text);
    }
    QByteArray bytes() const {
        QByteArray all = raw.join('\n');
        if (!raw.isEmpty() && endsWithLineEnd)
            all += '\n';
        return all;
    }
};

// The file's bytes; nothing when it cannot be read.
std::optional<QByteArray> readBytes(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll();
}

IniText linesOf(const QByteArray& bytes) {
    IniText ini;
    if (bytes.contains("\r\n"))
        ini.lineEnd = "\r\n";
    ini.raw = bytes.split('\n');
    ini.endsWithLineEnd = bytes.isEmpty() || bytes.endsWith('\n');
    if (ini.raw.last().isEmpty())
        ini.raw.removeLast();
    for (const QByteArray& raw : std::as_const(ini.raw)) {
        QString line = QString::fromLocal8Bit(raw);
        if (line.endsWith(u'\r'))
            line.chop(1);
        ini.lines << line;
    }
    return ini;
}

// The name of a "[section]" line, or nothing for any other line.
std::optional<QStringView> sectionName(QStringView line) {
    line = line.trimmed();
    if (!line.startsWith(u'['))
        return std::nullopt;
    const qsizetype close = line.indexOf(u']');
    return line.sliced(1, (close < 0 ? line.size() : close) - 1).trimmed();
}

// The key of a "key=value" line, or nothing for any other line.
std::optional<QStringView> keyName(QStringView line) {
    line = line.trimmed();
    const qsizetype equals = line.indexOf(u'=');
    if (equals <= 0 || line.startsWith(u';'))
        return std::nullopt;
    return line.first(equals).trimmed();
}

// A value as the file gives it back: without its blanks and enclosing quotes.
QString valueText(QStringView text) {
    text = text.trimmed();
    if (text.size() >= 2 && (text.front() == u'"' || text.front() == u'\'') &&
        text.back() == text.front())
        text = text.sliced(1, text.size() - 2);
    return text.toString();
}

bool sameName(QStringView a, QStringView b) {
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

// The first line of the section's body and the line after it, or nothing when there is no
// such section; the first section of that name is the one that counts.
std::optional<std::pair<qsizetype, qsizetype>> findSection(const QStringList& lines,
                                                           const QString& section) {
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const std::optional<QStringView> name = sectionName(lines[i]);
        if (!name || !sameName(*name, section))
            continue;
        qsizetype end = i + 1;
        while (end < lines.size() && !sectionName(lines[end]))
            ++end;
        return std::pair{i + 1, end};
    }
    return std::nullopt;
}

// An existing key's value replaced in its line, or the key added at the end of its section,
// or the section added at the end of the file.
void setValueIn(IniText& ini, const QString& section, const QString& key, const QString& text) {
    if (const auto body = findSection(ini.lines, section)) {
        qsizetype insertAt = body->first;
        for (qsizetype i = body->first; i < body->second; ++i) {
            const std::optional<QStringView> name = keyName(ini.lines[i]);
            if (name && sameName(*name, key)) {
                ini.setLine(i, name->toString() + u'=' + text);
                return;
            }
            if (!ini.lines[i].trimmed().isEmpty())
                insertAt = i + 1;
        }
        ini.insertLine(insertAt, key + u'=' + text);
    } else {
        ini.insertLine(ini.raw.size(), u'[' + section + u']');
        ini.insertLine(ini.raw.size(), key + u'=' + text);
    }
}

} // namespace

IniFile IniFile::sharedProfile() {
    return IniFile(CommonAppDataFolder() + QLatin1String(ProfileSubfolder) +
                   QStringLiteral("/KXPlateCpl.ini"));
}

QString IniFile::value(const QString& section, const QString& key,
                       const QString& defaultText) const {
    if (const auto kept = UnsavedSettings::instance().kept(m_path, section, key))
        return valueText(std::get<QString>(*kept));
    return valueIn(readBytes(m_path).value_or(QByteArray()), section, key, defaultText);
}

QString IniFile::valueIn(const QByteArray& bytes, const QString& section, const QString& key,
                         const QString& defaultText) {
    // Read line by line in place: a profile is read once for every key a dialog loads, and
    // splitting it into lists of lines each time cost more than the reading.
    const QString text = QString::fromLocal8Bit(bytes);
    bool inSection = false;
    for (QStringView line : QStringTokenizer(text, u'\n')) {
        if (line.endsWith(u'\r'))
            line.chop(1);
        if (const std::optional<QStringView> name = sectionName(line)) {
            if (inSection)
                break; // only the first section of that name counts
            inSection = sameName(*name, section);
            continue;
        }
        const std::optional<QStringView> name = inSection ? keyName(line) : std::nullopt;
        if (!name || !sameName(*name, key))
            continue;
        return valueText(line.sliced(line.indexOf(u'=') + 1));
    }
    QStringView fallback = defaultText;
    while (fallback.endsWith(u' ') || fallback.endsWith(u'\t'))
        fallback.chop(1);
    return fallback.toString();
}

SaveResult IniFile::setValue(const QString& section, const QString& key,
                             const QString& text) const {
    return setValues({{section, key, text}});
}

SaveResult IniFile::setValues(const std::vector<Value>& values) const {
    std::vector<UnsavedSettings::Entry> entries;
    entries.reserve(values.size());
    for (const Value& value : values)
        entries.push_back({value.section, value.key, value.text});
    return UnsavedSettings::instance().writeAll(m_path, entries, keptWriter());
}

SaveResult IniFile::retryUnsaved() const {
    return UnsavedSettings::instance().retryAll(m_path, keptWriter());
}

UnsavedSettings::BatchWriter IniFile::keptWriter() const {
    return [this](const std::vector<UnsavedSettings::Entry>& entries) {
        std::vector<Value> values;
        values.reserve(entries.size());
        for (const UnsavedSettings::Entry& entry : entries)
            values.push_back({entry.section, entry.key, std::get<QString>(entry.value)});
        return write(values);
    };
}

SaveResult IniFile::write(const std::vector<Value>& values) const {
    if (values.empty())
        return {};
    QByteArray bytes;
    const bool exists = QFile::exists(m_path);
    if (exists) {
        std::optional<QByteArray> existing = readBytes(m_path);
        if (!existing)
            return {QStringLiteral("The profile %1 cannot be read, so it is left as it is.")
                        .arg(QDir::toNativeSeparators(m_path))}; // never replace what was not read
        bytes = std::move(*existing);
    }
    QByteArray written = withValues(bytes, values);
    // Every save reaches the disk before it takes the old file's place, which costs far more
    // than reading: a dialog that writes back what it read leaves the file alone.
    if (exists && written == bytes)
        return {};
    return saveAtomically(m_path, written);
}

QByteArray IniFile::withValue(const QByteArray& bytes, const QString& section, const QString& key,
                              const QString& text) {
    return withValues(bytes, {{section, key, text}});
}

QByteArray IniFile::withValues(const QByteArray& bytes, const std::vector<Value>& values) {
    IniText ini = linesOf(bytes);
    for (const Value& value : values)
        setValueIn(ini, value.section, value.key, value.text);
    return ini.bytes();
}

} // namespace kx
