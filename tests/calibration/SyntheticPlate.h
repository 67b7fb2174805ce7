#pragma once

#include "calibration/CalibrationRecord.h"
#include "calibration/PointTable.h"

#include <Eigen/Dense>
#include <random>
#include <vector>

namespace kx::test {

// A plate on three cells, made up independently of the code under test: cell c at (xc, yc)
// with gain g V/N gives V = g·(share of the load), and statics give Fz = −ΣV/g,
// Mx = −ΣV·yc/g, My = ΣV·xc/g. Every point of the default grid lies inside the cells'
// triangle, so every signal is positive.
struct SyntheticPlate {
    double load = 245.0;
    double gain = 1e-3;
    std::array<std::array<double, 2>, 3> cells{{{-0.8, -0.4}, {0.8, -0.4}, {0.0, 1.2}}};

    Eigen::Matrix3d trueMatrix() const {
        Eigen::Matrix3d m;
        for (int c = 0; c < 3; ++c) {
            m(0, c) = -1.0 / gain;
            m(1, c) = -cells[c][1] / gain;
            m(2, c) = cells[c][0] / gain;
        }
        return m;
    }

    // The point's record with data as the plate reads a weight at (x + dx, y + dy).
    CalPoint point(double x, double y, double dx = 0, double dy = 0) const {
        CalPoint p;
        p.x = x;
        p.y = y;
        p.expectedLoad = PointTable::expectedLoad(load, x, y);
        const Eigen::Vector3d actual(-load, -load * (y + dy), load * (x + dx));
        const Eigen::Vector3d volts = trueMatrix().inverse() * actual;
        p.dataMean = {volts(0), volts(1), volts(2)};
        p.zeroDone = p.dataDone = true;
        return p;
    }

    std::vector<CalPoint> grid(const std::vector<std::pair<double, double>>& xy) const {
        std::vector<CalPoint> points;
        for (const auto& [x, y] : xy)
            points.push_back(point(x, y));
        return points;
    }
};

inline const std::vector<std::pair<double, double>> TenPoints{
    {-0.30, 0.46}, {0.00, 0.46},   {0.30, 0.46},  {0.30, 0.18},  {0.00, 0.18},
    {-0.30, 0.18}, {-0.30, -0.10}, {0.00, -0.10}, {0.30, -0.10}, {0.15, 0.32}};

} // namespace kx::test
