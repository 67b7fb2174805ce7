#pragma once

#include <QDate>
#include <QString>
#include <QTime>

namespace kx {

// Dates and times in the forms the program shows, in the default locale (QLocale()).

// The locale's short date with a four-digit year (1/31/2024 in en_US), so that the text can
// be read back without guessing the century.
QString formatShortDate(QDate date);
// The inverse of formatShortDate, also reading ISO dates (2026-11-23) and the short date with
// a two-digit year (taken in 1930 to 2029); an invalid date when the text is none of these.
QDate parseShortDate(const QString& text);

// The locale's long date: "Wednesday, January 31, 2024" in en_US.
QString formatLongDate(QDate date);

// The locale's long time without the time zone: "3:04:05 PM" in en_US.
QString formatLongTime(QTime time);

} // namespace kx
