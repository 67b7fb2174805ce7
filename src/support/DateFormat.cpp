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

QString shortDateFormat(const QString& year = QStringLiteral("yyyy")) {
    return replaceField(QLocale().dateFormat(QLocale::ShortFormat), u'y', year);
}

// Two-digit years fall in 1930 to 2029, the window Windows uses by default.
constexpr int kFirstTwoDigitYear = 1930;

} // namespace

QString formatShortDate(QDate date) {
    return QLocale().toString(date, shortDateFormat());
}

QDate parseShortDate(const QString& text) {
    const QString trimmed = text.trimmed();
    if (const QDate date = QLocale().toDate(trimmed, shortDateFormat()); date.isValid())
        return date;
    if (const QDate date = QDate::fromString(trimmed, Qt::ISODate); date.isValid())
        return date;
    QDate date = QLocale().toDate(trimmed, shortDateFormat(QStringLiteral("yy")));
    if (date.isValid() && date.year() < kFirstTwoDigitYear)
        date = date.addYears(100);
    return date;
}

QString formatLongDate(QDate date) {
    return QLocale().toString(date, QLocale::LongFormat);
}

QString formatLongTime(QTime time) {
    const QString format = replaceField(QLocale().timeFormat(QLocale::LongFormat), u't', {});
    return QLocale().toString(time, format.simplified());
}

} // namespace kx
