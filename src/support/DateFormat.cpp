#include "support/DateFormat.h"

#include <QLocale>

namespace kx {
namespace {

// Runs of the letter `field` outside quoted literals.
QString replaceField(const QString& format, QChar field, const QString& replacement) {
    QString result;
    bool quoted = false;
    for (qsizetype i = 0; i < format.size();) {
        const QChar c = format[i];
        if (c == u'\'')
            quoted = !quoted;
        if (quoted || c != field) {
            result += c;
            ++i;
            continue;
        }
        while (i < format.size() && format[i] == field)
            ++i;
        result += replacement;
    }
    return result;
}

QString shortDateFormat() {
    return replaceField(QLocale().dateFormat(QLocale::ShortFormat), u'y', QStringLiteral("yyyy"));
}

} // namespace

QString formatShortDate(QDate date) {
    return QLocale().toString(date, shortDateFormat());
}

QDate parseShortDate(const QString& text) {
    return QLocale().toDate(text.trimmed(), shortDateFormat());
}

QString formatLongDate(QDate date) {
    return QLocale().toString(date, QLocale::LongFormat);
}

QString formatLongTime(QTime time) {
    const QString format = replaceField(QLocale().timeFormat(QLocale::LongFormat), u't', {});
    return QLocale().toString(time, format.simplified());
}

} // namespace kx
