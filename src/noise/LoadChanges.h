#pragma once

#include <QList>
#include <QtGlobal>

namespace kx {

class NoiseResults;

// A test whose deviation on some channel is far beyond what the other tests at its sampling
// frequency show had something on or against the plate: a person leaning on it, a load put
// down or taken away. The plate's own deviation changes little with the excitation (by a
// factor of about 1.5 from 0.25 to 5 V), while a hand on the plate raises it hundreds of
// times, so ten times the others' median leaves room for the one and catches the other. The
// median is the lower one of the others, so that two disturbed tests at one frequency do not
// hide each other. A deviation within a few codes never counts: a quiet converter's
// deviations may differ by more than ten times and mean nothing.
inline constexpr double LoadChangeFactor = 10;
inline constexpr double QuietDeviation = 4; // converter codes

struct LoadChange {
    qsizetype frequency;
    qsizetype excitation;
    qsizetype channel; // the first channel that shows it
    bool operator==(const LoadChange&) const = default;
};

// Judges every measured test at `frequency` against the other measured tests there (one at
// least) and marks NoiseResults::LoadChange on those that show a load change. A new test can
// reveal an earlier one, so all of them are judged each time. Returns the tests marked now,
// in run order.
QList<LoadChange> markLoadChanges(NoiseResults& results, qsizetype frequency);

} // namespace kx
