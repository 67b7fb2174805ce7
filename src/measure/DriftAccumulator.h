#pragma once

#include "device/PlateTypes.h"
#include "measure/CaptureRow.h"
#include "measure/CentreOfPressure.h"
#include "measure/SignalSet.h"

#include <QtGlobal>
#include <array>
#include <optional>

namespace kx {

// One averaged drift point: forces and volts averaged over every sample of the point, the
// centre of pressure over its loaded samples only (none when no sample was loaded).
struct DriftPoint {
    Float3 forces;
    Float3 volts;
    std::optional<CentreOfPressure> cop;

    ChartValues chartValues(DisplayType type) const;
    // volts, forces, and (average Fz, CoPx, CoPy), or a zero postural part without a CoP.
    CaptureRow captureRow() const;
};

// Averages the plate's samples into one point per samplesPerPoint samples, for drift
// recordings. Sums are doubles; each CoP is computed in single precision per sample first.
class DriftAccumulator {
public:
    // The sampling frequency rounded to the nearest integer, ties to even: one point a second.
    // Below 0.5 Hz this is 0, and then every sample makes a point.
    static qint32 samplesPerPointFor(float sampleFrequency);

    qint32 samplesPerPoint() const { return m_samplesPerPoint; }
    void setSamplesPerPoint(qint32 samples) { m_samplesPerPoint = samples; }

    // Samples counted since the last point.
    qint32 sampleCount() const { return m_samples; }

    // Adds one sample to the sums; returns the averaged point when this sample completes it,
    // and starts the next point from zero.
    std::optional<DriftPoint> add(const Float3& forces, const Float3& volts, float minFz);

    // Counts a sample without adding it to the sums: the signals display does this for every
    // sample it shows outside drift mode.
    void countSample() { ++m_samples; }

    // All sums and both counters back to 0.
    void reset();

private:
    qint32 m_samplesPerPoint = 0;
    qint32 m_samples = 0;
    qint32 m_loadedSamples = 0;
    std::array<double, 3> m_forceSums{};
    std::array<double, 3> m_voltSums{};
    double m_copXSum = 0;
    double m_copYSum = 0;
};

} // namespace kx
