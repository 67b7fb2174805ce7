#pragma once

#include <QString>
#include <QStringView>
#include <QtGlobal>
#include <optional>

namespace kx {

// A byte as two upper-case hexadecimal digits: 5 is "05", 176 is "B0".
QString formatHexByte(quint8 value);

// The value of a hexadecimal text (digits only, either case, leading zeros allowed), or
// nothing when the text is empty, holds another character or is above FF.
std::optional<quint8> parseHexByte(QStringView text);

} // namespace kx
