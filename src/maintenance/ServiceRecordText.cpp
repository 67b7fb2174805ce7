#include "maintenance/ServiceRecordText.h"

#include "support/DateFormat.h"
#include "support/NumberFormat.h"

namespace kx {

QString formatTemperature(float degrees) {
    return formatNumber(degrees, u"0.00 °C");
}

QString formatTimeInService(qint64 seconds) {
    constexpr qint64 SecondsPerHour = 3600;
    constexpr qint64 SecondsPerMinute = 60;
    const qint64 hours = seconds / SecondsPerHour;
    const qint64 rest = seconds % SecondsPerHour;
    return formatNumber(hours, u"0h ") + formatNumber(rest / SecondsPerMinute, u"0m ") +
           formatNumber(rest % SecondsPerMinute, u"0s ");
}

QString formatRecordDate(const QDateTime& date) {
    if (!date.isValid())
        return {};
    return formatLongDate(date.date()) + QStringLiteral(" - ") + formatLongTime(date.time());
}

} // namespace kx
