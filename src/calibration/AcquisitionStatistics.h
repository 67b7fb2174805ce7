#pragma once

#include "device/PlateTypes.h"

#include <QList>
#include <array>

namespace kx {

enum class AcquisitionOutcome { Accepted, Rejected };

// A zero acquisition as ZeroDone reports it: per channel the average and standard deviation in
// converter codes. Channels the event does not carry are 0.
struct ZeroReading {
    std::array<double, 4> average{};
    std::array<double, 4> stdDev{};

    static ZeroReading fromZeroDone(const ChannelValues& average, const ChannelValues& deviation);
    // Every channel 0..2's deviation, taken as single precision, at most the limit.
    bool acceptedBy(float maxStdDev) const;
};

// A data acquisition from the samples TestDone brings: per channel mean = Σx / n and
// deviation = sqrt(|(n·Σx² − (Σx)²) / ((n − 1)·n)|), sums in double. n is the event's count,
// bounded by the samples actually delivered; one sample (or none) gives a NaN deviation,
// which no limit accepts.
struct DataReading {
    std::array<double, 3> mean{};
    std::array<double, 3> stdDev{};

    static DataReading fromSamples(qint32 count, const QList<Float3>& volts);
    bool acceptedBy(float maxStdDev) const;
};

} // namespace kx
