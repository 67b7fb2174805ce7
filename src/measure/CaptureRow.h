#pragma once

#include "device/PlateTypes.h"

namespace kx {

// One captured row: the volts, forces and postural values of one sample (or of one averaged
// drift point), nine singles.
struct CaptureRow {
    Float3 volts;    // V1, V2, V3
    Float3 forces;   // Fz, Mx, My
    Float3 postural; // Fz, CoPx, CoPy of a loaded sample; all 0 when the plate was unloaded

    // A row whose three voltages are exactly 0 starts a new capture segment.
    bool isSeparator() const { return volts == Float3{}; }
    bool operator==(const CaptureRow&) const = default;
};

// The postural part of a capture row: (Fz, CoPx, CoPy) when loaded, else (0, 0, 0).
Float3 posturalOf(const Float3& forces, float minFz);

// The row the capture keeps of one sample: volts and forces as delivered, the postural part
// from the threshold minFz (see CentreOfPressure.h).
inline CaptureRow captureRowOf(const Float3& forces, const Float3& volts, float minFz) {
    return CaptureRow{volts, forces, posturalOf(forces, minFz)};
}

} // namespace kx
