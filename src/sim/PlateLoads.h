#pragma once

#include "sim/NoiseGenerator.h"
#include "sim/PlateTop.h"
#include "sim/SimPlateConfig.h"

#include <vector>

namespace kx {

// Force and moments on the plate top in plate coordinates: Fz [N] negative when loaded,
// Mx = Fz·y and My = -Fz·x [N·m] summed over the loads.
struct Wrench {
    double fz = 0;
    double mx = 0;
    double my = 0;
};

// What rests on a plate over time: weights and people, each placed and taken off at a time
// on the driver's timeline (seconds) and evaluated at any sample time. A weight settles
// within 0.2 s; a person steps on and off over 0.5 s, sways about the point he stands on and
// shifts his weight slightly as he breathes. A weight lands a little off the point it is put
// at, and the top's small flex bends every load's reading in a fixed pattern over the top.
class PlateLoads {
public:
    enum class Stance { Standing, Swaying };

    explicit PlateLoads(const SimImperfections& imperfections = {}, quint64 seed = 1);

    void setGravity(double metresPerSecond2) { m_gravity = metresPerSecond2; }
    double gravity() const { return m_gravity; }

    void placeWeight(double kilograms, double x, double y, double atSeconds);
    void placePerson(double kilograms, double x, double y, Stance stance, double atSeconds);
    // Everything on the plate is taken off, starting at `atSeconds`.
    void removeAll(double atSeconds);
    // The load put on last of those still on the plate is taken off, as when unstacking.
    void removeLast(double atSeconds);
    bool isEmpty() const { return m_loads.empty(); }

    Wrench wrenchAt(double seconds) const;

    struct Placed {
        double kilograms;
        double x;
        double y;
        bool person;
    };
    // What is on the plate at `seconds`: placed by then and not yet taken off.
    std::vector<Placed> onPlate(double seconds) const;
    // Calls `visit(t)` for each time in (from, to] at which a load starts or ends a ramp,
    // in no particular order: where the load on the plate was steady for a moment.
    template <typename Visit>
    void forEachTurn(double from, double to, Visit visit) const {
        for (const Load& load : m_loads)
            for (double t : {load.on, load.on + load.ramp, load.off, load.off + load.ramp})
                if (t > from && t <= to)
                    visit(t);
    }

private:
    struct Load {
        double mass;
        double x;
        double y;
        double on;
        double off;
        double ramp;
        double sway; // metres, 0 for a weight
        bool person;
    };
    void dropFinished(double atSeconds);

    std::vector<Load> m_loads;
    double m_gravity = DefaultSiteGravity;
    double m_scatter;
    double m_topError;
    NoiseGenerator m_random;
    PlateTop m_top;
};

} // namespace kx
