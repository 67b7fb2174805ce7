// Numbers written into a caller's buffer: for any value, decimals and integer digits the text
// fits the room promised (a heap buffer of exactly that size, so an overrun is caught), has the
// shape asked for and reads back as the value.
//
// Input: 8 bytes of a double, 4 of a single, one signed byte each for the decimals and the
// integer digits; missing bytes are zeros.

#include "FuzzCheck.h"
#include "support/NumberText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

using kx::fuzz::check;

namespace {

// How far the type's significant digits may stand from the value, relative to it: half a
// unit of the last one.
template <typename F>
constexpr long double kRelativeError = std::is_same_v<F, float> ? 5e-7 : 5e-15;

bool isDigits(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// In long double: the largest double rounded to its significant digits is beyond a double.
long double readBack(const std::string& text) {
    long double value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    check(result.ec == std::errc{} && result.ptr == text.data() + text.size(),
          "the text reads as a number");
    return value;
}

// Writes with `write` into exactly kMaxNumberChars bytes; the text, or nothing for NaN and
// the infinities once their text is checked.
template <typename F, typename Write>
std::optional<std::string> written(F value, Write write) {
    const auto room = std::make_unique<char[]>(kx::kMaxNumberChars);
    const char* const begin = room.get();
    const char* const end = write(room.get());
    check(end >= begin && end <= begin + kx::kMaxNumberChars, "the text fits its room");
    const std::string text(begin, end);
    if (std::isnan(value))
        check(text == "NaN", "NaN");
    else if (std::isinf(value))
        check(text == (value < 0 ? "-Inf" : "Inf"), "the infinities");
    else
        return text;
    return std::nullopt;
}

template <typename F>
void checkFixed(F value, int decimals, int integerDigits) {
    const std::optional<std::string> text = written(
        value, [&](char* out) { return kx::appendFixed(out, value, decimals, integerDigits); });
    if (!text)
        return;
    decimals = std::clamp(decimals, 0, kx::kMaxFixedDecimals);
    integerDigits = std::clamp(integerDigits, 0, kx::kMaxIntegerDigits);

    const bool minus = text->starts_with('-');
    const std::string_view number = std::string_view(*text).substr(minus ? 1 : 0);
    const std::size_t point = number.find('.');
    const std::string_view whole = number.substr(0, point);
    const std::string_view fraction =
        point == std::string_view::npos ? std::string_view() : number.substr(point + 1);
    check(isDigits(whole) && isDigits(fraction), "digits only");
    check((point == std::string_view::npos) == (decimals == 0), "a point only with decimals");
    check(fraction.size() == static_cast<std::size_t>(decimals), "the decimals asked for");
    check(whole.size() >= static_cast<std::size_t>(integerDigits), "the integer digits asked for");
    check(whole.size() == static_cast<std::size_t>(integerDigits) || whole.front() != '0',
          "no zeros in front beyond those asked for");
    const bool zero = number.find_first_not_of("0.") == std::string_view::npos;
    check(minus == (!zero && std::signbit(value)), "a minus exactly on a negative non-zero");

    std::string plain = (minus ? "-0" : "0") + std::string(whole);
    if (!fraction.empty())
        plain += '.' + std::string(fraction);
    const long double exact = value;
    const long double allowed = 0.5L * std::pow(10.0L, -decimals) * (1 + 1e-12L) +
                                kRelativeError<F> * (1 + 1e-12L) * std::fabs(exact);
    check(std::fabs(readBack(plain) - exact) <= allowed, "the text is the value, rounded as asked");
}

template <typename F>
void checkGeneral(F value) {
    const std::optional<std::string> text =
        written(value, [&](char* out) { return kx::appendGeneral(out, value); });
    if (!text)
        return;
    const std::size_t exponent = text->find('E');
    const std::string_view mantissa = std::string_view(*text).substr(0, exponent);
    const std::size_t point = mantissa.find('.');
    check(point == std::string_view::npos || mantissa.back() != '0', "no trailing zeros");
    const long double exact = value;
    check(std::fabs(readBack(*text) - exact) <= kRelativeError<F> * (1 + 1e-12L) * std::fabs(exact),
          "the text is the value to its significant digits");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::uint8_t input[14] = {};
    std::memcpy(input, data, std::min(size, sizeof input));
    double real = 0;
    float single = 0;
    std::memcpy(&real, input, sizeof real);
    std::memcpy(&single, input + 8, sizeof single);
    const int decimals = static_cast<std::int8_t>(input[12]);
    const int integerDigits = static_cast<std::int8_t>(input[13]);

    checkFixed(real, decimals, integerDigits);
    checkFixed(single, decimals, integerDigits);
    checkGeneral(real);
    checkGeneral(single);
    return 0;
}
