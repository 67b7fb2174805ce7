#include "support/NumberText.h"

#include <algorithm>
#include <array>
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

// The eight decimal digits of n (below 10^8) as ASCII, the first in the lowest byte. Splits
// n into halves of four digits, each half into pairs and each pair into digits, in all lanes
// of the word at once: each division is a multiplication by a reciprocal that is exact for
// the lane's range and carries nothing into the next lane.
std::uint64_t eightDigits(std::uint32_t n) {
    static_assert(std::endian::native == std::endian::little);
    std::uint64_t x = (n / 10000) | (static_cast<std::uint64_t>(n % 10000) << 32);
    const std::uint64_t hundreds = ((x * 10486) >> 20) & 0x0000'007F'0000'007Full;
    x = ((x - hundreds * 100) << 16) | hundreds;
    const std::uint64_t tens = ((x * 103) >> 10) & 0x000F'000F'000F'000Full;
    x = ((x - tens * 10) << 8) | tens;
    return x + 0x3030'3030'3030'3030ull;
}

// The sixteen decimal digits of n (below 10^16) with their leading zeros, in two words.
struct SixteenDigits {
    std::uint64_t high;
    std::uint64_t low;
};

SixteenDigits sixteenDigits(std::uint64_t n) {
    constexpr std::uint64_t eightZeros = 0x3030'3030'3030'3030ull;
    if (n < 100'000'000)
        return {eightZeros, eightDigits(static_cast<std::uint32_t>(n))};
    return {eightDigits(static_cast<std::uint32_t>(n / 100'000'000)),
            eightDigits(static_cast<std::uint32_t>(n % 100'000'000))};
}

// The eight of the sixteen digits that begin at `first` (0 to 15), zeros past the last. Taken
// from registers: reading them back from memory at an odd offset would stall the store.
std::uint64_t eightFrom(const SixteenDigits& digits, int first) {
    if (first >= 8)
        return digits.low >> (8 * (first - 8));
    return (digits.high >> (8 * first)) | ((digits.low << 1) << (63 - 8 * first));
}

void store(char* out, std::uint64_t word) {
    std::memcpy(out, &word, sizeof word);
}

// Writes number x 10^-decimals with at least integerDigits before the point, without sign.
// The common case writes whole words: what lands beyond the end is scratch inside the
// caller's room of kMaxNumberChars.
char* writeFixed(char* out, std::uint64_t number, int decimals, int integerDigits) {
    const int integerLength = std::max(digitCount(number) - decimals, integerDigits);
    if (integerLength + decimals == 0)
        return out; // a zero with no digits asked for: no word of digits starts anywhere
    if (number < 10'000'000'000'000'000ull && integerLength + decimals <= 16) {
        const SixteenDigits digits = sixteenDigits(number);
        const int first = 16 - decimals - integerLength;
        store(out, eightFrom(digits, first));
        if (integerLength > 8)
            store(out + 8, eightFrom(digits, first + 8));
        out += integerLength;
        if (decimals == 0)
            return out;
        *out++ = '.';
        store(out, eightFrom(digits, 16 - decimals));
        if (decimals > 8)
            store(out + 8, eightFrom(digits, 24 - decimals));
        return out + decimals;
    }
    char* const end = out + integerLength + (decimals > 0 ? decimals + 1 : 0);
    char* first = end;
    const std::uint64_t integerPart = writeLowDigits(first, number, decimals);
    if (decimals > 0)
        *--first = '.';
    writeLowDigits(first, integerPart, integerLength);
    return end;
}

// Adds the sign and the digits once the rounded magnitude is known.
template <typename F>
char* writeSignedFixed(char* out, F value, std::uint64_t number, int decimals, int integerDigits) {
    if (number != 0 && std::signbit(value))
        *out++ = '-';
    return writeFixed(out, number, decimals, integerDigits);
}

// n / 10^t for n below 2^25 and t from 1 to 7, as a multiplication and a shift: the scaled
// reciprocal's error stays below the smallest distance of n / 10^t from the next integer.
std::uint64_t divideByPowerOfTen(std::uint64_t n, int t) {
    static constexpr auto shift = [](int power) { return 30 + 4 * power; };
    static constexpr auto reciprocals = [] {
        std::array<std::uint64_t, 8> r{};
        for (int power = 1; power < 8; ++power)
            r[static_cast<std::size_t>(power)] =
                ((1ull << shift(power)) + kPow10Int[power] - 1) / kPow10Int[power];
        return r;
    }();
    return (n * reciprocals[static_cast<std::size_t>(t)]) >> shift(t);
}

// The common case of a single with at most 9 decimals, 10^-6 <= |value| < 10^6 or so. The
// single's 24 bits times 5^12 at most fit a double, so y = |value| x 10^(6 - e) is exact, and
// its 7 significant digits come from rounding y once; the decimals asked for are then taken
// from those digits. Returns nullptr outside that range, for the general path.
char* appendFixedFast(char* out, float value, int decimals, int integerDigits) {
    const double x = std::fabs(static_cast<double>(value));
    if (x == 0)
        return writeFixed(out, 0, decimals, integerDigits);
    // floor(log10 x) is this or one more.
    const int binaryExponent =
        static_cast<int>((std::bit_cast<std::uint64_t>(x) >> 52) & 0x7FF) - 1023;
    int exponent = (binaryExponent * 1233) >> 12;
    if (exponent < -6 || exponent > 5)
        return nullptr;
    double y = x * kPow10Exact[6 - exponent];
    if (y >= 1e7) {
        ++exponent;
        y = x * kPow10Exact[6 - exponent];
    }
    if (y < 1e6)
        return nullptr;
    auto digits = static_cast<std::uint64_t>(y + 0.5); // y + 0.5 is exact: halves go up
    if (digits == 10'000'000) {
        digits = 1'000'000;
        ++exponent;
    }
    // The 7 digits stand for digits x 10^(exponent - 6).
    const int shift = exponent - 6 + decimals;
    std::uint64_t number = 0;
    if (shift >= 0)
        number = digits * kPow10Int[shift];
    else if (shift > -8)
        number = divideByPowerOfTen(digits + kPow10Int[-shift] / 2, -shift);
    return writeSignedFixed(out, value, number, decimals, integerDigits);
}

// The common case of a double: at most 9 decimals and below 10^18 once scaled. Works on
// y = |value| x 10^decimals held exactly as hi + lo, with the 15 significant digits falling
// on a grid of 10^(k - 15) in y, k being the integer digits of y. Returns nullptr when a tie
// between the two roundings is too close to call, for the general path.
char* appendFixedFast(char* out, double value, int decimals, int integerDigits) {
    constexpr int precision = kSignificantDigits<double>;
    static constexpr auto inverseGrid = [] {
        std::array<double, precision + 1> grid{};
        for (int i = 0; i <= precision; ++i)
            grid[static_cast<std::size_t>(i)] = 1.0 / kPow10Exact[i];
        return grid;
    }();
    const double x = std::fabs(value);
    const ExactProduct y = exactProduct(x, kPow10Exact[decimals]);
    if (!(y.hi < 1e18))
        return nullptr;
    auto whole = static_cast<std::uint64_t>(static_cast<std::int64_t>(y.hi));
    if (static_cast<double>(whole) == y.hi && y.lo < 0.0)
        --whole; // y lies just below the integer hi
    const int k = digitCount(whole);
    std::uint64_t number = 0;
    if (k >= precision) {
        // Whole digits only: round x itself to its significant digits.
        const int power = precision - k + decimals;
        if (power < 0)
            return nullptr;
        const ExactProduct scaled = power == decimals ? y : exactProduct(x, kPow10Exact[power]);
        number = roundHalfAway(scaled.hi, scaled.lo) * kPow10Int[k - precision];
    } else {
        // Rounding to the significant digits first moves the halfway point of the last
        // decimal down by half a grid step; lo is below a ninth of the grid step here.
        const double grid = inverseGrid[static_cast<std::size_t>(precision - k)];
        const double fraction = y.hi - static_cast<double>(whole); // exact
        number = whole;
        if (fraction > 0.5 || (fraction == 0.5 && y.lo >= 0.0))
            ++number;
        else if (fraction >= 0.5 - grid)
            return nullptr;
    }
    return writeSignedFixed(out, value, number, decimals, integerDigits);
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
