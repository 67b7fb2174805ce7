#include "scale/WeightAverager.h"

#include <algorithm>
#include <cmath>

namespace kx {

namespace {
// Exact: the product of two singles fits a double.
double squared(float x) {
    return static_cast<double>(x) * static_cast<double>(x);
}
} // namespace

WeightAverager::WeightAverager(qint32 length, float resetDifference)
    : m_window(static_cast<std::size_t>(std::max(length, 1)), 0.0f)
    , m_resetDifference(resetDifference) {}

void WeightAverager::add(float fz) {
    const qint32 n = length();
    // Shifting the window one place towards its end frees the slot of its last value, which
    // the new one takes.
    const std::size_t slot = (m_newest == 0 ? m_window.size() : m_newest) - 1;
    if (m_count >= n) {
        m_sum -= m_window[slot];
        m_sumOfSquares -= squared(m_window[slot]);
    }
    m_window[slot] = fz;
    m_newest = slot;
    m_sum += fz;
    m_sumOfSquares += squared(fz);
    if (m_count < n)
        ++m_count;
    if (std::abs(fz - mean()) > m_resetDifference) {
        m_count = 1;
        m_sum = fz;
        m_sumOfSquares = squared(fz);
    }
}

} // namespace kx
