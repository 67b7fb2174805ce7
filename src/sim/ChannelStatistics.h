#pragma once

#include "device/PlateTypes.h"

#include <array>

namespace kx {

// Running average, sample standard deviation and peak-to-peak range of the four converter
// channels of a zero acquisition.
class ChannelStatistics {
public:
    void add(const std::array<qint32, 4>& codes);
    qint32 count() const { return m_count; }

    ChannelValues average() const;
    ChannelValues deviation() const;
    ChannelValues range() const;

private:
    qint32 m_count = 0;
    // Sums are taken about the first sample, so offset-binary codes near 2^23 lose nothing.
    std::array<double, 4> m_origin{};
    std::array<double, 4> m_sum{};
    std::array<double, 4> m_sumOfSquares{};
    std::array<qint32, 4> m_min{};
    std::array<qint32, 4> m_max{};
};

} // namespace kx
