#pragma once

#include <QObject>
#include <QString>

namespace kx {

class PlateDevice;

// The plate library's entry point: one per run, owned by the main window. It enumerates the
// plates and owns their PlateDevice objects, which stay valid for the driver's lifetime (a
// removed plate's object stays behind, and its operations fail). Every operation may throw
// PlateError. The list events are delivered after the call that caused them has returned.
class PlateDriver : public QObject {
    Q_OBJECT
public:
    ~PlateDriver() override;

    // Adds a USB vendor / product pair to the set the driver looks for.
    virtual void AddDeviceId(int vendor, int product, int flags) = 0;
    // Enumerates and opens every matching plate; the list events follow.
    virtual void OpenDevices(int vendor, int product1, int product2) = 0;
    // Lets go of every plate (before re-opening after a serial-number change).
    virtual void ReleaseAll() = 0;
    // Enumerates the plates again; the list events follow.
    virtual void Refresh() = 0;

    // The plate collection, 1-based.
    virtual int Count() = 0;
    // The plate at a position 1..Count(), or null.
    virtual PlateDevice* Item(int position) = 0;
    // The plate with this serial number, or null.
    virtual PlateDevice* Item(const QString& serialNumber) = 0;

    // The counts the status bar shows: force plates installed, HID devices seen.
    virtual int Plates() = 0;
    virtual int HIDs() = 0;

Q_SIGNALS:
    void PlateListUpdateBegin();
    void PlateArrived(const QString& id, const QString& serialNumber);
    void PlateNotResponding(const QString& id);
    void PlateRemoved(const QString& id, const QString& serialNumber);
    void PlateListUpdateDone();

protected:
    explicit PlateDriver(QObject* parent = nullptr)
        : QObject(parent) {}
};

} // namespace kx
