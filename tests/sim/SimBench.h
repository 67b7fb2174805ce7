#pragma once

#include "device/PlateTypes.h"
#include "sim/Scenario.h"
#include "sim/SimDriver.h"
#include "sim/SimPlate.h"
#include "support/ManualClock.h"

#include <QObject>
#include <vector>

namespace kx::test {

// A manual clock and a simulated driver with the default plates, opened and enumerated.
struct SimBench {
    explicit SimBench(const Scenario& scenario = Scenario::defaults()) {
        scenario.applyTo(driver);
        driver.AddDeviceId(PlateVendorId, PlateProductId1, 0);
        driver.AddDeviceId(PlateVendorId, PlateProductId2, 0);
        driver.OpenDevices(PlateVendorId, PlateProductId1, PlateProductId2);
        clock.settle();
    }

    SimPlate& plate(const char* serial) { return *driver.plate(QString::fromLatin1(serial)); }

    ManualClock clock{1000};
    SimDriver driver{clock};
};

// Every ForcesIn of a plate, with the tick count at which it arrived.
struct ForcesRecorder {
    struct Sample {
        qint32 number;
        Float3 forces;
        Float3 volts;
        quint32 tick;
    };

    ForcesRecorder(PlateDevice& plate, const Clock& clock) {
        QObject::connect(&plate, &PlateDevice::ForcesIn, &context,
                         [this, &clock](qint32 n, const Float3& f, const Float3& v) {
                             samples.push_back(Sample{n, f, v, clock.tickCount()});
                         });
    }

    QObject context;
    std::vector<Sample> samples;
};

} // namespace kx::test
