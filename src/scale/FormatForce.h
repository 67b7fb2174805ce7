#pragma once

#include <QString>
#include <QtGlobal>

namespace kx {

// The force units the scale can show.
namespace forceunit {
inline constexpr qint16 PoundsOunces = 1; // "1 lbf 3 ozf"
inline constexpr qint16 Ounces = 2;
inline constexpr qint16 Newtons = 3;
inline constexpr qint16 Grams = 4;
inline constexpr qint16 Kilograms = 5;
} // namespace forceunit

// A force in newtons as the scale shows it in `unit`, with `decimals` adjusted by the unit
// (ounces one fewer, grams two fewer, kilograms one more; none below zero). Halves round away
// from zero, a negative value keeps its minus, and an exact zero gives the unit's plain zero
// text ("0 kgf") whatever the decimals. An unknown unit gives an empty text.
//
// Pounds and ounces are formatted apart: the pounds are the whole pounds of the unrounded
// total and only the ounces are rounded, so 31.7 ounces with no decimals is "1 lbf 16 ozf".
QString FormatForce(double value, qint16 unit, qint16 decimals);

} // namespace kx
