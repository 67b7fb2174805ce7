#include "sim/SimDriver.h"

#include "sim/SamplePacer.h"
#include "sim/SimPlate.h"
#include "support/Clock.h"

#include <algorithm>

namespace kx {

SimDriver::SimDriver(Clock& clock, Pacing pacing, QObject* parent)
    : PlateDriver(parent)
    , m_clock(clock)
    , m_origin(clock.tickCount())
    , m_pacer(std::make_unique<SamplePacer>(clock, pacing == Pacing::Batched ? BatchMs : 0)) {}

SimDriver::~SimDriver() = default;

void SimDriver::AddDeviceId(int vendor, int product, int) {
    const std::pair id(vendor, product);
    if (!m_deviceIds.contains(id))
        m_deviceIds.append(id);
}

void SimDriver::OpenDevices(int vendor, int product1, int product2) {
    AddDeviceId(vendor, product1, 0);
    AddDeviceId(vendor, product2, 0);
    m_open = true;
    enumerateLater();
}

void SimDriver::ReleaseAll() {
    for (SimPlate* plate : std::as_const(m_listed))
        plate->release();
    m_listed.clear();
    m_open = false;
}

void SimDriver::Refresh() {
    m_open = true;
    enumerateLater();
}

int SimDriver::Count() {
    return int(m_listed.size());
}

PlateDevice* SimDriver::Item(int position) {
    return position >= 1 && position <= m_listed.size() ? m_listed[position - 1] : nullptr;
}

PlateDevice* SimDriver::Item(const QString& serialNumber) {
    for (SimPlate* plate : std::as_const(m_listed))
        if (plate->serial().compare(serialNumber, Qt::CaseInsensitive) == 0)
            return plate;
    return nullptr;
}

int SimDriver::Plates() {
    return Count();
}

int SimDriver::HIDs() {
    const auto plugged = std::count_if(m_plates.begin(), m_plates.end(),
                                       [](const auto& p) { return p->isPlugged(); });
    return int(plugged) + m_otherHids;
}

void SimDriver::enumerateLater() {
    m_clock.singleShot(0, this, [this] { enumerate(); });
}

void SimDriver::enumerate() {
    if (!m_open)
        return;
    Q_EMIT PlateListUpdateBegin();
    m_listed.clear();
    for (const auto& plate : m_plates) {
        if (!plate->isPlugged() || !isRegistered(*plate))
            continue;
        if (!plate->isResponding()) {
            Q_EMIT PlateNotResponding(plate->deviceId());
            continue;
        }
        plate->enumerate();
        m_listed.append(plate.get());
        Q_EMIT PlateArrived(plate->deviceId(), plate->serial());
    }
    Q_EMIT PlateListUpdateDone();
}

bool SimDriver::isRegistered(const SimPlate& plate) const {
    return m_deviceIds.contains(std::pair(plate.vendorId(), plate.productId()));
}

SimPlate* SimDriver::addPlate(const SimPlateConfig& config) {
    auto plate = std::make_unique<SimPlate>(m_clock, *m_pacer, m_origin, config,
                                            int(m_plates.size()) + 1, this);
    plate->loads().setGravity(m_gravity);
    plate->setFaultHandler([this, p = plate.get()](PlateFault fault) { inject(*p, fault); });
    plate->setSerialInUse([this, p = plate.get()](const QString& serial) {
        return std::any_of(m_plates.begin(), m_plates.end(), [&](const auto& other) {
            return other.get() != p && other->isPlugged() &&
                   other->pendingSerial().compare(serial, Qt::CaseInsensitive) == 0;
        });
    });
    m_plates.push_back(std::move(plate));
    return m_plates.back().get();
}

SimPlate* SimDriver::plate(const QString& serial) const {
    for (const auto& p : m_plates)
        if (p->serial().compare(serial, Qt::CaseInsensitive) == 0)
            return p.get();
    return nullptr;
}

QList<SimPlate*> SimDriver::plates() const {
    QList<SimPlate*> all;
    for (const auto& p : m_plates)
        all.append(p.get());
    return all;
}

SimPlate* SimDriver::require(const QString& serial) const {
    SimPlate* found = plate(serial);
    Q_ASSERT_X(found, "SimDriver", "no simulated plate with this serial number");
    return found;
}

void SimDriver::unplug(const QString& serial) {
    if (SimPlate* p = require(serial))
        inject(*p, PlateFault::Unplug);
}

void SimDriver::plugIn(const QString& serial) {
    SimPlate* p = require(serial);
    if (!p || p->isPlugged())
        return;
    p->powerOn();
    enumerateLater();
}

void SimDriver::makeNotResponding(const QString& serial) {
    if (SimPlate* p = require(serial))
        inject(*p, PlateFault::NotResponding);
}

void SimDriver::inject(const QString& serial, PlateFault fault) {
    if (SimPlate* p = require(serial))
        inject(*p, fault);
}

void SimDriver::inject(SimPlate& plate, PlateFault fault) {
    switch (fault) {
    case PlateFault::Unplug: {
        if (!plate.isPlugged())
            return;
        const bool listed = m_listed.removeOne(&plate);
        plate.unplug();
        if (listed)
            Q_EMIT PlateRemoved(plate.deviceId(), plate.serial());
        // The bus changed: the list is rebuilt, as after a plate is plugged in.
        enumerateLater();
        return;
    }
    case PlateFault::NotResponding:
        if (!plate.isPlugged() || !plate.isResponding())
            return;
        plate.stopResponding();
        if (m_open)
            Q_EMIT PlateNotResponding(plate.deviceId());
        return;
    default:
        plate.raise(fault);
        return;
    }
}

void SimDriver::setGravity(double metresPerSecond2) {
    m_gravity = metresPerSecond2;
    for (const auto& p : m_plates)
        p->loads().setGravity(m_gravity);
}

} // namespace kx
