#include "measure/VoltageAverager.h"

namespace kx {

void VoltageAverager::add(const Float3& volts) {
    for (std::size_t i = 0; i < m_sums.size(); ++i)
        m_sums[i] += volts[i];
    ++m_count;
}

std::array<double, 3> VoltageAverager::takeMeans() {
    std::array<double, 3> means{};
    for (std::size_t i = 0; i < m_sums.size(); ++i)
        means[i] = m_sums[i] / m_count;
    m_sums = {};
    m_count = 0;
    return means;
}

} // namespace kx
