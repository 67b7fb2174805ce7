#pragma once

#include <QObject>
#include <QStringList>

namespace kx {
class Clock;
class PlateDevice;
class PlateDriver;
} // namespace kx

namespace kx::cli {

// Finds the plates as the main window does when it loads: both USB identities registered, the
// devices opened, and the list taken 1000 ms later on the clock, built from the driver's list
// events (an entry per PlateArrived, rebuilt from the driver's collection when a list update
// ends with a different count, an entry dropped on PlateRemoved).
class PlateFinder : public QObject {
    Q_OBJECT
public:
    static constexpr int ListWaitMs = 1000;

    PlateFinder(Clock& clock, PlateDriver& driver, QObject* parent = nullptr);

    // Opens the devices; ready() follows after the wait. A plate-library failure ends the
    // search at once: ready() follows and error() says why.
    void open();

    const QStringList& serials() const { return m_serials; }
    // Device identifiers of plates that did not answer (PlateNotResponding).
    const QStringList& notResponding() const { return m_notResponding; }
    // The plate listed with this serial number (compared without regard to case), or null.
    PlateDevice* plate(const QString& serial) const;
    const QString& error() const { return m_error; }

Q_SIGNALS:
    void ready();

private:
    void listUpdateDone();
    void removed(const QString& serial);

    Clock& m_clock;
    PlateDriver& m_driver;
    QStringList m_serials;
    QStringList m_notResponding;
    QString m_error;
};

} // namespace kx::cli
