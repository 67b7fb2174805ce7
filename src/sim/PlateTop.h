#pragma once

namespace kx {

// The plate's top in plate coordinates, metres. The origin is not at its centre in Y.
struct PlateTop {
    double left = -0.4064;
    double right = 0.4064;
    double bottom = -0.2032;
    double top = 0.5588;

    double centreX() const { return (left + right) / 2; }
    double centreY() const { return (bottom + top) / 2; }
    double halfWidth() const { return (right - left) / 2; }
    double halfDepth() const { return (top - bottom) / 2; }
    bool contains(double x, double y) const {
        return x >= left && x <= right && y >= bottom && y <= top;
    }
};

} // namespace kx
