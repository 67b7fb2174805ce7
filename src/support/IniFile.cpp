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
        raw[i] = text.toLocal8Bit() + (lineEnd == "\r\n" ? "\r" : "");
        lines[i] = text;
    }
    void insertLine(qsizetype i, const QString& text) {
        // A last line without its end gets one before the new line follows it.
        if (i == raw.size() && !endsWithLineEnd && !raw.isEmpty() && lineEnd == "\r\n")
            raw.last() += '\r';
        raw.insert(i, {});
        lines.insert(i, {});
        setLine(i, text);
        if (i == raw.size() - 1)
            endsWithLineEnd = true;
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
    return UnsavedSettings::instance().write(m_path, section, key, text, keptWriter());
}

SaveResult IniFile::retryUnsaved() const {
    return UnsavedSettings::instance().retry(m_path, keptWriter());
}

UnsavedSettings::Writer IniFile::keptWriter() const {
    return [this](const QString& section, const QString& key, const UnsavedSettings::Value& text) {
        return write(section, key, std::get<QString>(text));
    };
}

SaveResult IniFile::write(const QString& section, const QString& key, const QString& text) const {
    QByteArray bytes;
    if (QFile::exists(m_path)) {
        std::optional<QByteArray> existing = readBytes(m_path);
        if (!existing)
            return {QStringLiteral("The profile %1 cannot be read, so it is left as it is.")
                        .arg(QDir::toNativeSeparators(m_path))}; // never replace what was not read
        bytes = std::move(*existing);
    }
    return saveAtomically(m_path, withValue(bytes, section, key, text));
}

QByteArray IniFile::withValue(const QByteArray& bytes, const QString& section, const QString& key,
                              const QString& text) {
    IniText ini = linesOf(bytes);
    if (const auto body = findSection(ini.lines, section)) {
        qsizetype insertAt = body->first;
        for (qsizetype i = body->first; i < body->second; ++i) {
            const std::optional<QStringView> name = keyName(ini.lines[i]);
            if (name && sameName(*name, key)) {
                ini.setLine(i, name->toString() + u'=' + text);
                insertAt = -1;
                break;
            }
            if (!ini.lines[i].trimmed().isEmpty())
                insertAt = i + 1;
        }
        if (insertAt >= 0)
            ini.insertLine(insertAt, key + u'=' + text);
    } else {
        ini.insertLine(ini.raw.size(), u'[' + section + u']');
        ini.insertLine(ini.raw.size(), key + u'=' + text);
    }
    return ini.bytes();
}

} // namespace kx
