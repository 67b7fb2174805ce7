#pragma once

#include "device/DeviceErrorProfile.h"
#include "device/PlateDevice.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <functional>

namespace kx {

class Clock;
class Prompt;
class Timer;

// What a window does for the steps of its reactions that only it knows. Unset actions are
// skipped.
struct DeviceErrorActions {
    std::function<void()> stop{};                     // ReactionStep::Stop
    std::function<void(const QString&)> showStatus{}; // ReactionStep::Status
    std::function<void(const QString&)> showLabel{};  // ReactionStep::Label (text, made visible)
    std::function<void(DeviceEvent)> recover{};       // ReactionStep::Recover
    std::function<void()> close{};                    // after a removal; must not delete at once
    // Whether the window reacts to a time-out, overrun or clipping in its present state;
    // unset: always. A removal always gets its reaction.
    std::function<bool(DeviceEvent)> applies{};
};

// Turns a plate's failure events into the reactions of the owning window's profile: stop what
// runs, tell the user in a critical box, update status texts and controls, and after a
// removal close the window, at once or after the profile's delay.
//
// An event that arrives while a reaction runs (typically while its message box is open) waits
// behind it, so one window never stacks two boxes; an event already waiting is not queued
// twice. After a removal every later event is ignored.
//
// The reporter's parent is the window: the Controls step looks its controls up by object name
// among the parent's children and sets their "enabled" property.
class DeviceErrorReporter : public QObject {
    Q_OBJECT
public:
    DeviceErrorReporter(DeviceErrorProfile profile, Clock& clock, Prompt& prompt, QObject* parent);

    void setActions(DeviceErrorActions actions) { m_actions = std::move(actions); }
    const DeviceErrorProfile& profile() const { return m_profile; }

    // Listens to this plate's failure events (and stops listening to the previous one).
    // Null detaches.
    void attach(PlateDevice* device);

    // True once a removal was reported: the window is closing and its plate is gone.
    bool removed() const { return m_removed; }

    void report(kx::DeviceEvent event);

private:
    void react(DeviceEvent event);
    void runStep(ReactionStep step, const DeviceErrorReaction& reaction, DeviceEvent event);
    void setControlsEnabled(const QStringList& names, bool enabled);
    QString text(DeviceEvent event, int offset) const;
    void closeWindow();

    DeviceErrorProfile m_profile;
    Prompt& m_prompt;
    Timer* m_closeTimer;
    DeviceErrorActions m_actions;
    QPointer<PlateDevice> m_device;
    QList<DeviceEvent> m_waiting;
    bool m_reacting = false;
    bool m_removed = false;
};

} // namespace kx
