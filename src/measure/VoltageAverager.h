#pragma once

#include "device/PlateTypes.h"

#include <array>

namespace kx {

// The channel meter's accumulator: the bridge voltages of the samples since the last
// read-out, summed per channel in double precision.
class VoltageAverager {
public:
    void add(const Float3& volts);
    int count() const { return m_count; }
    // The mean of each channel since the last call, and a fresh start. Call only after a
    // sample was added.
    std::array<double, 3> takeMeans();

private:
    std::array<double, 3> m_sums{};
    int m_count = 0;
};

} // namespace kx
