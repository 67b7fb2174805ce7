#include "sim/ChannelStatistics.h"

#include <algorithm>
#include <cmath>

namespace kx {

void ChannelStatistics::add(const std::array<qint32, 4>& codes) {
    for (int c = 0; c < 4; ++c) {
        if (m_count == 0) {
            m_origin[c] = codes[c];
            m_min[c] = m_max[c] = codes[c];
        }
        const double d = codes[c] - m_origin[c];
        m_sum[c] += d;
        m_sumOfSquares[c] += d * d;
        m_min[c] = std::min(m_min[c], codes[c]);
        m_max[c] = std::max(m_max[c], codes[c]);
    }
    ++m_count;
}

ChannelValues ChannelStatistics::average() const {
    ChannelValues values;
    for (int c = 0; c < 4; ++c)
        values.append(m_count > 0 ? m_origin[c] + m_sum[c] / m_count : 0.0);
    return values;
}

ChannelValues ChannelStatistics::deviation() const {
    ChannelValues values;
    for (int c = 0; c < 4; ++c) {
        if (m_count < 2) {
            values.append(0.0);
            continue;
        }
        const double n = m_count;
        const double variance = (m_sumOfSquares[c] - m_sum[c] * m_sum[c] / n) / (n - 1);
        values.append(std::sqrt(std::max(variance, 0.0)));
    }
    return values;
}

ChannelValues ChannelStatistics::range() const {
    ChannelValues values;
    for (int c = 0; c < 4; ++c)
        values.append(m_count > 0 ? double(m_max[c]) - m_min[c] : 0.0);
    return values;
}

} // namespace kx
