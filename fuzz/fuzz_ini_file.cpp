// The shared INI profile: any bytes in the file can be read key by key, and writing one value
// changes that value only: every other section and key reads as before. The file's bytes are
// read and written in memory, as IniFile does between reading and replacing the file: going
// through the disk for each of the twenty reads, and syncing each write to it, made a run two
// hundred times slower without reaching any more of the reader.

#include "FuzzCheck.h"
#include "support/IniFile.h"

#include <QRegularExpression>
#include <cstdint>

using kx::fuzz::check;

namespace {

constexpr qsizetype kNames = 3; // every pair is read twice

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
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));

    // Names to ask for, as sections and as keys: the first pieces of the file between
    // brackets, equals signs and line ends, so that the names it holds are among them.
    static const QRegularExpression separators(QStringLiteral("[\\[\\]=\\r\\n]"));
    QStringList pieces = QString::fromLocal8Bit(bytes).split(separators, Qt::SkipEmptyParts);
    for (QString& piece : pieces)
        piece = piece.trimmed();
    pieces.removeAll(QString());
    pieces.removeDuplicates();
    const QStringList names = pieces.mid(0, kNames);

    const auto readAll = [&](const QByteArray& file) {
        QStringList values;
        for (const QString& section : names)
            for (const QString& key : names)
                values << kx::IniFile::valueIn(file, section, key, QStringLiteral("(none)"));
        return values;
    };
    const QStringList before = readAll(bytes);

    // A key line cannot start like a comment.
    if (names.size() < 2 || names[1].startsWith(u';'))
        return 0;
    const QString section = names[0];
    const QString key = names[1];
    const QString text = pieces.back();
    const QByteArray written = kx::IniFile::withValue(bytes, section, key, text);
    check(kx::IniFile::valueIn(written, section, key, QString()) == asRead(text),
          "a written value reads back");

    const QStringList after = readAll(written);
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
