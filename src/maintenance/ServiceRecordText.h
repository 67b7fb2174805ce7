#pragma once

#include <QDateTime>
#include <QString>

namespace kx {

// The texts of a plate's service record as the extended device information shows them.

// Degrees Celsius with two decimals: "23.50 °C".
QString formatTemperature(float degrees);

// Whole hours, the minutes of the rest and the remaining seconds, each followed by a blank:
// 43503 s is "12h 5m 3s ".
QString formatTimeInService(qint64 seconds);

// The record's date in the long date form, " - ", and its time in the long time form; the
// empty text for a plate that holds no valid date.
QString formatRecordDate(const QDateTime& date);

} // namespace kx
