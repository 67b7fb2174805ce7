#include "app/GeneralInfoPanel.h"

#include "resources/StringTable.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace kx {

GeneralInfoPanel::GeneralInfoPanel(Prompt& prompt, const SelectedPlate& plate, QWidget* parent)
    : PlatePanel("frmGeneralInfo", 300, prompt, plate, parent)
    , lblSerialNumber(makeLabel("lblSerialNumber", 310))
    , txtSerialNumber(makeBox(QStringLiteral("txtSerialNumber"), plainCaption(310), 12,
                              [this] { validateSerialNumber(); }))
    , lblFirmware(makeLabel("lblFirmware", 320))
    , lblFrimwareTxt(new QLabel(this))
    , cmdDevInfoEx(new QPushButton(strings::text(330), this)) {
    lblFrimwareTxt->setObjectName(QStringLiteral("lblFrimwareTxt"));
    lblFrimwareTxt->setAccessibleName(plainCaption(320));
    cmdDevInfoEx->setObjectName(QStringLiteral("cmdDevInfoEx"));

    auto* layout = new QGridLayout(this);
    layout->addWidget(lblSerialNumber, 0, 0);
    layout->addWidget(txtSerialNumber, 0, 1);
    layout->addWidget(lblFirmware, 1, 0);
    layout->addWidget(lblFrimwareTxt, 1, 1);
    layout->addWidget(cmdDevInfoEx, 2, 0, 1, 3);
    layout->setColumnStretch(2, 1);
}

void GeneralInfoPanel::fill(PlateDevice& plate) {
    txtSerialNumber->setText(plate.SerialNumber());
    lblFrimwareTxt->setText(QString::number(plate.FirmwareMajor()) + u'.' +
                            QString::number(plate.FirmwareMinor()));
}

void GeneralInfoPanel::validateSerialNumber() {
    withPlate([this](PlateDevice& plate) {
        const QString serial = txtSerialNumber->text().trimmed();
        const QString current = plate.SerialNumber();
        if (serial == current)
            return;
        // The plate's number stays in the box unless the plate takes the new one.
        txtSerialNumber->setText(current);
        plate.SetSerialNumber(serial);
        txtSerialNumber->setText(serial);
        Q_EMIT serialNumberChanged();
    });
}

} // namespace kx
