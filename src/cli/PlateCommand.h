#pragma once

#include "cli/Command.h"
#include "device/DeviceErrorProfile.h"

#include <QString>
#include <functional>

namespace kx {
class Clock;
class PlateDevice;
class PlateDriver;
} // namespace kx

namespace kx::cli {

class PlateFinder;

// A command on the one plate its serial number names. It finds the plates, then run()s on the
// plate; the plate's fault events end the command where the dialog it stands for would stop
// (that dialog's reactions and the first line of its message), and are ignored where the
// dialog ignores them.
class PlateCommand : public Command {
    Q_OBJECT
public:
    void start() final;
    void interrupt(int signal) final;

protected:
    // `block`: the string block of the dialog whose reactions to faults this command shares.
    PlateCommand(Console& console, Clock& clock, PlateDriver& driver, QString serial, int block,
                 QObject* parent = nullptr);

    // Checks what needs no plate (files, values) before the plates are searched; false when
    // the command has failed.
    virtual bool prepare() { return true; }
    virtual void run(PlateDevice& plate) = 0;
    // How the command ends once run() has begun: after it is done, on Ctrl+C or SIGTERM, or
    // on a device failure (a failing call, or a fault the dialog reacts to, told in one line
    // first). At once unless overridden by a command that has something to keep or put back.
    virtual void end(int exitCode) { finish(exitCode); }

    // Whether a fault the dialog reacts to ends the command now: a dialog may react only at
    // some moments (the noise test only while it measures). A removal always ends it.
    virtual bool reactsNow(DeviceEvent) const { return true; }
    // Ends the command on `event` as the dialog's reaction would, with its line told first;
    // nothing where the dialog ignores the event.
    void deviceEvent(DeviceEvent event);

    // Runs plate calls; when one fails, the failure is told and the command ends; false then.
    bool call(const std::function<void()>& calls);
    // Stops and aborts whatever the plate acquires, as a dialog's stop does; nothing once the
    // plate is gone. A failing call is told in one line; false then.
    bool stopAcquisition();
    // "plate 20418: <what>"
    QString aboutPlate(const QString& what) const;
    Clock& clock() const { return m_clock; }
    PlateDevice* plate() const { return m_plate; }
    const QString& serial() const { return m_serial; }
    bool plateRemoved() const { return m_removed; }

private:
    void found();
    void deviceFailure(const QString& line);

    Clock& m_clock;
    PlateDriver& m_driver;
    QString m_serial;
    int m_block;
    PlateFinder* m_finder = nullptr;
    PlateDevice* m_plate = nullptr;
    bool m_removed = false;
};

} // namespace kx::cli
