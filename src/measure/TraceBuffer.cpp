#include "measure/TraceBuffer.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kx {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kBlank = std::numeric_limits<float>::quiet_NaN();

} // namespace

TraceBuffer::TraceBuffer(qsizetype capacity)
    : m_points(static_cast<std::size_t>(std::max<qsizetype>(capacity, 1)), kBlank) {
    setColumns(1);
}

void TraceBuffer::setColumns(int columns) {
    const qint64 points = capacity();
    const qint64 width = std::max(columns, 1);
    m_pointsPerBucket = static_cast<int>((points + width - 1) / width);
    m_buckets.assign(static_cast<std::size_t>(points / m_pointsPerBucket),
                     Bucket{kInfinity, -kInfinity, kBlank, kBlank});
    // Refill the shown buckets from the ring: they start at or after the oldest kept point.
    const qint64 count = m_count;
    for (qint64 g = firstShownPoint(); g < count; ++g) {
        Bucket& bucket = m_buckets[ringIndex(g / m_pointsPerBucket)];
        const float value = point(g);
        if (g % m_pointsPerBucket == 0)
            bucket = Bucket{kInfinity, -kInfinity, value, value};
        merge(bucket, value);
    }
}

void TraceBuffer::add(float value) {
    const qint64 g = m_count++;
    m_points[static_cast<std::size_t>(g % capacity())] = value;
    Bucket& bucket = m_buckets[ringIndex(g / m_pointsPerBucket)];
    if (g % m_pointsPerBucket == 0)
        bucket = Bucket{kInfinity, -kInfinity, value, value};
    merge(bucket, value);
}

void TraceBuffer::merge(Bucket& bucket, float value) const {
    bucket.last = value;
    if (std::isnan(value))
        return;
    bucket.min = std::min(bucket.min, value);
    bucket.max = std::max(bucket.max, value);
}

void TraceBuffer::clear() {
    m_count = 0;
    std::fill(m_points.begin(), m_points.end(), kBlank);
}

qint64 TraceBuffer::bucketAtSlot(int slot, bool scrolling) const {
    const qint64 newest = newestBucket();
    const qint64 buckets = bucketCount();
    if (newest < 0)
        return -1;
    // Sweeping: the newest bucket at this slot; in the first sweep, slots ahead of the newest
    // bucket come out negative, that is empty.
    const qint64 index = scrolling ? newest - (buckets - 1) + slot
                                   : newest - ((newest - slot) % buckets + buckets) % buckets;
    return std::max<qint64>(index, -1);
}

float TraceBuffer::point(qint64 index) const {
    if (index < 0 || index >= m_count || index < m_count - capacity())
        return kBlank;
    return m_points[static_cast<std::size_t>(index % capacity())];
}

qint64 TraceBuffer::firstShownPoint() const {
    const qint64 newest = newestBucket();
    return std::max<qint64>(0, (newest - bucketCount() + 1) * m_pointsPerBucket);
}

std::optional<TraceBuffer::Statistics> TraceBuffer::statistics() const {
    double sum = 0;
    qint64 n = 0;
    for (qint64 g = firstShownPoint(); g < m_count; ++g) {
        const float value = point(g);
        if (!std::isnan(value)) {
            sum += value;
            ++n;
        }
    }
    if (n == 0)
        return std::nullopt;
    const double mean = sum / static_cast<double>(n);
    double squares = 0;
    for (qint64 g = firstShownPoint(); g < m_count; ++g) {
        const float value = point(g);
        if (!std::isnan(value))
            squares += (value - mean) * (value - mean);
    }
    return Statistics{static_cast<float>(mean),
                      static_cast<float>(std::sqrt(squares / static_cast<double>(n)))};
}

std::optional<std::pair<float, float>> TraceBuffer::range() const {
    float low = kInfinity;
    float high = -kInfinity;
    const qint64 newest = newestBucket();
    for (qint64 b = std::max<qint64>(0, newest - bucketCount() + 1); b <= newest; ++b) {
        low = std::min(low, bucket(b).min);
        high = std::max(high, bucket(b).max);
    }
    if (low > high)
        return std::nullopt;
    return std::pair(low, high);
}

} // namespace kx
