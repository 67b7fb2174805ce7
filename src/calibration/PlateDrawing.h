#pragma once

#include <QPointF>
#include <optional>
#include <vector>

namespace kx {

struct Calibration;

// The error arrows are drawn this many times their true length: 1 mm becomes 5 cm of plate.
inline constexpr double ErrorMagnification = 50.0;

// What the plate picture shows, in plate coordinates: metres, X to the right, Y up.
struct PlateDrawing {
    struct Mark {
        QPointF position;
        bool zero = false; // a zero was accepted here
        bool data = false; // a data acquisition was accepted here
        // Point minus the fitted centre of pressure, metres; only for points used by a fit.
        std::optional<QPointF> copError{};
        bool flagged = false; // the fit finds that the point does not fit
        friend bool operator==(const Mark&, const Mark&) = default;
    };

    // A mark's error arrow. It points the way the error's sign says, from where the fitted
    // matrix puts the load towards the mark, ErrorMagnification times the error long, and ends
    // on the mark's rim so that it never crosses the point's number. An arrow longer than
    // MaxArrowLength is shortened to it: its error, in metres, gives the true size.
    struct Arrow {
        QPointF tail;
        QPointF tip;
        double error = 0;
        bool shortened = false;
        friend bool operator==(const Arrow&, const Arrow&) = default;
    };
    // Plate metres: a 2 mm error. Longer arrows would reach the next point's mark (0.2 m away
    // on the default grid) or run off the top.
    static constexpr double MaxArrowLength = 0.1;

    double left = -0.4064;
    double right = 0.4064;
    double bottom = -0.2032;
    double top = 0.5588;
    double markRadius = 0.025;
    int current = 0; // ringed; none when out of range
    std::vector<Mark> marks;

    // The calibration's plate top, its points with their states and, while its fit is the fit
    // of its points, their centre-of-pressure errors and which do not fit; marks of
    // `markRadius` metres.
    static PlateDrawing of(const Calibration& calibration, double markRadius);

    // The arrow of mark `index`; none without an error, or for an error of zero.
    std::optional<Arrow> arrow(std::size_t index) const;

    friend bool operator==(const PlateDrawing&, const PlateDrawing&) = default;
};

} // namespace kx
