#include "calibration/OleDate.h"

#include <cmath>

namespace kx {

namespace {

constexpr double MsPerDay = 86400000.0;

QDate epoch() {
    return QDate(1899, 12, 30);
}

} // namespace

OleDate OleDate::fromDateTime(const QDateTime& dateTime) {
    if (!dateTime.isValid())
        return {};
    const double day = static_cast<double>(epoch().daysTo(dateTime.date()));
    const double fraction = dateTime.time().msecsSinceStartOfDay() / MsPerDay;
    // Before the epoch the integer part counts back while the fraction still counts forward.
    return {day >= 0 ? day + fraction : day - fraction};
}

QDateTime OleDate::toDateTime() const {
    if (!std::isfinite(days) || std::abs(days) > 3e6)
        return {};
    const double whole = std::trunc(days);
    auto ms = std::llround(std::abs(days - whole) * MsPerDay);
    QDate date = epoch().addDays(static_cast<qint64>(whole));
    if (ms >= static_cast<qint64>(MsPerDay)) { // rounded up to the next midnight
        date = date.addDays(1);
        ms = 0;
    }
    // Built from date and time of day, never by adding to midnight: a day with a daylight
    // saving change would shift the hour.
    return QDateTime(date, QTime::fromMSecsSinceStartOfDay(static_cast<int>(ms)));
}

} // namespace kx
