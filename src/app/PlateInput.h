#pragma once

#include <QString>
#include <QtGlobal>
#include <optional>

namespace kx {

// Numbers typed into the main window's boxes. The decimal sign is "." as on screen; blanks
// around the number are ignored. Text that is not a finite number gives nothing.
std::optional<double> parseNumber(const QString& text);

// Whole numbers round half to even, like the conversions of the original program; values
// beyond the type saturate at its limits instead of wrapping.
qint16 toInt16(double value);
qint32 toInt32(double value);
// Beyond the single-precision range: the largest finite single of that sign.
float toSingle(double value);

} // namespace kx
