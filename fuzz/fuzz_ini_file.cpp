// The shared INI profile: any bytes in the file can be read key by key, and writing one value
// changes that value only: every other section and key reads as before.

#include "FuzzCheck.h"
#include "support/IniFile.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <cstdint>

using kx::fuzz::check;

namespace {

constexpr qsizetype kNames = 3; // every pair is read twice: few, to keep runs quick

bool sameName(const QString& a, const QString& b) {
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

// What a written text reads back as: without blanks around it, and out of matching quotes.
QString asRead(const QString& written) {
    const QString text = written.trimmed();
    if (text.size() >= 2 && (text.front() == u'"' || text.front() == u'\'') &&
        text.back() == text.front())
        return text.sliced(1, text.size() - 2);
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("fuzz.ini"));
    QFile file(path);
    check(file.open(QIODevice::WriteOnly | QIODevice::Truncate), "the file opens");
    file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size));
    file.close();

    // Names to ask for, as sections and as keys: the first pieces of the file between
    // brackets, equals signs and line ends, so that the names it holds are among them.
    static const QRegularExpression separators(QStringLiteral("[\\[\\]=\\r\\n]"));
    QStringList pieces =
        QString::fromLocal8Bit(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size))
            .split(separators, Qt::SkipEmptyParts);
    for (QString& piece : pieces)
        piece = piece.trimmed();
    pieces.removeAll(QString());
    pieces.removeDuplicates();
    const QStringList names = pieces.mid(0, kNames);

    const kx::IniFile ini(path);
    const auto readAll = [&] {
        QStringList values;
        for (const QString& section : names)
            for (const QString& key : names)
                values << ini.value(section, key, QStringLiteral("(none)"));
        return values;
    };
    const QStringList before = readAll();

    // A key line cannot start like a comment.
    if (names.size() < 2 || names[1].startsWith(u';'))
        return 0;
    const QString section = names[0];
    const QString key = names[1];
    const QString text = pieces.back();
    ini.setValue(section, key, text);
    check(ini.value(section, key, QString()) == asRead(text), "a written value reads back");

    const QStringList after = readAll();
    qsizetype i = 0;
    for (const QString& s : names) {
        for (const QString& k : names) {
            check(after[i] == before[i] || (sameName(s, section) && sameName(k, key)),
                  "a write leaves every other value as it was");
            ++i;
        }
    }
    return 0;
}
