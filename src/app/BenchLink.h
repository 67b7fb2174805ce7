#pragma once

namespace kx {

class frmMain;
class frmSimBench;

// Makes the training bench follow what the technician does in the program's windows: its
// calibration marks numbered from the profile's points, and the point the calibration dialog
// is at ringed on the plate being calibrated until the dialog closes.
void linkBenchToWindows(frmMain& window, frmSimBench& bench);

} // namespace kx
