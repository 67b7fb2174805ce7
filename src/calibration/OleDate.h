#pragma once

#include <QDateTime>

namespace kx {

// A date as the calibration file keeps it: days since 30 December 1899, the fraction being the
// time of day. The raw number is kept as read so that a file round-trips byte for byte.
struct OleDate {
    double days = 0;

    // Local date and time, to the millisecond; an invalid date-time gives 0.
    static OleDate fromDateTime(const QDateTime& dateTime);
    QDateTime toDateTime() const;

    friend bool operator==(const OleDate&, const OleDate&) = default;
};

} // namespace kx
