#pragma once

#include "device/PlateDriver.h"
#include "sim/PlateFault.h"
#include "sim/SimPlateConfig.h"

#include <QList>
#include <memory>
#include <utility>
#include <vector>

namespace kx {

class Clock;
class SamplePacer;
class SimPlate;

// The simulated plate library: a set of simulated plates behind the PlateDriver boundary.
// Enumeration (OpenDevices, Refresh, a plate plugged in) lists the plugged, responding plates
// whose USB identity matches a registered vendor and product, and reports them through
// PlateListUpdateBegin, one PlateArrived each and PlateListUpdateDone, delivered after the
// call returns. Plates are never destroyed before the driver: an unplugged plate's object
// stays valid, and plugging it in again brings back the same object.
//
// Besides the PlateDriver operations it offers the control of a test bench: add plates, plug
// and unplug them, make one stop responding, and inject or schedule faults.
class SimDriver final : public PlateDriver {
    Q_OBJECT
public:
    // When the plates look for due samples. PerSample wakes at the tick of every sample, so
    // that under a manual clock each arrives with the tick count of its due time. Batched
    // wakes at most every BatchMs and hands over what fell due meanwhile at once: what a run
    // on the real clock wants, where a wake-up of the event loop costs as much as a few
    // hundred samples. 50 deliveries a second are still more than a display needs.
    enum class Pacing { PerSample, Batched };
    static constexpr int BatchMs = 20;

    explicit SimDriver(Clock& clock, Pacing pacing = Pacing::PerSample, QObject* parent = nullptr);
    ~SimDriver() override;

    void AddDeviceId(int vendor, int product, int flags) override;
    void OpenDevices(int vendor, int product1, int product2) override;
    void ReleaseAll() override;
    void Refresh() override;
    int Count() override;
    PlateDevice* Item(int position) override;
    PlateDevice* Item(const QString& serialNumber) override;
    int Plates() override;
    int HIDs() override;

    // Simulation control.
    SimPlate* addPlate(const SimPlateConfig& config);
    // Every plate ever added, plugged in or not, by its present serial number.
    SimPlate* plate(const QString& serial) const;
    QList<SimPlate*> plates() const;
    // Unplugging raises the plate's Removal, then PlateRemoved, and the remaining plates are
    // listed again after the call returns. Plugging in powers the plate
    // up with its defaults and, once the driver has been opened, enumerates again.
    void unplug(const QString& serial);
    void plugIn(const QString& serial);
    // The plate stops answering: PlateNotResponding now and at every enumeration until it is
    // unplugged and plugged in again; its operations fail meanwhile.
    void makeNotResponding(const QString& serial);
    // Any fault, now.
    void inject(const QString& serial, PlateFault fault);
    // The calibration's default local gravity unless a scenario sets another, m/s².
    void setGravity(double metresPerSecond2);
    double gravity() const { return m_gravity; }
    // Other HID devices on the bus (keyboard, mouse, ...), counted by HIDs().
    void setOtherHidDevices(int count) { m_otherHids = count; }
    Clock& clock() const { return m_clock; }

private:
    void enumerateLater();
    void enumerate();
    bool isRegistered(const SimPlate& plate) const;
    void inject(SimPlate& plate, PlateFault fault);
    SimPlate* require(const QString& serial) const;

    Clock& m_clock;
    const quint32 m_origin;
    std::unique_ptr<SamplePacer> m_pacer; // outlives the plates
    std::vector<std::unique_ptr<SimPlate>> m_plates;
    QList<SimPlate*> m_listed;
    QList<std::pair<int, int>> m_deviceIds;
    bool m_open = false;
    int m_otherHids = 0;
    double m_gravity = DefaultSiteGravity;
};

} // namespace kx
