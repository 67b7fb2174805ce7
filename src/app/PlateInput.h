#pragma once

#include "support/NumberInput.h"

#include <QtGlobal>

namespace kx {

// Whole numbers round half to even, like the conversions of the original program; values
// beyond the type saturate at its limits instead of wrapping.
qint16 toInt16(double value);
qint32 toInt32(double value);
// Beyond the single-precision range: the largest finite single of that sign.
float toSingle(double value);

} // namespace kx
