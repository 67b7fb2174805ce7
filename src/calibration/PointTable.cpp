#include "calibration/PointTable.h"

#include "calibration/Calibration.h"
#include "support/Rounding.h"

#include <cmath>

namespace kx {

void PointTable::next() {
    const int count = static_cast<int>(m_calibration.record.points.size());
    const int current = m_calibration.currentPoint;
    m_calibration.currentPoint = current + 1 >= count ? 0 : current + 1;
}

std::optional<int> PointTable::hitTest(double x, double y, double radius) const {
    const auto& points = m_calibration.record.points;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const double d = std::sqrt((x - points[i].x) * (x - points[i].x) +
                                   (y - points[i].y) * (y - points[i].y));
        if (d <= radius)
            return static_cast<int>(i);
    }
    return std::nullopt;
}

bool PointTable::click(double x, double y, double radius) {
    const std::optional<int> hit = hitTest(x, y, radius);
    if (!hit || *hit == m_calibration.currentPoint)
        return false;
    auto& points = m_calibration.record.points;
    const auto current = static_cast<std::size_t>(m_calibration.currentPoint);
    // A zero taken at a point then left without data is not to be trusted later.
    if (current < points.size() && !points[current].dataDone)
        points[current].zeroDone = false;
    m_calibration.currentPoint = *hit;
    return true;
}

AcquisitionOutcome PointTable::completeZero(const ZeroReading& reading, float maxStdDev,
                                            const QDateTime& now, float temperature) {
    const auto current = static_cast<std::size_t>(m_calibration.currentPoint);
    if (!reading.acceptedBy(maxStdDev) || current >= m_calibration.record.points.size())
        return AcquisitionOutcome::Rejected;
    CalPoint& point = m_calibration.record.points[current];
    point.zeroAverage = reading.average;
    point.zeroStdDev = reading.stdDev;
    point.zeroDone = true;
    point.zeroDate = OleDate::fromDateTime(now);
    point.zeroTemperature = temperature;
    // Data taken against the old zero no longer match the plate.
    point.dataDone = false;
    return AcquisitionOutcome::Accepted;
}

AcquisitionOutcome PointTable::completeData(const DataReading& reading, float maxStdDev,
                                            const QDateTime& now, float temperature) {
    const auto current = static_cast<std::size_t>(m_calibration.currentPoint);
    if (!reading.acceptedBy(maxStdDev) || current >= m_calibration.record.points.size())
        return AcquisitionOutcome::Rejected;
    CalPoint& point = m_calibration.record.points[current];
    point.dataMean = reading.mean;
    point.dataStdDev = reading.stdDev;
    point.dataDone = true;
    point.dataDate = OleDate::fromDateTime(now);
    point.dataTemperature = temperature;
    m_calibration.unsavedChanges = true;
    return AcquisitionOutcome::Accepted;
}

std::array<double, 3> PointTable::expectedLoad(double load, double x, double y) {
    const double fz = -load;
    return {fz, fz * y, -fz * x};
}

std::array<qint32, 3> PointTable::deviceZero(const std::array<double, 4>& average) {
    return {roundHalfEven(average[0]), roundHalfEven(average[1]), roundHalfEven(average[2])};
}

} // namespace kx
