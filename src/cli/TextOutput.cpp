#include "cli/TextOutput.h"

#include "resources/StringTable.h"

#include <algorithm>

namespace kx::cli {

QString textTable(const std::vector<QStringList>& rows) {
    QList<qsizetype> widths;
    for (const QStringList& row : rows) {
        for (qsizetype column = 0; column < row.size(); ++column) {
            if (widths.size() <= column)
                widths.append(0);
            widths[column] = std::max(widths[column], row[column].size());
        }
    }
    QString text;
    for (const QStringList& row : rows) {
        QString line;
        for (qsizetype column = 0; column < row.size(); ++column) {
            if (column > 0)
                line += QStringLiteral("  ") + row[column].rightJustified(widths[column]);
            else
                line += row[column].leftJustified(widths[column]);
        }
        while (line.endsWith(u' '))
            line.chop(1);
        text += line + u'\n';
    }
    return text;
}

QString yesNo(bool value) {
    return value ? QStringLiteral("yes") : QStringLiteral("no");
}

QString caption(int id) {
    QString text = strings::text(id).remove(u'&').trimmed();
    if (text.endsWith(u':'))
        text.chop(1);
    return text;
}

} // namespace kx::cli
