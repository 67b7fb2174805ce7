#pragma once

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
// shifts his weight slightly as he breathes.
class PlateLoads {
public:
    enum class Stance { Standing, Swaying };

    void setGravity(double metresPerSecond2) { m_gravity = metresPerSecond2; }
    double gravity() const { return m_gravity; }

    void placeWeight(double kilograms, double x, double y, double atSeconds);
    void placePerson(double kilograms, double x, double y, Stance stance, double atSeconds);
    // Everything on the plate is taken off, starting at `atSeconds`.
    void removeAll(double atSeconds);
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
    double m_gravity = 9.80665;
};

} // namespace kx
