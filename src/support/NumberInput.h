#pragma once

#include <QString>
#include <optional>

namespace kx {

// A number typed into a box. The decimal sign is "." as on screen, and a comma is never a
// group separator: "1,500" would pass for 1500 where the user meant 1.5, so any comma is
// refused. Blanks around the number are ignored. Text that is not a finite number gives
// nothing.
std::optional<double> parseNumber(const QString& text);

} // namespace kx
