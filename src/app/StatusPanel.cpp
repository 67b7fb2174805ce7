#include "app/StatusPanel.h"

#include "resources/StringTable.h"

#include <QCheckBox>
#include <QGridLayout>

namespace kx {

StatusPanel::StatusPanel(Prompt& prompt, const SelectedPlate& plate, QWidget* parent)
    : PlatePanel("frmStatus", 500, prompt, plate, parent)
    , chkPolled(makeSwitch("chkPolled", 510, [](PlateDevice& p, bool on) { p.SetPolled(0, on); }))
    , chkADSleep(makeSwitch("chkADSleep", 520,
                            [](PlateDevice& p, bool on) { p.SetConverterSleep(0, on); }))
    , chkBkgCal(makeSwitch("chkBkgCal", 530,
                           [](PlateDevice& p, bool on) { p.SetBackgroundCalibration(on); }))
    , chkPowerON(
          makeSwitch("chkPowerON", 540, [](PlateDevice& p, bool on) { p.SetPowerOn(0, on); })) {
    auto* layout = new QGridLayout(this);
    layout->addWidget(chkPolled, 0, 0);
    layout->addWidget(chkADSleep, 0, 1);
    layout->addWidget(chkBkgCal, 1, 0);
    layout->addWidget(chkPowerON, 1, 1);
}

QCheckBox* StatusPanel::makeSwitch(const char* objectName, int captionId,
                                   void (*write)(PlateDevice&, bool)) {
    auto* box = new QCheckBox(strings::text(captionId), this);
    box->setObjectName(QLatin1String(objectName));
    // clicked, not toggled: filling the box from the plate must not write the switch back.
    connect(box, &QCheckBox::clicked, this, [this, box, write](bool on) {
        if (!withPlate([&](PlateDevice& plate) { write(plate, on); }) && hasPlate())
            box->setChecked(!on); // the plate kept its state
    });
    return box;
}

void StatusPanel::fill(PlateDevice& plate) {
    chkPolled->setChecked(plate.Polled(0));
    chkPowerON->setChecked(plate.PowerOn(0));
    chkADSleep->setChecked(plate.ConverterSleep(0));
    chkBkgCal->setChecked(plate.BackgroundCalibration());
}

} // namespace kx
