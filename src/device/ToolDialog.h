#pragma once

#include "device/DeviceErrorReporter.h"
#include "device/PlateDevice.h"
#include "device/ToolContext.h"

#include <QDialog>
#include <QPointer>
#include <functional>

class QProgressBar;
class QStatusBar;

namespace kx {

// The base of every tool dialog the main window opens. The main window creates the dialog,
// hands it the selected plate through setDevice() before showing it modeless, and waits for
// unloaded() to take over again. The dialog reports the plate's failure events through the
// profile of its block of string resources; it supplies the dialog-specific steps with
// setDeviceErrorActions().
//
// Every way of closing (close(), Esc, accept(), reject(), a removal) ends in unload: the
// dialog runs unloading(), lets go of the plate and emits unloaded(), once.
class ToolDialog : public QDialog {
    Q_OBJECT
public:
    // The plate the dialog works on, or null. Subscribes to its failure events.
    virtual void setDevice(PlateDevice* device);
    PlateDevice* device() const { return m_device; }

    int block() const { return m_block; }

    void done(int result) override;

Q_SIGNALS:
    // The dialog has unloaded and dropped its plate.
    void unloaded();

protected:
    ToolDialog(const ToolContext& context, int block, QWidget* parent = nullptr);

    Clock& clock() const { return m_context.clock; }
    Prompt& prompt() const { return m_context.prompt; }

    // The text of this dialog's resource block + offset.
    QString text(int offset) const;

    // The dialogs' common bottom line: the acquisition progress ("ProgressBar1", hidden until an
    // acquisition runs) and the status bar ("StatusBar1", without a size grip).
    QProgressBar* makeProgressBar();
    QStatusBar* makeStatusBar();

    // Runs plate calls at the device-handler boundary: a failure shows the library's message.
    bool runDevice(const std::function<void()>& handler);

    // Dialog-specific steps of the failure reactions; closing after a removal is built in.
    void setDeviceErrorActions(DeviceErrorActions actions);
    // True once the plate was unplugged: its calls would only fail.
    bool deviceRemoved() const { return m_errors->removed(); }
    // Reacts to an event the dialog found out for itself (a plate gone silent) as to the
    // plate's own.
    void reportDeviceEvent(DeviceEvent event) { m_errors->report(event); }

    // Called once, when the dialog is first shown, with the plate (or none) handed in: the
    // dialog's load step (read its settings, prepare the plate, fill its controls).
    virtual void loading() {}
    // Called once when the dialog unloads, while it still holds its plate: stop what runs.
    virtual void unloading() {}

    void showEvent(QShowEvent* event) override;

private:
    ToolContext m_context;
    int m_block;
    QPointer<PlateDevice> m_device;
    DeviceErrorReporter* m_errors;
    bool m_loaded = false;
    bool m_unloaded = false;
};

} // namespace kx
