#pragma once

#include "calibration/AcquisitionStatistics.h"

#include <QDateTime>
#include <array>
#include <optional>

namespace kx {

struct Calibration;
struct CalPoint;

// The rules of the calibration points, applied to a calibration's record and current point.
// Per point: no zero -> zero done -> zero and data done. A new zero clears the data; leaving a
// point by a click while it has no data drops its zero. Only points with data enter the fit.
class PointTable {
public:
    explicit PointTable(Calibration& calibration)
        : m_calibration(calibration) {}

    // The next point, wrapping from the last to 0. Zeros and data stay as they are.
    void next();

    // The first point whose mark (a circle of `radius` m, rim included) holds (x, y).
    std::optional<int> hitTest(double x, double y, double radius) const;
    // A click at (x, y): a hit on another point makes it current, first dropping the zero of
    // the point left when it has no data. True when the current point changed.
    bool click(double x, double y, double radius);

    // A finished zero at the current point. Accepted: stored with date and temperature, the
    // point's data cleared. Rejected: the point keeps what it had.
    AcquisitionOutcome completeZero(const ZeroReading& reading, float maxStdDev,
                                    const QDateTime& now, float temperature);
    // A finished data acquisition at the current point; accepted data mark the calibration
    // changed.
    AcquisitionOutcome completeData(const DataReading& reading, float maxStdDev,
                                    const QDateTime& now, float temperature);

    // Fz = −W; Mx = Fz·y; My = −Fz·x for a weight of `load` N at (x, y) m.
    static std::array<double, 3> expectedLoad(double load, double x, double y);
    // The zero of channels 0..2 that the plate is to subtract: the averages rounded to whole
    // codes (half to even), saturated to 32 bits.
    static std::array<qint32, 3> deviceZero(const std::array<double, 4>& average);

private:
    Calibration& m_calibration;
};

} // namespace kx
