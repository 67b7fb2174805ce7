#include "device/ToolDialog.h"

#include "device/PlateDevice.h"
#include "device/PlateError.h"
#include "device/SettingsSaveNotice.h"
#include "resources/StringTable.h"

#include <QProgressBar>
#include <QStatusBar>
#include <utility>

namespace kx {

ToolDialog::ToolDialog(const ToolContext& context, int block, QWidget* parent)
    : QDialog(parent)
    , m_context(context)
    , m_block(block)
    , m_errors(
          new DeviceErrorReporter(deviceErrorProfile(block), context.clock, context.prompt, this)) {
    // The main window is hidden while a dialog is open; closing the dialog hands back to it
    // instead of ending the program.
    setAttribute(Qt::WA_QuitOnClose, false);
    setDeviceErrorActions({});
}

void ToolDialog::setDevice(PlateDevice* device) {
    m_device = device;
    m_errors->attach(device);
}

void ToolDialog::done(int result) {
    QDialog::done(result);
    if (m_unloaded)
        return;
    m_unloaded = true;
    unloading();
    // The dialog saved its settings while unloading.
    noticeUnsavedSettings(prompt());
    setDevice(nullptr);
    Q_EMIT unloaded();
}

void ToolDialog::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (!std::exchange(m_loaded, true))
        loading();
}

QString ToolDialog::text(int offset) const {
    return strings::text(m_block + offset);
}

QProgressBar* ToolDialog::makeProgressBar() {
    auto* bar = new QProgressBar(this);
    bar->setObjectName(QStringLiteral("ProgressBar1"));
    bar->hide();
    return bar;
}

QStatusBar* ToolDialog::makeStatusBar() {
    auto* bar = new QStatusBar(this);
    bar->setObjectName(QStringLiteral("StatusBar1"));
    bar->setSizeGripEnabled(false);
    return bar;
}

bool ToolDialog::runDevice(const std::function<void()>& handler) {
    return runDeviceHandler(prompt(), handler);
}

void ToolDialog::setDeviceErrorActions(DeviceErrorActions actions) {
    actions.close = [this] { done(QDialog::Rejected); };
    m_errors->setActions(std::move(actions));
}

} // namespace kx
