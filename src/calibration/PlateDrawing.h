#pragma once

#include <QPointF>
#include <optional>
#include <vector>

namespace kx {

struct Calibration;

// What the plate picture shows, in plate coordinates: metres, X to the right, Y up.
struct PlateDrawing {
    struct Mark {
        QPointF position;
        bool zero = false; // a zero was accepted here
        bool data = false; // a data acquisition was accepted here
        // Point minus the fitted centre of pressure, metres; only for points used by a fit.
        std::optional<QPointF> copError{};
        friend bool operator==(const Mark&, const Mark&) = default;
    };
    double left = -0.4064;
    double right = 0.4064;
    double bottom = -0.2032;
    double top = 0.5588;
    double markRadius = 0.025;
    int current = 0; // ringed; none when out of range
    std::vector<Mark> marks;

    // The calibration's plate top, its points with their states and, after a fit, their
    // centre-of-pressure errors; marks of `markRadius` metres.
    static PlateDrawing of(const Calibration& calibration, double markRadius);

    friend bool operator==(const PlateDrawing&, const PlateDrawing&) = default;
};

} // namespace kx
