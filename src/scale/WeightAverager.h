#pragma once

#include <QtGlobal>
#include <vector>

namespace kx {

// The scale's moving average of Fz over the last N samples, restarted whenever a sample
// strays from the running mean by more than the reset difference, so that a new load shows
// at once instead of crawling in over N samples.
//
// It behaves exactly like a window of N values that shifts by one place per sample (index 0
// newest) with a count n of valid values and running sums: once n reaches N, the value that
// falls out of the window is taken off the sums. A restart sets n to 1 and the sums to the
// new sample but keeps the window's contents, which are stale until they have shifted out; the
// sums only lose values again once n is back at N. The window is a ring, so a sample costs
// the same whatever N.
class WeightAverager {
public:
    // `length` is N (at least 1); `resetDifference` in newtons.
    WeightAverager(qint32 length, float resetDifference);

    void add(float fz);
    // Forgets the average (n = 0); the window's contents stay.
    void reset() { m_count = 0; }

    qint32 length() const { return static_cast<qint32>(m_window.size()); }
    qint32 count() const { return m_count; }
    double sum() const { return m_sum; }
    double sumOfSquares() const { return m_sumOfSquares; }
    // S / n, with n as a single. Defined once a sample has been added.
    double mean() const { return m_sum / static_cast<float>(m_count); }
    // The weight the scale shows, -S / n: a loaded plate reports negative Fz.
    double weight() const { return -m_sum / static_cast<float>(m_count); }

private:
    std::vector<float> m_window;
    std::size_t m_newest = 0;
    qint32 m_count = 0;
    double m_sum = 0.0;
    double m_sumOfSquares = 0.0;
    float m_resetDifference;
};

} // namespace kx
