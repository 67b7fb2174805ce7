#include "sim/Scenario.h"

#include "sim/SimDriver.h"
#include "sim/SimPlate.h"
#include "support/Clock.h"

#include <QHash>

namespace kx {

namespace {

void perform(SimDriver& driver, SimPlate& plate, const Scenario::Event& event) {
    using Action = Scenario::Event::Action;
    switch (event.action) {
    case Action::PlaceWeight:
        plate.placeWeight(event.kilograms, event.x, event.y);
        return;
    case Action::PlacePerson:
        plate.placePerson(event.kilograms, event.x, event.y, event.stance);
        return;
    case Action::Unload:
        plate.unload();
        return;
    case Action::Unplug:
        driver.unplug(plate.serial());
        return;
    case Action::PlugIn:
        driver.plugIn(plate.serial());
        return;
    case Action::Fault:
        if (event.afterSamples > 0)
            plate.faults().afterSamples(event.afterSamples, event.fault);
        else
            driver.inject(plate.serial(), event.fault);
        return;
    case Action::FailNextCall:
        plate.failures().failNextCall(event.message);
        return;
    case Action::FailOperation:
        plate.failures().failEveryCall(event.operation, event.message);
        return;
    case Action::Recover:
        plate.failures().clear();
        return;
    }
}

} // namespace

Scenario Scenario::defaults() {
    Scenario scenario;
    SimPlateConfig current;
    current.serial = QStringLiteral("20418");
    current.firmwareMajor = 2;
    current.firmwareMinor = 3;
    current.seed = 20418;
    current.noiseCodes = 120;
    current.gageVoltage = 5.0;
    current.sampleFrequency = 100.0;
    SimPlateConfig older;
    older.serial = QStringLiteral("11093");
    older.firmwareMajor = 1;
    older.firmwareMinor = 7;
    older.seed = 11093;
    older.noiseCodes = 150;
    older.gageVoltage = 2.5;
    older.sampleFrequency = 64.0;
    scenario.plates = {current, older};
    return scenario;
}

void Scenario::applyTo(SimDriver& driver) const {
    driver.setGravity(gravity);
    // Events hold on to the plate object, so a serial number changed on the way does not
    // lose them.
    QHash<QString, SimPlate*> bySerial;
    for (const SimPlateConfig& config : plates)
        bySerial.insert(config.serial, driver.addPlate(config));
    for (const Event& event : events) {
        SimPlate* plate = bySerial.value(event.serial);
        if (!plate)
            continue;
        driver.clock().singleShot(int(event.atMs), &driver,
                                  [&driver, plate, event] { perform(driver, *plate, event); });
    }
}

} // namespace kx
