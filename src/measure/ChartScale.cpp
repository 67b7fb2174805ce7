#include "measure/ChartScale.h"

#include <algorithm>
#include <cmath>

namespace kx {
namespace {

constexpr double kDivisions = 4;

// The smallest of 1, 2, 5 times a power of ten that is not below x (x > 0).
double niceStep(double x) {
    const double power = std::pow(10.0, std::floor(std::log10(x)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= x)
            return factor * power;
    }
    return 10 * power;
}

} // namespace

bool ChartScale::fit(double low, double high, double minSpan) {
    // A flat trace still needs some height: a millionth of its level, as singles resolve it.
    const double center = (low + high) / 2;
    const double smallest = std::max({minSpan, std::abs(center) * 1e-6, 1e-12});
    if (high - low < smallest) {
        low = center - smallest / 2;
        high = center + smallest / 2;
    }
    const double step = niceStep((high - low) / kDivisions);
    double bottom = std::floor(low / step) * step;
    double top = std::ceil(high / step) * step;
    // The products may round inwards by an ulp.
    if (bottom > low)
        bottom -= step;
    if (top < high)
        top += step;

    const double span = m_top - m_bottom;
    const bool fits = low >= m_bottom && high <= m_top;
    if (fits && span >= smallest && span <= 2 * (top - bottom))
        return false;
    if (bottom == m_bottom && top == m_top && step == m_step)
        return false;
    m_bottom = bottom;
    m_top = top;
    m_step = step;
    return true;
}

} // namespace kx
