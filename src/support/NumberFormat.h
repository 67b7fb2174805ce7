#pragma once

#include <QString>
#include <QStringView>
#include <type_traits>

namespace kx {

// A display pattern, parsed once and applied to many values.
//
// A section is optional literal text, the digit placeholders -- "0"s, then optionally "." and
// more "0"s -- and optional literal text: "0.000", "000.000", "0.00 Hz", "0h ", " 0 s ". The
// "0"s before the point give the least number of integer digits (padded with zeros), those
// after it the exact number of decimals. A second section after ";" formats negative values
// without their sign ("+0.000000;-0.000000"); with one section a "-" is put right before the
// digits. A value that rounds to zero always takes the first section and never shows a minus.
// An empty pattern gives the general number form (appendGeneral).
//
// The decimal sign is "." on screen as in files, whatever the locale: the text boxes read
// their numbers back with "." and files must not depend on the user's locale.
//
// Rounding is half away from zero on the value's decimal form (see NumberText.h); a float is
// taken with single precision, any other arithmetic type as a double.
class NumberFormat {
public:
    explicit NumberFormat(QStringView pattern);

    template <typename T>
    QString format(T value) const {
        static_assert(std::is_arithmetic_v<T>);
        if constexpr (std::is_same_v<T, float>)
            return formatReal(value);
        else
            return formatReal(static_cast<double>(value));
    }

private:
    struct Section {
        QString prefix;
        QString suffix;
        int integerDigits = 0;
        int decimals = 0;
        bool point = false;
    };
    static Section parseSection(QStringView text);
    template <typename F>
    QString formatAs(F value) const;
    QString formatReal(double value) const;
    QString formatReal(float value) const;

    bool m_general = false;
    Section m_positive;
    Section m_negative;
    bool m_hasNegative = false;
};

// One value with a pattern given on the spot: formatNumber(volts, u"0.000").
template <typename T>
QString formatNumber(T value, QStringView pattern) {
    return NumberFormat(pattern).format(value);
}

// The general number form: formatGeneral(0.25f) is "0.25", formatGeneral(1000) is "1000".
template <typename T>
QString formatGeneral(T value) {
    return NumberFormat({}).format(value);
}

} // namespace kx
