#pragma once

#include "sim/Matrix3.h"
#include "sim/SimImperfections.h"

namespace kx {

// The mechanical response of the three load cells behind the bridge channels: a bowed
// loading curve, unloading above loading (hysteresis) and a slow creep under a steady load.
// Works on normalised bridge volts, where a cell's full scale is 1 V. Keeps each cell's
// history, so it is fed the samples of one plate in time order; nothing allocates.
class LoadCells {
public:
    static constexpr double FullScale = 1.0; // normalised V, about 1 kN on a cell

    explicit LoadCells(const SimImperfections& imperfections);

    // What the cells read at `seconds` for the ideal (perfectly linear) signals `ideal`.
    Vector3 respond(const Vector3& ideal, double seconds);
    // The cells went through `ideal` at `seconds`, between samples: their hysteresis
    // remembers it, and they creep under it until the next call.
    void pass(const Vector3& ideal, double seconds);

private:
    // The cell's load as a share of full scale; updates its peak.
    double track(int cell, double ideal);
    // The creep under the load held since the last call, up to `seconds`; then `ideal` is held.
    void creepUntil(double seconds, const Vector3& ideal);

    double m_nonlinearity;
    double m_hysteresis;
    double m_creepGain;
    double m_creepTime;
    Vector3 m_peak{};  // the highest load since the cell was last unloaded, full scales
    Vector3 m_creep{}; // the creep state, lagging the load
    Vector3 m_held{};  // the load since the last call
    double m_lastSeconds = 0;
    double m_lastStep = -1;
    double m_creepFactor = 0;
};

} // namespace kx
