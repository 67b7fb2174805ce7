#include "support/IniFile.h"

#include "support/Folders.h"
#include "support/SaveAtomically.h"

#include <QFile>
#include <QStringList>
#include <optional>
#include <utility>

namespace kx {
namespace {

#ifdef Q_OS_WIN
constexpr QStringView kNewFileLineEnd = u"\r\n";
#else
constexpr QStringView kNewFileLineEnd = u"\n";
#endif

struct IniText {
    QStringList lines;
    QString lineEnd;
};

// The file's lines without their ends; nothing when it cannot be read.
std::optional<IniText> readLines(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QString text = QString::fromLocal8Bit(file.readAll());
    IniText ini{text.split(u'\n'),
                text.contains(u"\r\n") ? QStringLiteral("\r\n") : kNewFileLineEnd.toString()};
    if (ini.lines.last().isEmpty())
        ini.lines.removeLast();
    for (QString& line : ini.lines) {
        if (line.endsWith(u'\r'))
            line.chop(1);
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
    if (const std::optional<IniText> ini = readLines(m_path)) {
        if (const auto body = findSection(ini->lines, section)) {
            for (qsizetype i = body->first; i < body->second; ++i) {
                const QStringView line = ini->lines[i];
                const std::optional<QStringView> name = keyName(line);
                if (!name || !sameName(*name, key))
                    continue;
                QStringView text = line.sliced(line.indexOf(u'=') + 1).trimmed();
                if (text.size() >= 2 && (text.front() == u'"' || text.front() == u'\'') &&
                    text.back() == text.front())
                    text = text.sliced(1, text.size() - 2);
                return text.toString();
            }
        }
    }
    QStringView fallback = defaultText;
    while (fallback.endsWith(u' ') || fallback.endsWith(u'\t'))
        fallback.chop(1);
    return fallback.toString();
}

void IniFile::setValue(const QString& section, const QString& key, const QString& text) const {
    IniText ini{{}, kNewFileLineEnd.toString()};
    if (QFile::exists(m_path)) {
        std::optional<IniText> existing = readLines(m_path);
        if (!existing)
            return; // a file that cannot be read must not be replaced
        ini = std::move(*existing);
    }

    if (const auto body = findSection(ini.lines, section)) {
        qsizetype insertAt = body->first;
        for (qsizetype i = body->first; i < body->second; ++i) {
            const std::optional<QStringView> name = keyName(ini.lines[i]);
            if (name && sameName(*name, key)) {
                ini.lines[i] = name->toString() + u'=' + text;
                insertAt = -1;
                break;
            }
            if (!ini.lines[i].trimmed().isEmpty())
                insertAt = i + 1;
        }
        if (insertAt >= 0)
            ini.lines.insert(insertAt, key + u'=' + text);
    } else {
        ini.lines << u'[' + section + u']' << key + u'=' + text;
    }

    saveAtomically(m_path, (ini.lines.join(ini.lineEnd) + ini.lineEnd).toLocal8Bit());
}

} // namespace kx
