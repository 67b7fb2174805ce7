#include "maintenance/HexByteValidator.h"

#include <algorithm>

namespace kx {

QValidator::State HexByteValidator::validate(QString& input, int& /*pos*/) const {
    const auto isHexDigit = [](QChar c) {
        return (c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'F') || (c >= u'a' && c <= u'f');
    };
    if (!std::all_of(input.cbegin(), input.cend(), isHexDigit))
        return Invalid;
    input = input.toUpper();
    return input.isEmpty() ? Intermediate : Acceptable;
}

} // namespace kx
