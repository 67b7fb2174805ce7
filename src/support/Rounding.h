#pragma once

#include <QtGlobal>

namespace kx {

// Rounds to the nearest integer, ties to even (1.5 -> 2, 2.5 -> 2, -0.5 -> 0), the rule for
// every fractional value the program stores as a whole number (tares, durations, rates).
// Saturates at the 32-bit range; NaN gives 0.
qint32 roundHalfEven(double value);

// The period in milliseconds of a rate in hertz: 1000 / rate, ties to even
// (5 Hz -> 200, 60 Hz -> 17, 400 Hz -> 2). A rate of 0 saturates to the largest period.
qint32 periodMsFromHertz(double hertz);

} // namespace kx
