#pragma once

#include <cstddef>

namespace kx {

// Numbers written as ASCII into a caller's buffer, without allocating: the fast path under
// NumberFormat and the writer of capture files with millions of rows.
//
// A value is first taken as the decimal number it stands for, with the significant digits
// the program shows for its type (7 for a single, 15 for a double: 0.1f is 0.1 and 1.005 is
// 1.005, not the binary neighbours), and only then rounded as asked. The decimal sign is
// always "." and there is never a thousands separator.

inline constexpr int kMaxFixedDecimals = 30;
inline constexpr int kMaxIntegerDigits = 30;
// Room one call may need: sign, the 309 integer digits of the largest double, point and
// decimals. A call may use all of it as scratch, past the end of the text it returns.
inline constexpr std::size_t kMaxNumberChars = 1 + 309 + 1 + kMaxFixedDecimals;

// Writes the value with exactly `decimals` digits after a "." (no point when 0) and at least
// `integerDigits` before it, padded with zeros (0 allowed: 0.5 gives ".5"), rounded half away
// from zero (0.125 -> "0.13", -2.5 -> "-3"); returns the end of the text. A "-" is written only
// when the rounded value is not zero (-0.0001 with 3 decimals gives "0.000"). NaN and the
// infinities give "NaN", "Inf" and "-Inf". decimals and integerDigits are clamped to
// [0, kMaxFixedDecimals] and [0, kMaxIntegerDigits].
char* appendFixed(char* out, double value, int decimals, int integerDigits = 1);
char* appendFixed(char* out, float value, int decimals, int integerDigits = 1);

// The general number form, a number without a pattern: the type's significant digits without
// trailing zeros (0.25, 5, 1000, 0.3 for 0.1f + 0.2f), in scientific form when the decimal
// exponent is below -4 or not below the digit count (1E-05, 1.5E+07 for a single).
char* appendGeneral(char* out, double value);
char* appendGeneral(char* out, float value);

} // namespace kx
