#include "sim/PlateLoads.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace kx {

namespace {

constexpr double WeightRamp = 0.2;
constexpr double PersonRamp = 0.5;
constexpr double TwoPi = 2 * std::numbers::pi;

// 0 before the start, 1 after `ramp` seconds, smooth in between.
double settle(double sinceStart, double ramp) {
    const double u = std::clamp(sinceStart / ramp, 0.0, 1.0);
    return u * u * (3 - 2 * u);
}

// The flex of the top scales the force of a load in the middle by 1 - TopSag·topError.
constexpr double TopSag = 1.0 / 0.5; // per metre

} // namespace

PlateLoads::PlateLoads(const SimImperfections& imperfections, quint64 seed)
    : m_scatter(imperfections.placementScatter)
    , m_topError(imperfections.topError)
    , m_random(seed) {}

void PlateLoads::placeWeight(double kilograms, double x, double y, double atSeconds) {
    dropFinished(atSeconds);
    const double landedX = x + m_scatter * m_random.normal();
    const double landedY = y + m_scatter * m_random.normal();
    m_loads.push_back(Load{kilograms, landedX, landedY, atSeconds,
                           std::numeric_limits<double>::infinity(), WeightRamp, 0.0, false});
}

void PlateLoads::placePerson(double kilograms, double x, double y, Stance stance,
                             double atSeconds) {
    dropFinished(atSeconds);
    const double sway = stance == Stance::Swaying ? 0.02 : 0.004;
    m_loads.push_back(Load{kilograms, x, y, atSeconds, std::numeric_limits<double>::infinity(),
                           PersonRamp, sway, true});
}

void PlateLoads::removeAll(double atSeconds) {
    dropFinished(atSeconds);
    for (Load& load : m_loads)
        load.off = std::min(load.off, atSeconds);
}

void PlateLoads::removeLast(double atSeconds) {
    dropFinished(atSeconds);
    const auto last = std::find_if(m_loads.rbegin(), m_loads.rend(),
                                   [atSeconds](const Load& l) { return l.off > atSeconds; });
    if (last != m_loads.rend())
        last->off = atSeconds;
}

void PlateLoads::dropFinished(double atSeconds) {
    std::erase_if(m_loads, [atSeconds](const Load& l) { return l.off + l.ramp < atSeconds; });
}

Wrench PlateLoads::wrenchAt(double seconds) const {
    Wrench w;
    for (const Load& load : m_loads) {
        const double present =
            settle(seconds - load.on, load.ramp) * (1 - settle(seconds - load.off, load.ramp));
        if (present == 0)
            continue;
        double mass = load.mass;
        double x = load.x;
        double y = load.y;
        if (load.person) {
            // Body sway: slow, mostly front to back, with a faster component on top.
            const double t = seconds - load.on;
            x += 0.6 * load.sway * std::sin(TwoPi * 0.31 * t + 1.0);
            y += load.sway * (std::sin(TwoPi * 0.19 * t) + 0.3 * std::sin(TwoPi * 0.53 * t + 2.0));
            mass *= 1 + 0.005 * std::sin(TwoPi * 0.27 * t);
        }
        // The flex of the top: no straight-line fit takes this pattern out. The centre of
        // pressure is pulled outwards towards the corners and the middle reads low.
        const double u = (x - m_top.centreX()) / m_top.halfWidth();
        const double v = (y - m_top.centreY()) / m_top.halfDepth();
        x += m_topError * u * v * v;
        y += m_topError * v * u * u;
        const double sag = 1.0 - TopSag * m_topError * (1 - u * u) * (1 - v * v);
        const double fz = -mass * m_gravity * present * sag;
        w.fz += fz;
        w.mx += fz * y;
        w.my -= fz * x;
    }
    return w;
}

std::vector<PlateLoads::Placed> PlateLoads::onPlate(double seconds) const {
    std::vector<Placed> placed;
    for (const Load& load : m_loads)
        if (load.on <= seconds && seconds < load.off)
            placed.push_back(Placed{load.mass, load.x, load.y, load.person});
    return placed;
}

} // namespace kx
