#pragma once

#include <QDateTime>
#include <QString>
#include <QtGlobal>
#include <optional>

namespace kx {

struct NoisePlan;
class NoiseSequence;

// Where a run stands in time, for a technician who comes back to it hours later.
struct NoiseTimeline {
    qsizetype test = 0;               // 1-based number of the present test, in run order
    qsizetype tests = 0;              // every test of the plan
    std::optional<qint64> startsInMs; // while waiting: until the present test starts
    qint64 remainingMs = 0;           // until the last test ends

    // The present test of `sequence`, `elapsedMs` into its wait or, when `measuring`, into the
    // test itself. A test starts on the first one-second tick past its wait's whole seconds and
    // lasts the plan's test duration.
    static NoiseTimeline at(const NoisePlan& plan, const NoiseSequence& sequence, bool measuring,
                            quint32 elapsedMs);

    // "test 7 of 100, starts in 0:04:59, ends about 17:40": the end as a time of day, with
    // the day's name when it is not today.
    QString text(const QDateTime& now) const;
};

// A length of time as h:mm:ss ("1:00:01"), whole seconds.
QString formatDuration(qint64 ms);

} // namespace kx
