#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace kx {

class NoiseResults;
struct NoisePlan;

// Width of the print zones that separate the items of a result-file line.
inline constexpr int PrintZoneWidth = 14;

// Appends `item` to `line`, then blanks up to the start of the next print zone. An item that
// ends exactly on a zone boundary, or runs past its zone, is still followed by at least one
// blank, so neighbouring items never touch.
void printInZone(QString& line, const QString& item);

// The whole result file: one line per excitation (pattern "0.000"), then per frequency in
// plan order the frequency ("000.000") and per channel R1 ("000000.000"), R2 ("000.000") and
// R3 ("000.000"), each item in print zones, every line ending in CR LF. Tests not yet run
// print as zeros.
QByteArray noiseResultFile(const NoisePlan& plan, const NoiseResults& results);

// The line lstResults shows for one finished test, with what makes it suspect at the end.
QString noiseListLine(const NoisePlan& plan, const NoiseResults& results, qsizetype frequency,
                      qsizetype excitation);

// The two heading lines above lstResults: each column's name and unit, right-aligned over its
// figures, for `channels` channels.
QStringList noiseListHeading(qsizetype channels);

// "suspect: buffer overrun, load change", or empty for NoiseResults::NotSuspect.
QString suspicionText(quint8 marks);

} // namespace kx
