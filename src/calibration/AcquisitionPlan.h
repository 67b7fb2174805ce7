#pragma once

#include <QString>
#include <QtGlobal>
#include <optional>

namespace kx {

// The number of samples of an acquisition from the duration box and the plate's sampling
// frequency.
struct AcquisitionPlan {
    QString durationText; // what the box is to show: the text given, or "1" when unusable
    double duration = 1;  // s
    qint32 samples = 1;   // duration × frequency, rounded half to even, at least 1

    // A duration that is not a positive number reads as 1 s.
    static AcquisitionPlan from(const QString& durationText, float sampleFrequency);
};

// The excitation the box must be set to so that new data match the data already collected,
// when that differs from the box's value as shown ("0.000"); nothing otherwise.
std::optional<float> compatibleExcitation(std::optional<float> dataExcitation, float boxExcitation);

} // namespace kx
