#pragma once

#include "device/PlateTypes.h"

#include <QList>
#include <QString>

namespace kx {

// The device zero dialog's read-outs of a zero acquisition, from converter codes.

// Codes as volts: codes × 10 / 2^24, whatever the converter's resolution.
double zeroCodesToVolts(double codes);

// The signal-to-noise ratio in dB of a channel whose RMS noise is `deviation` codes: against
// 2^24 codes on firmware 2 and later, 2^23 before. A channel without noise shows the full
// dynamic range of a `resolutionBits` converter (144.5 dB for 24 bits).
double zeroSnrDb(double deviation, int firmwareMajor, int resolutionBits);

// One channel's read-outs of a zero acquisition: the values and their texts as the zero dialog
// shows them.
struct ZeroReadout {
    double average = 0;   // codes
    double deviation = 0; // the RMS noise, codes
    double volts = 0;     // the average
    double snrDb = 0;
    QString averageText;   // "0": the whole codes the plate takes as its zero value
    QString voltsText;     // "0.000"
    QString deviationText; // "0.0"
    QString snrText;       // "0.0"
};

// The read-outs of the zero-done event's averages and deviations, for each channel that has
// both, at most `channels`.
QList<ZeroReadout> zeroReadouts(const ChannelValues& average, const ChannelValues& deviation,
                                int firmwareMajor, int resolutionBits, qsizetype channels);

} // namespace kx
