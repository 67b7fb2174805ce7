#include "measure/DriftAccumulator.h"

#include "support/Rounding.h"

namespace kx {

ChartValues DriftPoint::chartValues(DisplayType type) const {
    return kx::chartValues(type, forces, volts, cop);
}

CaptureRow DriftPoint::captureRow() const {
    const Float3 postural = cop ? Float3{forces[0], cop->x, cop->y} : Float3{};
    return CaptureRow{volts, forces, postural};
}

qint32 DriftAccumulator::samplesPerPointFor(float sampleFrequency) {
    return roundHalfEven(sampleFrequency);
}

std::optional<DriftPoint> DriftAccumulator::add(const Float3& forces, const Float3& volts,
                                                float minFz) {
    for (std::size_t i = 0; i < 3; ++i) {
        m_forceSums[i] += forces[i];
        m_voltSums[i] += volts[i];
    }
    if (const auto cop = centreOfPressure(forces, minFz)) {
        m_copXSum += cop->x;
        m_copYSum += cop->y;
        ++m_loadedSamples;
    }
    ++m_samples;
    if (m_samples < m_samplesPerPoint)
        return std::nullopt;

    const auto average = [](const std::array<double, 3>& sums, double count) {
        return Float3{static_cast<float>(sums[0] / count), static_cast<float>(sums[1] / count),
                      static_cast<float>(sums[2] / count)};
    };
    DriftPoint point{average(m_forceSums, m_samples), average(m_voltSums, m_samples), std::nullopt};
    if (m_loadedSamples >= 1)
        point.cop = CentreOfPressure{static_cast<float>(m_copXSum / m_loadedSamples),
                                     static_cast<float>(m_copYSum / m_loadedSamples)};
    reset();
    return point;
}

void DriftAccumulator::reset() {
    m_samples = 0;
    m_loadedSamples = 0;
    m_forceSums = {};
    m_voltSums = {};
    m_copXSum = 0;
    m_copYSum = 0;
}

} // namespace kx
