#pragma once

#include "device/PlateTypes.h"
#include "sim/Scenario.h"
#include "sim/SimDriver.h"
#include "sim/SimPlate.h"
#include "support/ManualClock.h"

#include <QObject>
#include <QStringList>
#include <utility>
#include <vector>

namespace kx::test {

// The default plates without the imperfections of real ones, for checks of exact arithmetic.
inline Scenario idealPlates() {
    Scenario scenario = Scenario::defaults();
    for (SimPlateConfig& plate : scenario.plates)
        plate.imperfections = SimImperfections::none();
    return scenario;
}

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

// The driver's list events, and a plate's failures with the milliseconds since the log
// began, as text in order.
struct EventLog {
    EventLog(PlateDriver& driver, const Clock& clock, PlateDevice* plate = nullptr)
        : start(clock.tickCount()) {
        const auto note = [this](const QString& event) { events << event; };
        QObject::connect(&driver, &PlateDriver::PlateListUpdateBegin, &context,
                         [note] { note(QStringLiteral("begin")); });
        QObject::connect(
            &driver, &PlateDriver::PlateArrived, &context,
            [note](const QString&, const QString& serial) { note("arrived " + serial); });
        QObject::connect(
            &driver, &PlateDriver::PlateRemoved, &context,
            [note](const QString&, const QString& serial) { note("removed " + serial); });
        QObject::connect(&driver, &PlateDriver::PlateNotResponding, &context,
                         [note] { note(QStringLiteral("not responding")); });
        QObject::connect(&driver, &PlateDriver::PlateListUpdateDone, &context,
                         [note] { note(QStringLiteral("done")); });
        if (!plate)
            return;
        using Failure = void (PlateDevice::*)();
        const std::pair<Failure, const char*> failures[] = {
            {&PlateDevice::Removal, "Removal"},
            {&PlateDevice::ReadTimeout, "ReadTimeout"},
            {&PlateDevice::WriteTimeout, "WriteTimeout"},
            {&PlateDevice::BufferOverRun, "BufferOverRun"},
            {&PlateDevice::DataClipped, "DataClipped"}};
        for (const auto& [failure, name] : failures)
            QObject::connect(plate, failure, &context, [this, &clock, name] {
                events << QStringLiteral("%1 at %2").arg(name).arg(clock.tickCount() - start);
            });
    }

    QStringList take() { return std::exchange(events, {}); }
    QStringList failures() const { return events.filter(QStringLiteral(" at ")); }

    quint32 start;
    QObject context;
    QStringList events;
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

// What a ZeroDone reports; four channels of zeros until one arrives.
struct ZeroStatistics {
    qint32 samples = 0;
    ChannelValues average = ChannelValues(4), deviation = ChannelValues(4),
                  range = ChannelValues(4);
};

// The last ZeroDone of a plate, and every progress event before it.
struct ZeroRecorder {
    explicit ZeroRecorder(PlateDevice& plate) {
        QObject::connect(&plate, &PlateDevice::ZeroProgress, &context,
                         [this](qint32 n) { progress << n; });
        QObject::connect(&plate, &PlateDevice::ZeroDone, &context,
                         [this](qint32 n, const ChannelValues& a, const ChannelValues& d,
                                const ChannelValues& r) {
                             ++done;
                             last = {n, a, d, r};
                         });
    }

    QObject context;
    QList<qint32> progress;
    int done = 0;
    ZeroStatistics last;
};

// The last TestDone of a plate.
struct BlockRecorder {
    explicit BlockRecorder(PlateDevice& plate) {
        QObject::connect(&plate, &PlateDevice::TestDone, &context,
                         [this](qint32 n, const QList<Float3>& f, const QList<Float3>& v) {
                             ++done;
                             count = n;
                             forces = f;
                             volts = v;
                         });
    }

    QObject context;
    int done = 0;
    qint32 count = 0;
    QList<Float3> forces, volts;
};

} // namespace kx::test
