#include "cli/PlateCommand.h"

#include "cli/Console.h"
#include "cli/ExitCode.h"
#include "cli/PlateFinder.h"
#include "device/PlateDevice.h"
#include "device/PlateError.h"
#include "resources/StringTable.h"

namespace kx::cli {

PlateCommand::PlateCommand(Console& console, Clock& clock, PlateDriver& driver, QString serial,
                           int block, QObject* parent)
    : Command(console, parent)
    , m_clock(clock)
    , m_driver(driver)
    , m_serial(std::move(serial))
    , m_block(block) {
    // Whatever still arrives from the plate after the end is no longer this command's.
    connect(this, &Command::finished, this, [this] {
        if (m_plate)
            disconnect(m_plate, nullptr, this, nullptr);
    });
}

void PlateCommand::start() {
    if (!prepare())
        return;
    m_finder = new PlateFinder(m_clock, m_driver, this);
    connect(m_finder, &PlateFinder::ready, this, &PlateCommand::found);
    m_finder->open();
}

void PlateCommand::found() {
    if (isFinished())
        return;
    if (!m_finder->error().isEmpty()) {
        fail(DeviceError, QStringLiteral("plates: ") + m_finder->error());
        return;
    }
    m_plate = m_finder->plate(m_serial);
    if (!m_plate) {
        const QStringList& listed = m_finder->serials();
        fail(DeviceError,
             aboutPlate(listed.isEmpty() ? QStringLiteral("not found: no plate is connected")
                                         : QStringLiteral("not found among the connected plates "
                                                          "(%1)")
                                               .arg(listed.join(QStringLiteral(", ")))));
        return;
    }
    using E = DeviceEvent;
    const auto on = [this](auto signal, DeviceEvent event) {
        connect(m_plate, signal, this, [this, event] { deviceEvent(event); });
    };
    on(&PlateDevice::Removal, E::Removal);
    on(&PlateDevice::ReadTimeout, E::ReadTimeout);
    on(&PlateDevice::WriteTimeout, E::WriteTimeout);
    on(&PlateDevice::BufferOverRun, E::BufferOverRun);
    on(&PlateDevice::DataClipped, E::DataClipped);
    run(*m_plate);
}

void PlateCommand::interrupt(int signal) {
    if (isFinished())
        return;
    if (m_plate)
        end(interruptedExitCode(signal));
    else
        Command::interrupt(signal);
}

void PlateCommand::deviceEvent(DeviceEvent event) {
    if (isFinished())
        return;
    if (event == DeviceEvent::Removal)
        m_removed = true;
    else if (!reactsNow(event))
        return;
    const DeviceErrorProfile profile = deviceErrorProfile(m_block);
    const DeviceErrorReaction& reaction = profile.reaction(event);
    if (reaction.steps.isEmpty())
        return;
    const QString message =
        strings::text(m_block + deviceEventTextOffset(event) + reaction.messageText);
    deviceFailure(aboutPlate(message.section(u'\n', 0, 0)));
}

void PlateCommand::deviceFailure(const QString& line) {
    console().error(line);
    end(DeviceError);
}

bool PlateCommand::call(const std::function<void()>& calls) {
    try {
        calls();
        return true;
    } catch (const PlateError& error) {
        deviceFailure(aboutPlate(error.message()));
        return false;
    }
}

bool PlateCommand::stopAcquisition() {
    if (m_removed)
        return true;
    try {
        m_plate->StopAcquisition();
        m_plate->AbortAcquisition();
        return true;
    } catch (const PlateError& error) {
        console().error(aboutPlate(error.message()));
        return false;
    }
}

QString PlateCommand::aboutPlate(const QString& what) const {
    return QStringLiteral("plate %1: %2").arg(m_serial, what);
}

} // namespace kx::cli
