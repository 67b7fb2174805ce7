#pragma once

#include "sim/PlateFault.h"
#include "sim/PlateLoads.h"
#include "sim/SimPlateConfig.h"

#include <QList>
#include <QString>

namespace kx {

class SimDriver;

// A bench set-up for the simulated plates: the plates on the bench and what happens to them
// over time. Scenario files are read by ScenarioReader; without one the program runs on
// Scenario::defaults().
struct Scenario {
    struct Event {
        enum class Action {
            PlaceWeight, // kilograms at (x, y)
            PlacePerson, // kilograms at (x, y), standing or swaying
            Unload,      // everything off the plate
            Unplug,
            PlugIn,
            Fault,         // `fault` now, or once an acquisition has taken `afterSamples`
            FailNextCall,  // the plate's next operation throws `message`
            FailOperation, // every call of `operation` throws `message`
            Recover,       // operations stop failing
        };
        int line = 0; // where the event stands in its file, 0 when built in code
        qint64 atMs = 0;
        Action action = Action::Unload;
        QString serial;
        double kilograms = 0;
        double x = 0;
        double y = 0;
        PlateLoads::Stance stance = PlateLoads::Stance::Standing;
        PlateFault fault = PlateFault::ReadTimeout;
        qint64 afterSamples = 0;
        QString operation;
        QString message;
    };

    double gravity = DefaultSiteGravity;
    QList<SimPlateConfig> plates;
    QList<Event> events;

    // Two calibrated plates, one with firmware 2.x and one with firmware 1.x, nothing on them.
    static Scenario defaults();

    // Adds the plates to the driver and schedules the events on its clock, timed from now.
    void applyTo(SimDriver& driver) const;
};

} // namespace kx
