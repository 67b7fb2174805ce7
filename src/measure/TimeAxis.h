#pragma once

#include <QString>
#include <QtGlobal>
#include <vector>

namespace kx {

// The time across a strip chart: which span the mouse wheel may choose, how many points that
// span holds at a given point rate, and where the labelled ticks go.
//
// Spans step through a fixed ladder (0.5 s to 4 h); a span is allowed at a point rate when it
// holds kMinPoints to kMaxPoints points, so a 1000 Hz plate reaches from 0.5 s to 100 s and
// drift points (one a second) from 1 minute to 4 hours. Spans of 5 minutes and more are
// labelled in minutes, shorter ones in seconds.
class TimeAxis {
public:
    static constexpr qsizetype kMinPoints = 50;
    static constexpr qsizetype kMaxPoints = 100000;
    static constexpr double kMinutesFrom = 300;      // seconds
    static constexpr double kLongestSpan = 4 * 3600; // seconds, the ladder's top rung

    struct Tick {
        double seconds; // from the edge where the trace starts
        QString label;
    };

    // Points that spanSeconds holds at pointsPerSecond, within kMinPoints .. kMaxPoints.
    static qsizetype pointsForSpan(double spanSeconds, double pointsPerSecond);
    // The span wheelSteps rungs up (positive: longer) or down the ladder from spanSeconds,
    // stopping at the last rung allowed at pointsPerSecond; spanSeconds itself when no rung
    // in that direction is allowed.
    static double steppedSpan(double spanSeconds, int wheelSteps, double pointsPerSecond);
    // Ticks at whole multiples of a 1, 2 or 5 step (in the span's unit) giving at most ten
    // divisions, from 0 to the span; labels like "2 s" or "10 min".
    static std::vector<Tick> ticks(double spanSeconds);
};

} // namespace kx
