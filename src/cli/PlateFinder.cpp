#include "cli/PlateFinder.h"

#include "device/PlateDevice.h"
#include "device/PlateDriver.h"
#include "device/PlateError.h"
#include "support/Clock.h"

namespace kx::cli {

PlateFinder::PlateFinder(Clock& clock, PlateDriver& driver, QObject* parent)
    : QObject(parent)
    , m_clock(clock)
    , m_driver(driver) {
    connect(&driver, &PlateDriver::PlateArrived, this,
            [this](const QString&, const QString& serial) { m_serials.append(serial); });
    connect(&driver, &PlateDriver::PlateRemoved, this,
            [this](const QString&, const QString& serial) { removed(serial); });
    connect(&driver, &PlateDriver::PlateNotResponding, this, [this](const QString& id) {
        if (!m_notResponding.contains(id))
            m_notResponding.append(id);
    });
    connect(&driver, &PlateDriver::PlateListUpdateDone, this, &PlateFinder::listUpdateDone);
}

void PlateFinder::open() {
    try {
        m_driver.AddDeviceId(PlateVendorId, PlateProductId1, 0);
        m_driver.AddDeviceId(PlateVendorId, PlateProductId2, 0);
        m_driver.OpenDevices(PlateVendorId, PlateProductId1, PlateProductId2);
    } catch (const PlateError& error) {
        m_error = error.message();
        m_clock.singleShot(0, this, [this] { Q_EMIT ready(); });
        return;
    }
    m_clock.singleShot(ListWaitMs, this, [this] { Q_EMIT ready(); });
}

void PlateFinder::listUpdateDone() {
    try {
        const int plates = m_driver.Count();
        if (m_serials.size() == plates)
            return;
        m_serials.clear();
        for (int position = 1; position <= plates; ++position)
            m_serials.append(m_driver.Item(position)->SerialNumber());
    } catch (const PlateError& error) {
        m_error = error.message();
    }
}

void PlateFinder::removed(const QString& serial) {
    m_serials.removeIf([&serial](const QString& listed) {
        return listed.compare(serial, Qt::CaseInsensitive) == 0;
    });
}

PlateDevice* PlateFinder::plate(const QString& serial) const {
    for (const QString& listed : m_serials) {
        if (listed.compare(serial, Qt::CaseInsensitive) == 0)
            return m_driver.Item(listed);
    }
    return nullptr;
}

} // namespace kx::cli
