// Display patterns: any pattern formats any value within the length of the pattern's text
// and one number; a one-section pattern gives its text around the number that appendFixed
// writes (appendGeneral for the empty pattern).
//
// Input: 8 bytes of a double (or in its first 4 a single, when the lowest bit of the next byte
// is set), that byte, then the pattern in UTF-8.

#include "FuzzCheck.h"
#include "support/NumberFormat.h"
#include "support/NumberText.h"

#include <QRegularExpression>
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>

using kx::fuzz::check;

namespace {

// What a one-section pattern must give: prefix, the number, a point asked for without
// decimals, suffix. Nothing for a pattern with a negative section.
template <typename F>
std::optional<QString> expected(const QString& pattern, F value) {
    char digits[kx::kMaxNumberChars];
    if (pattern.isEmpty())
        return QString::fromLatin1(digits, kx::appendGeneral(digits, value) - digits);
    static const QRegularExpression section(QStringLiteral("^([^0.;]*)(0*)(\\.(0*))?([^;]*)$"),
                                            QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch m = section.match(pattern);
    if (!m.hasMatch())
        return std::nullopt;
    const auto decimals = static_cast<int>(m.capturedLength(4));
    const auto integerDigits = static_cast<int>(m.capturedLength(2));
    const char* const end = kx::appendFixed(digits, value, decimals, integerDigits);
    QString text = m.captured(1) + QLatin1String(digits, end - digits);
    if (m.hasCaptured(3) && decimals == 0)
        text += u'.';
    return text + m.captured(5);
}

template <typename F>
void checkFormat(const QString& pattern, F value) {
    const QString text = kx::NumberFormat(pattern).format(value);
    check(static_cast<std::size_t>(text.size()) <=
              static_cast<std::size_t>(pattern.size()) + kx::kMaxNumberChars + 1,
          "the text is no longer than the pattern's text and one number");
    if (const std::optional<QString> wanted = expected(pattern, value))
        check(text == *wanted, "a one-section pattern puts its text around the number");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::uint8_t head[9] = {};
    std::memcpy(head, data, std::min(size, sizeof head));
    const QString pattern =
        size > sizeof head ? QString::fromUtf8(reinterpret_cast<const char*>(data) + sizeof head,
                                               static_cast<qsizetype>(size - sizeof head))
                           : QString();
    if (head[8] & 1) {
        float value = 0;
        std::memcpy(&value, head, sizeof value);
        checkFormat(pattern, value);
    } else {
        double value = 0;
        std::memcpy(&value, head, sizeof value);
        checkFormat(pattern, value);
    }
    return 0;
}
