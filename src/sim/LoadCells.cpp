#include "sim/LoadCells.h"

#include <algorithm>
#include <cmath>

namespace kx {

namespace {

// Below this share of full scale a cell counts as unloaded and forgets its last peak.
constexpr double UnloadedBelow = 1e-4;
// Creep runs with a time constant of a third of its stated time, so most of it is done then.
constexpr double CreepTimeConstants = 3.0;

} // namespace

LoadCells::LoadCells(const SimImperfections& imperfections)
    : m_nonlinearity(imperfections.nonlinearity)
    , m_hysteresis(imperfections.hysteresis)
    // Scaled so that the stated creep is reached after creepTime.
    , m_creepGain(imperfections.creep / (1.0 - std::exp(-CreepTimeConstants)))
    , m_creepTime(std::max(imperfections.creepTime, 1.0) / CreepTimeConstants) {}

double LoadCells::track(int cell, double ideal) {
    const double u = std::min(std::abs(ideal) / FullScale, 1.0);
    double& peak = m_peak[cell];
    peak = u < UnloadedBelow ? u : std::max(peak, u);
    return u;
}

void LoadCells::pass(const Vector3& ideal, double seconds) {
    creepUntil(seconds, ideal);
    for (int c = 0; c < 3; ++c)
        track(c, ideal[c]);
}

void LoadCells::creepUntil(double seconds, const Vector3& ideal) {
    // The factor is recomputed only when the interval changes: between samples it does not.
    const double step = std::max(seconds - m_lastSeconds, 0.0);
    if (step != m_lastStep) {
        m_lastStep = step;
        m_creepFactor = 1.0 - std::exp(-step / m_creepTime);
    }
    for (int c = 0; c < 3; ++c)
        m_creep[c] += (m_held[c] - m_creep[c]) * m_creepFactor;
    m_lastSeconds = std::max(seconds, m_lastSeconds);
    m_held = ideal;
}

Vector3 LoadCells::respond(const Vector3& ideal, double seconds) {
    creepUntil(seconds, ideal);
    Vector3 out{};
    for (int c = 0; c < 3; ++c) {
        const double v = ideal[c];
        const double u = track(c, v);
        // A parabolic bow through zero and full scale, largest at half scale.
        const double bow = 4.0 * m_nonlinearity * u * (1.0 - u);
        // Loading follows the virgin curve; coming down from a peak reads high, most at half
        // the peak, the gap growing with the peak.
        const double peak = m_peak[c];
        const double gap = peak > 0 ? 4.0 * m_hysteresis * u * (peak - u) / peak : 0.0;
        out[c] = v + std::copysign((bow + gap) * FullScale, v) + m_creepGain * m_creep[c];
    }
    return out;
}

} // namespace kx
