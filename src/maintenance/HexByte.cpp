#include "maintenance/HexByte.h"

#include <limits>

namespace kx {

namespace {

// The value of one hexadecimal digit, or -1.
int hexDigit(QChar c) {
    const char16_t u = c.unicode();
    if (u >= u'0' && u <= u'9')
        return u - u'0';
    if (u >= u'A' && u <= u'F')
        return u - u'A' + 10;
    if (u >= u'a' && u <= u'f')
        return u - u'a' + 10;
    return -1;
}

} // namespace

QString formatHexByte(quint8 value) {
    return QStringLiteral("%1").arg(value, 2, 16, QLatin1Char('0')).toUpper();
}

std::optional<quint8> parseHexByte(QStringView text) {
    if (text.isEmpty())
        return std::nullopt;
    unsigned value = 0;
    for (const QChar c : text) {
        const int digit = hexDigit(c);
        if (digit < 0)
            return std::nullopt;
        // Checked digit by digit: leading zeros are fine and no length can wrap around.
        value = value * 16 + static_cast<unsigned>(digit);
        if (value > std::numeric_limits<quint8>::max())
            return std::nullopt;
    }
    return static_cast<quint8>(value);
}

} // namespace kx
