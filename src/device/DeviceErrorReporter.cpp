#include "device/DeviceErrorReporter.h"

#include "device/PlateDevice.h"
#include "device/PlateError.h"
#include "resources/StringTable.h"
#include "support/Clock.h"
#include "support/Prompt.h"

namespace kx {

DeviceErrorReporter::DeviceErrorReporter(DeviceErrorProfile profile, Clock& clock, Prompt& prompt,
                                         QObject* parent)
    : QObject(parent)
    , m_profile(std::move(profile))
    , m_prompt(prompt)
    , m_closeTimer(clock.createTimer(this)) {
    connect(m_closeTimer, &Timer::timeout, this, [this] {
        m_closeTimer->stop();
        closeWindow();
    });
}

void DeviceErrorReporter::attach(PlateDevice* device) {
    if (m_device)
        disconnect(m_device, nullptr, this, nullptr);
    m_device = device;
    if (!device)
        return;
    connect(device, &PlateDevice::Removal, this, [this] { report(DeviceEvent::Removal); });
    connect(device, &PlateDevice::ReadTimeout, this, [this] { report(DeviceEvent::ReadTimeout); });
    connect(device, &PlateDevice::WriteTimeout, this,
            [this] { report(DeviceEvent::WriteTimeout); });
    connect(device, &PlateDevice::BufferOverRun, this,
            [this] { report(DeviceEvent::BufferOverRun); });
    connect(device, &PlateDevice::DataClipped, this, [this] { report(DeviceEvent::DataClipped); });
}

void DeviceErrorReporter::report(DeviceEvent event) {
    if (m_removed || m_profile.reaction(event).steps.isEmpty())
        return;
    if (event != DeviceEvent::Removal && m_actions.applies && !m_actions.applies(event))
        return;
    if (m_reacting) {
        if (!m_waiting.contains(event))
            m_waiting << event;
        return;
    }
    m_reacting = true;
    react(event);
    while (!m_waiting.isEmpty() && !m_removed)
        react(m_waiting.takeFirst());
    m_waiting.clear();
    m_reacting = false;
}

void DeviceErrorReporter::react(DeviceEvent event) {
    const DeviceErrorReaction& reaction = m_profile.reaction(event);
    if (event == DeviceEvent::Removal)
        m_removed = true;
    runDeviceHandler(m_prompt, [&] {
        for (const ReactionStep step : reaction.steps)
            runStep(step, reaction, event);
    });
    if (event != DeviceEvent::Removal)
        return;
    if (m_profile.removalCloseDelayMs > 0)
        m_closeTimer->start(m_profile.removalCloseDelayMs);
    else
        closeWindow();
}

void DeviceErrorReporter::runStep(ReactionStep step, const DeviceErrorReaction& reaction,
                                  DeviceEvent event) {
    switch (step) {
    case ReactionStep::Stop:
        if (m_actions.stop)
            m_actions.stop();
        break;
    case ReactionStep::Abort:
        if (m_device)
            m_device->AbortAcquisition();
        break;
    case ReactionStep::Message:
        m_prompt.critical(text(event, reaction.messageText));
        break;
    case ReactionStep::Status:
        if (m_actions.showStatus)
            m_actions.showStatus(text(event, reaction.statusText));
        break;
    case ReactionStep::Label:
        if (m_actions.showLabel)
            m_actions.showLabel(text(event, reaction.labelText));
        break;
    case ReactionStep::Recover:
        if (m_actions.recover)
            m_actions.recover(event);
        break;
    case ReactionStep::Controls:
        setControlsEnabled(reaction.enable, true);
        setControlsEnabled(reaction.disable, false);
        break;
    }
}

void DeviceErrorReporter::setControlsEnabled(const QStringList& names, bool enabled) {
    for (const QString& name : names) {
        if (QObject* control = parent() ? parent()->findChild<QObject*>(name) : nullptr)
            control->setProperty("enabled", enabled);
    }
}

QString DeviceErrorReporter::text(DeviceEvent event, int offset) const {
    return strings::text(m_profile.block + deviceEventTextOffset(event) + offset);
}

void DeviceErrorReporter::closeWindow() {
    if (m_actions.close)
        m_actions.close();
}

} // namespace kx
