#pragma once

#include <QString>
#include <vector>

namespace kx {

class IniFile;

// Coordinates of a calibration point on the plate top, metres (X to the right, Y up).
struct PointXY {
    double x = 0;
    double y = 0;
    friend bool operator==(const PointXY&, const PointXY&) = default;
};

// The calibration settings: sections "Local", "Calibration" and "Linearity" of the shared
// profile and the per-user key "Calibration". load() writes every profile value back in one
// save, so a missing profile is created complete; a complete one is left as it is. A profile
// value that is not a number reads as its default, with one line on stderr.
//
// Point n (0-based) is stored under "Point <n+1>X" / "Point <n+1>Y": the number the
// technician sees in the error table.
struct CalibrationSettings {
    double Gravity = 9.796878; // m/s²
    double PressureCorrection = 5.210406;
    float Load = 0;               // N; default 25 kg × Gravity
    float MaxZeroStdDev = 1024;   // converter codes
    float MaxDataStdDev = 0.002f; // normalised volts
    float PlateXLeft = -0.406f;   // m; the defaults as "0.000" keeps them
    float PlateXRight = 0.406f;
    float PlateYTop = 0.559f;
    float PlateYBottom = -0.203f;
    std::vector<PointXY> Points;       // "Points" entries, single-precision values
    std::vector<float> LinearityLoads; // N, "Loads" entries
    float DisplayPointRadius = 0.025f; // m; also the radius of the hit test
    QString LastFilePath;              // folder of the last calibration file
    // Seconds across the signal charts, as last chosen with the wheel; 0 for none chosen.
    float ChartSpanSeconds = 0;

    // Counts outside these bounds read as the default (and are said so on stderr).
    static constexpr int MaxPoints = 1000;
    static constexpr int MaxLoads = 64;

    static CalibrationSettings load(const IniFile& profile);
    // The points as load() reads them, without writing anything back or saying anything:
    // for a view that only shows where they are.
    static std::vector<PointXY> profilePoints(const IniFile& profile);
    // The profile's "Local" and "Calibration" values ("0.000" or "0.000000"), in one save of
    // the profile, and the per-user values, including "Cal Point Radius".
    void save(const IniFile& profile) const;

    // The ten points of a fresh profile: a 3 x 3 grid and one more between the grid's centre
    // and its upper right corner, in the order a technician walks them.
    static std::vector<PointXY> defaultPoints();
    // 25, 50, 75, 100, 100, 75, 50, 25 kg at `gravity`, N, as written with "0.000".
    static std::vector<float> defaultLinearityLoads(double gravity);
};

} // namespace kx
