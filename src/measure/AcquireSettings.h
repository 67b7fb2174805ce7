#pragma once

#include "measure/SignalSet.h"

#include <QString>
#include <QtGlobal>

namespace kx {

// The signals display's settings under the "Acquisition" key, read when the dialog opens and
// written back when it closes. Out-of-range values fall back to their defaults on reading.
struct AcquireSettings {
    qint32 refreshTextHz = 5;
    qint32 refreshGraphHz = 60;
    bool grid = true;
    bool scrolling = false;
    bool leftToRight = true;
    DisplayType displayType = DisplayType::Voltages;
    qint32 minFzMilliNewtons = -2500;
    float minAutoscaleRes = 0.001f;
    qint32 adResolution = 20; // bits
    QString lastFilePath;     // folder of the last saved capture
    // Seconds across the charts as last chosen with the wheel, while displaying and in drift
    // mode; 0 leaves the charts at their own width in points.
    float chartSpanSeconds = 0;
    float driftChartSpanSeconds = 0;

    static AcquireSettings load();
    void save() const;
    // Writes "Last File Path" alone, for a capture saved without the dialog.
    static void saveLastFilePath(const QString& folder);

    // The loaded-plate threshold in newtons: a sample is loaded while Fz is below it.
    float minFz() const { return static_cast<float>(minFzMilliNewtons) / 1000.0f; }
    qint32 textPeriodMs() const;
    qint32 graphPeriodMs() const;
};

} // namespace kx
