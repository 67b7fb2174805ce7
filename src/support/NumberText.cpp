#include "support/NumberText.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace kx {
namespace {

constexpr std::uint64_t kPow10Int[] = {1ull,
                                       10ull,
                                       100ull,
                                       1000ull,
                                       10000ull,
                                       100000ull,
                                       1000000ull,
                                       10000000ull,
                                       100000000ull,
                                       1000000000ull,
                                       10000000000ull,
                                       100000000000ull,
                                       1000000000000ull,
                                       10000000000000ull,
                                       100000000000000ull,
                                       1000000000000000ull,
                                       10000000000000000ull,
                                       100000000000000000ull,
                                       1000000000000000000ull};

// Powers of ten that a double holds exactly.
constexpr double kPow10Exact[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                  1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                  1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int kMaxExactPower = 22;

constexpr char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233"
    "34353637383940414243444546474849505152535455565758596061626364656667"
    "6869707172737475767778798081828384858687888990919293949596979899";

template <typename F>
constexpr int kSignificantDigits = std::is_same_v<F, float> ? 7 : 15;

// A positive number as `digits` x 10^(exponent - precision + 1), where digits has exactly
// `precision` decimal digits: exponent is the power of ten of the first digit.
struct Decimal {
    std::uint64_t digits;
    int exponent;
};

// The exact product a * b as hi + lo: a fused multiply-add where the processor has one,
// else Dekker's splitting (which needs every operation rounded on its own).
struct ExactProduct {
    double hi;
    double lo;
};

ExactProduct exactProduct(double a, double b) {
    const double hi = a * b;
#ifdef FP_FAST_FMA
    return {hi, std::fma(a, b, -hi)};
#else
    const auto split = [](double v, double& high, double& low) {
        const double c = 134217729.0 * v; // 2^27 + 1
        high = c - (c - v);
        low = v - high;
    };
    double ah, al, bh, bl;
    split(a, ah, al);
    split(b, bh, bl);
    return {hi, ((ah * bh - hi) + ah * bl + al * bh) + al * bl};
#endif
}

// hi + lo (hi below 2^53, |lo| at most half an ulp of hi) rounded half away from zero.
std::uint64_t roundHalfAway(double hi, double lo) {
    auto n = static_cast<std::uint64_t>(static_cast<std::int64_t>(hi)); // floor: hi >= 0
    const double fraction = hi - static_cast<double>(n); // exact, and a multiple of hi's ulp
    if (fraction > 0.5 || (fraction == 0.5 && lo >= 0.0))
        ++n;
    return n;
}

// The rare values beyond the exact powers of ten: taken from a 31-digit rendering, which only
// a value within 1e-30 of a tie could tell from the exact one.
Decimal toDecimalSlow(double x, int precision) {
    char text[64];
    const auto result =
        std::to_chars(text, text + sizeof text, x, std::chars_format::scientific, 30);
    // text is "d.ddd...de[+-]xx"
    std::uint64_t digits = static_cast<std::uint64_t>(text[0] - '0');
    for (int i = 1; i < precision; ++i)
        digits = digits * 10 + static_cast<std::uint64_t>(text[i + 1] - '0');
    int exponent = 0;
    const char* e = std::find(text, result.ptr, 'e');
    std::from_chars(e[1] == '+' ? e + 2 : e + 1, result.ptr, exponent);
    if (text[precision + 1] >= '5')
        ++digits;
    if (digits == kPow10Int[precision]) {
        digits /= 10;
        ++exponent;
    }
    return {digits, exponent};
}

// x (finite, positive) with `precision` significant digits, halves away from zero.
Decimal toDecimal(double x, int precision) {
    // log10(x) from the binary exponent; off by at most one, which the loop corrects.
    const int binaryExponent =
        static_cast<int>((std::bit_cast<std::uint64_t>(x) >> 52) & 0x7FF) - 1023;
    int exponent = (binaryExponent * 1233) >> 12;
    const double lowest = kPow10Exact[precision - 1];
    const double limit = kPow10Exact[precision];
    for (;;) {
        const int power = precision - 1 - exponent;
        if (power < 0 || power > kMaxExactPower)
            return toDecimalSlow(x, precision);
        const ExactProduct scaled = exactProduct(x, kPow10Exact[power]);
        if (scaled.hi > limit || (scaled.hi == limit && scaled.lo >= 0.0)) {
            ++exponent;
        } else if (scaled.hi < lowest || (scaled.hi == lowest && scaled.lo < 0.0)) {
            --exponent;
        } else {
            std::uint64_t digits = roundHalfAway(scaled.hi, scaled.lo);
            if (digits == kPow10Int[precision]) {
                digits /= 10;
                ++exponent;
            }
            return {digits, exponent};
        }
    }
}

char* appendText(char* out, const char* text) {
    const std::size_t length = std::strlen(text);
    std::memcpy(out, text, length);
    return out + length;
}

// Writes the digits of n backwards, ending at `end`; returns the first digit.
char* writeBackwards(char* end, std::uint64_t n) {
    while (n >= 100) {
        end -= 2;
        std::memcpy(end, kDigitPairs + 2 * (n % 100), 2);
        n /= 100;
    }
    if (n >= 10) {
        end -= 2;
        std::memcpy(end, kDigitPairs + 2 * n, 2);
    } else if (n > 0) {
        *--end = static_cast<char>('0' + n);
    }
    return end;
}

// Number of decimal digits of n (0 for 0), n at most 10^18.
int digitCount(std::uint64_t n) {
    const int estimate =
        (static_cast<int>(std::bit_width(n)) * 1233) >> 12; // the count or one less
    return estimate + (n >= kPow10Int[estimate] ? 1 : 0);
}

// Writes the `count` lowest digits of n backwards, ending at `end`; returns n without them.
std::uint64_t writeLowDigits(char*& end, std::uint64_t n, int count) {
    for (; count >= 2; count -= 2) {
        end -= 2;
        std::memcpy(end, kDigitPairs + 2 * (n % 100), 2);
        n /= 100;
    }
    if (count > 0) {
        *--end = static_cast<char>('0' + n % 10);
        n /= 10;
    }
    return n;
}

// The common case of capture values: at most 9 decimals and below 10^18 once scaled. Works
// on y = |value| x 10^decimals held exactly as hi + lo, with the type's significant digits
// falling on a grid of 10^(k - precision) in y, k being the integer digits of y. Returns
// nullptr when a tie between the two roundings is too close to call, for the general path.
template <typename F>
char* appendFixedFast(char* out, F value, int decimals, int integerDigits) {
    constexpr int precision = kSignificantDigits<F>;
    const double x = std::fabs(static_cast<double>(value));
    // A single's 24 bits times 5^decimals' at most 21 need no correction term.
    const auto scale = [x](int power) {
        if constexpr (std::is_same_v<F, float>)
            return ExactProduct{x * kPow10Exact[power], 0.0};
        else
            return exactProduct(x, kPow10Exact[power]);
    };
    const ExactProduct y = scale(decimals);
    if (!(y.hi < 1e18))
        return nullptr;
    auto whole = static_cast<std::uint64_t>(static_cast<std::int64_t>(y.hi));
    if (static_cast<double>(whole) == y.hi && y.lo < 0.0)
        --whole; // y lies just below the integer hi
    const int k = digitCount(whole);
    std::uint64_t units = 0;
    int zeros = 0;
    if (k >= precision) {
        // Whole digits only: round x itself to its significant digits.
        const int power = precision - k + decimals;
        if (power < 0)
            return nullptr;
        const ExactProduct scaled = power == decimals ? y : scale(power);
        units = roundHalfAway(scaled.hi, scaled.lo);
        zeros = k - precision;
    } else {
        // Rounding to the significant digits first moves the halfway point of the last
        // decimal down by half a grid step; lo is below a ninth of the grid step here.
        const double grid = 1.0 / kPow10Exact[precision - k];
        const double fraction = y.hi - static_cast<double>(whole); // exact
        units = whole;
        if (fraction > 0.5 || (fraction == 0.5 && y.lo >= 0.0))
            ++units;
        else if (fraction >= 0.5 - grid)
            return nullptr;
    }
    if (units != 0 && std::signbit(value))
        *out++ = '-';
    // units x 10^zeros is at most 10^18 here.
    const std::uint64_t number = units * kPow10Int[zeros];
    const int integerLength = std::max(digitCount(number) - decimals, integerDigits);
    char* const end = out + integerLength + (decimals > 0 ? decimals + 1 : 0);
    char* first = end;
    const std::uint64_t integerPart = writeLowDigits(first, number, decimals);
    if (decimals > 0)
        *--first = '.';
    writeLowDigits(first, integerPart, integerLength);
    return end;
}

template <typename F>
char* appendFixedAs(char* out, F value, int decimals, int integerDigits) {
    if (std::isnan(value))
        return appendText(out, "NaN");
    if (std::isinf(value))
        return appendText(out, value < 0 ? "-Inf" : "Inf");
    decimals = std::clamp(decimals, 0, kMaxFixedDecimals);
    integerDigits = std::clamp(integerDigits, 0, kMaxIntegerDigits);
    if (decimals <= 9) {
        if (char* end = appendFixedFast(out, value, decimals, integerDigits))
            return end;
    }

    // The rounded value is units x 10^zeros x 10^-decimals.
    std::uint64_t units = 0;
    int zeros = 0;
    if (value != 0) {
        constexpr int precision = kSignificantDigits<F>;
        const Decimal decimal = toDecimal(std::fabs(static_cast<double>(value)), precision);
        const int dropped = precision - 1 - decimal.exponent - decimals;
        if (dropped <= 0) {
            units = decimal.digits;
            zeros = -dropped;
        } else if (dropped <= precision) {
            const std::uint64_t divisor = kPow10Int[dropped];
            units = (decimal.digits + divisor / 2) / divisor;
        }
    }
    if (units != 0 && std::signbit(value))
        *out++ = '-';

    char digits[kMaxNumberChars];
    char* const end = digits + sizeof digits;
    std::memset(end - zeros, '0', static_cast<std::size_t>(zeros));
    char* first = writeBackwards(end - zeros, units);
    const auto minimum = static_cast<std::ptrdiff_t>(decimals + integerDigits);
    if (end - first < minimum) {
        std::memset(end - minimum, '0', static_cast<std::size_t>(minimum - (end - first)));
        first = end - minimum;
    }
    const std::size_t integerLength = static_cast<std::size_t>(end - first - decimals);
    std::memcpy(out, first, integerLength);
    out += integerLength;
    if (decimals > 0) {
        *out++ = '.';
        std::memcpy(out, first + integerLength, static_cast<std::size_t>(decimals));
        out += decimals;
    }
    return out;
}

template <typename F>
char* appendGeneralAs(char* out, F value) {
    if (std::isnan(value))
        return appendText(out, "NaN");
    if (std::isinf(value))
        return appendText(out, value < 0 ? "-Inf" : "Inf");
    if (value == 0)
        return appendText(out, "0");
    if (value < 0)
        *out++ = '-';

    constexpr int precision = kSignificantDigits<F>;
    const Decimal decimal = toDecimal(std::fabs(static_cast<double>(value)), precision);
    std::uint64_t significand = decimal.digits;
    int count = precision;
    while (significand % 10 == 0) {
        significand /= 10;
        --count;
    }
    char digits[precision];
    writeBackwards(digits + count, significand);
    const int exponent = decimal.exponent;

    if (exponent < -4 || exponent >= precision) {
        *out++ = digits[0];
        if (count > 1) {
            *out++ = '.';
            std::memcpy(out, digits + 1, static_cast<std::size_t>(count - 1));
            out += count - 1;
        }
        *out++ = 'E';
        *out++ = exponent < 0 ? '-' : '+';
        const int magnitude = std::abs(exponent);
        if (magnitude < 10)
            *out++ = '0';
        char exponentDigits[4];
        char* const exponentEnd = exponentDigits + sizeof exponentDigits;
        const char* first = writeBackwards(exponentEnd, static_cast<std::uint64_t>(magnitude));
        std::memcpy(out, first, static_cast<std::size_t>(exponentEnd - first));
        return out + (exponentEnd - first);
    }
    if (exponent < 0) {
        out = appendText(out, "0.");
        std::memset(out, '0', static_cast<std::size_t>(-exponent - 1));
        out += -exponent - 1;
        std::memcpy(out, digits, static_cast<std::size_t>(count));
        return out + count;
    }
    const int integerLength = exponent + 1;
    const int shown = std::min(count, integerLength);
    std::memcpy(out, digits, static_cast<std::size_t>(shown));
    out += shown;
    std::memset(out, '0', static_cast<std::size_t>(integerLength - shown));
    out += integerLength - shown;
    if (count > integerLength) {
        *out++ = '.';
        std::memcpy(out, digits + integerLength, static_cast<std::size_t>(count - integerLength));
        out += count - integerLength;
    }
    return out;
}

} // namespace

char* appendFixed(char* out, double value, int decimals, int integerDigits) {
    return appendFixedAs(out, value, decimals, integerDigits);
}

char* appendFixed(char* out, float value, int decimals, int integerDigits) {
    return appendFixedAs(out, value, decimals, integerDigits);
}

char* appendGeneral(char* out, double value) {
    return appendGeneralAs(out, value);
}

char* appendGeneral(char* out, float value) {
    return appendGeneralAs(out, value);
}

} // namespace kx
