#include "scale/FormatForce.h"

#include "support/NumberFormat.h"

#include <algorithm>
#include <limits>

namespace kx {

namespace {

constexpr double NewtonsPerPound = 4.4482216152605;
constexpr double StandardGravity = 9.80665;
constexpr float OuncesPerPound = 16.0f;

// Ounces are kept in single precision, as the plate's forces are.
float ounces(double newtons) {
    return static_cast<float>(newtons / NewtonsPerPound * OuncesPerPound);
}

// Whole pounds of a total in ounces, toward zero; beyond the 16-bit range they saturate.
qint16 wholePounds(float totalOunces) {
    constexpr float lowest = std::numeric_limits<qint16>::min();
    constexpr float highest = std::numeric_limits<qint16>::max();
    return static_cast<qint16>(std::clamp(totalOunces / OuncesPerPound, lowest, highest));
}

int unitDecimals(qint16 unit, qint16 decimals) {
    switch (unit) {
    case forceunit::Ounces:
        return decimals - 1;
    case forceunit::Grams:
        return decimals - 2;
    case forceunit::Kilograms:
        return decimals + 1;
    default:
        return decimals;
    }
}

QString pattern(int decimals) {
    return decimals > 0 ? QStringLiteral("0.") + QString(decimals, u'0') : QStringLiteral("0");
}

QString unitSuffix(qint16 unit) {
    switch (unit) {
    case forceunit::Ounces:
        return QStringLiteral(" ozf");
    case forceunit::Newtons:
        return QStringLiteral(" N");
    case forceunit::Grams:
        return QStringLiteral(" gf");
    default:
        return QStringLiteral(" kgf");
    }
}

} // namespace

QString FormatForce(double value, qint16 unit, qint16 decimals) {
    if (unit < forceunit::PoundsOunces || unit > forceunit::Kilograms)
        return {};
    if (value == 0.0) {
        return unit == forceunit::PoundsOunces ? QStringLiteral("0 lbf 0 ozf")
                                               : u'0' + unitSuffix(unit);
    }
    const NumberFormat number(pattern(unitDecimals(unit, decimals)));
    switch (unit) {
    case forceunit::PoundsOunces: {
        const float total = ounces(value);
        const qint16 pounds = wholePounds(total);
        const float rest = total - OuncesPerPound * static_cast<float>(pounds);
        return formatNumber(pounds, u"0") + QStringLiteral(" lbf ") + number.format(rest) +
               QStringLiteral(" ozf");
    }
    case forceunit::Ounces:
        return number.format(ounces(value)) + unitSuffix(unit);
    case forceunit::Grams:
        return number.format(value * 1000.0 / StandardGravity) + unitSuffix(unit);
    case forceunit::Kilograms:
        return number.format(value / StandardGravity) + unitSuffix(unit);
    default:
        return number.format(value) + unitSuffix(unit);
    }
}

} // namespace kx
