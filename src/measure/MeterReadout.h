#pragma once

#include <QString>
#include <QtGlobal>

namespace kx {

// The channel meter's read-out rules.

// The speed selector's choices, its Value.
namespace meterspeed {
inline constexpr qint32 Fast = 0;
inline constexpr qint32 Medium = 1;
inline constexpr qint32 Slow = 2;
} // namespace meterspeed

// The read-out period in milliseconds: the base period halved for Fast, kept for Medium and
// doubled for Slow (each step doubles).
double meterPeriodMs(qint32 basePeriodMs, qint32 speed);

// The zero value the meter writes to every channel while it runs, so that it shows the bridge
// signals as the converter reads them: the converter's own zero, mid-scale of the unsigned
// codes before firmware 2 and 0 of the signed codes from firmware 2 on.
qint32 meterZeroCodes(int firmwareMajor);

// One line of the read-out: "Ch2 -0.001234 VDC" for channel 2 (1-based).
QString meterLine(int channel, double volts);

} // namespace kx
