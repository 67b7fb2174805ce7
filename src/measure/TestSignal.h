#pragma once

namespace kx {

// The chart self-test's fixed signal: value = t² × sin(2π × 30 × t) for t = 0, 0.001, 0.002,
// ... while t ≤ 5, with t accumulated by repeated addition of 0.001 (so the last point falls
// where the rounding of that sum puts it).
class TestSignal {
public:
    bool atEnd() const { return m_t > kEnd; }
    // The value at the present t, then steps t on. Only while !atEnd().
    float next();

private:
    static constexpr double kStep = 0.001;
    static constexpr double kEnd = 5.0;
    double m_t = 0;
};

} // namespace kx
