#include "calibration/AcquisitionStatistics.h"

#include <algorithm>
#include <cmath>

namespace kx {

namespace {

template <std::size_t N>
bool allWithin(const std::array<double, N>& deviation, std::size_t channels, float limit) {
    // Compared as single precision, so that a deviation equal to the limit passes.
    return std::all_of(deviation.begin(), deviation.begin() + static_cast<long>(channels),
                       [limit](double d) { return static_cast<float>(d) <= limit; });
}

} // namespace

ZeroReading ZeroReading::fromZeroDone(const ChannelValues& average,
                                      const ChannelValues& deviation) {
    ZeroReading reading;
    for (qsizetype c = 0; c < 4; ++c) {
        reading.average[static_cast<std::size_t>(c)] = c < average.size() ? average[c] : 0.0;
        reading.stdDev[static_cast<std::size_t>(c)] = c < deviation.size() ? deviation[c] : 0.0;
    }
    return reading;
}

bool ZeroReading::acceptedBy(float maxStdDev) const {
    return allWithin(stdDev, 3, maxStdDev);
}

DataReading DataReading::fromSamples(qint32 count, const QList<Float3>& volts) {
    const qsizetype used = std::clamp<qsizetype>(count, 0, volts.size());
    const double n = static_cast<double>(used);
    DataReading reading;
    for (std::size_t c = 0; c < 3; ++c) {
        double sum = 0;
        double sumOfSquares = 0;
        for (qsizetype i = 0; i < used; ++i) {
            const double x = volts[i][c];
            sum += x;
            sumOfSquares += x * x;
        }
        reading.mean[c] = sum / n;
        reading.stdDev[c] = std::sqrt(std::abs((n * sumOfSquares - sum * sum) / ((n - 1) * n)));
    }
    return reading;
}

bool DataReading::acceptedBy(float maxStdDev) const {
    return allWithin(stdDev, 3, maxStdDev);
}

} // namespace kx
