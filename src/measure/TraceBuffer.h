#pragma once

#include <QtGlobal>
#include <optional>
#include <vector>

namespace kx {

// The points of one strip-chart trace and their summary per screen column.
//
// Points go into a ring of fixed capacity (allocated once: adding a point never allocates).
// Point g (counted from 0 since the last clear) belongs to bucket g / pointsPerBucket(); the
// screen shows the last bucketCount() buckets, the newest of them still filling. Each bucket
// keeps the minimum and maximum of its points and its first and last point, updated as points
// arrive, so a frame costs one step per bucket however many points it shows, and no peak is
// lost between pixels. pointsPerBucket() is chosen so that the buckets fit into the columns
// given (at most one bucket per column) while showing as close to capacity points as whole
// buckets allow. A blank point is NaN: it has no value, and the trace has a gap there.
class TraceBuffer {
public:
    struct Bucket {
        float min;   // +inf when the bucket holds only blanks
        float max;   // -inf when the bucket holds only blanks
        float first; // first and last point, NaN when blank
        float last;
        bool hasValue() const { return min <= max; }
    };
    struct Statistics {
        float mean;
        float standardDeviation; // of the points themselves (divided by n, not n - 1)
    };

    explicit TraceBuffer(qsizetype capacity);

    qsizetype capacity() const { return static_cast<qsizetype>(m_points.size()); }
    // Fits the buckets to a plot this many pixel columns wide (at least 1), rebuilding them
    // from the kept points.
    void setColumns(int columns);

    void add(float value);
    void clear();

    qint64 pointCount() const { return m_count; }
    int pointsPerBucket() const { return m_pointsPerBucket; }
    int bucketCount() const { return static_cast<int>(m_buckets.size()); }

    // The newest bucket, or -1 while there are no points.
    qint64 newestBucket() const { return m_count == 0 ? -1 : (m_count - 1) / m_pointsPerBucket; }
    // The bucket shown at screen slot 0 .. bucketCount()-1, counted from the edge where the
    // trace starts, or -1 for an empty slot. Scrolling keeps the newest bucket at the last
    // slot; sweeping writes bucket b at slot b mod bucketCount().
    qint64 bucketAtSlot(int slot, bool scrolling) const;
    // Valid for a bucket that bucketAtSlot() returned.
    const Bucket& bucket(qint64 index) const { return m_buckets[ringIndex(index)]; }

    // Point g, or NaN when it is blank, not added yet or no longer kept.
    float point(qint64 index) const;

    // Of the points on screen (the buckets shown), blanks left out; nothing when all blank.
    std::optional<Statistics> statistics() const;
    // Smallest and largest value on screen; nothing when all blank.
    std::optional<std::pair<float, float>> range() const;

private:
    std::size_t ringIndex(qint64 bucketIndex) const {
        return static_cast<std::size_t>(bucketIndex % bucketCount());
    }
    qint64 firstShownPoint() const;
    void merge(Bucket& bucket, float value) const;

    std::vector<float> m_points;
    std::vector<Bucket> m_buckets;
    int m_pointsPerBucket = 1;
    qint64 m_count = 0;
};

} // namespace kx
