#include "app/ZeroPanel.h"

#include "app/PlateInput.h"
#include "resources/StringTable.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <algorithm>

namespace kx {

namespace {
constexpr int ChannelCaption = 810; // "Channel 1:"; the others follow in steps of 10
constexpr int DefaultCaption = 850;
constexpr int CurrentCaption = 860;

// The range of a zero value: unsigned 24-bit converter codes before firmware 2, signed after.
qint32 clampToFirmwareRange(qint32 codes, int firmwareMajor) {
    if (firmwareMajor < 2)
        return std::clamp(codes, 0, 0xFFFFFF);
    return std::clamp(codes, -(1 << 23), (1 << 23) - 1);
}
} // namespace

ZeroPanel::ZeroPanel(Prompt& prompt, const SelectedPlate& plate, QWidget* parent)
    : PlatePanel("frmZero", 800, prompt, plate, parent)
    , lblZeroDef(makeLabel("lblZeroDef", DefaultCaption))
    , lblZeroCurr(makeLabel("lblZeroCurr", CurrentCaption)) {
    auto* grid = new QGridLayout;
    grid->addWidget(lblZeroDef, 0, 1, Qt::AlignHCenter);
    grid->addWidget(lblZeroCurr, 0, 2, Qt::AlignHCenter);
    for (int i = 0; i < Channels; ++i) {
        const int caption = ChannelCaption + 10 * i;
        const QString index = QString::number(i);
        lblZero[i] = makeLabel(qPrintable(QStringLiteral("lblZero") + index), caption);
        txtZeroDef[i] = makeBox(QStringLiteral("txtZeroDef") + index,
                                plainCaption(caption) + u' ' + plainCaption(DefaultCaption), 9,
                                [this, i] { validate(i, Which::Default); });
        txtZeroCurr[i] = makeBox(QStringLiteral("txtZeroCurr") + index,
                                 plainCaption(caption) + u' ' + plainCaption(CurrentCaption), 9,
                                 [this, i] { validate(i, Which::Current); });
        grid->addWidget(lblZero[i], i + 1, 0);
        grid->addWidget(txtZeroDef[i], i + 1, 1);
        grid->addWidget(txtZeroCurr[i], i + 1, 2);
    }
    grid->setColumnStretch(3, 1);
    cmdStoreDefZero = new QPushButton(strings::text(870), this);
    cmdStoreDefZero->setObjectName(QStringLiteral("cmdStoreDefZero"));
    connect(cmdStoreDefZero, &QPushButton::clicked, this, &ZeroPanel::storeDefaults);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addWidget(cmdStoreDefZero);
    hideFourthChannel();
}

QLineEdit* ZeroPanel::box(int channel, Which which) const {
    return which == Which::Current ? txtZeroCurr[channel] : txtZeroDef[channel];
}

void ZeroPanel::setChannelVisible(int channel, bool visible) {
    lblZero[channel]->setVisible(visible);
    txtZeroDef[channel]->setVisible(visible);
    txtZeroCurr[channel]->setVisible(visible);
}

void ZeroPanel::hideFourthChannel() {
    txtZeroDef[3]->setText(QStringLiteral("0"));
    txtZeroCurr[3]->setText(QStringLiteral("0"));
    setChannelVisible(3, false);
}

void ZeroPanel::fillChannel(PlateDevice& plate, int channel) {
    txtZeroDef[channel]->setText(QString::number(plate.ZeroValue(channel, Which::Default)));
    txtZeroCurr[channel]->setText(QString::number(plate.ZeroValue(channel, Which::Current)));
    setChannelVisible(channel, true);
}

void ZeroPanel::validate(int channel, Which which) {
    if (!hasPlate())
        return;
    QLineEdit* edit = box(channel, which);
    const QString text = edit->text().trimmed();
    if (text.isEmpty())
        return;
    const auto showZero = [&](PlateDevice& plate) {
        edit->setText(QString::number(plate.ZeroValue(channel, which)));
    };
    const std::optional<double> value = parseNumber(text);
    if (!value) {
        rejectInput(showZero);
        return;
    }
    withPlate([&](PlateDevice& plate) {
        plate.SetZeroValue(channel, which,
                           clampToFirmwareRange(toInt32(*value), plate.FirmwareMajor()));
        showZero(plate);
    });
}

void ZeroPanel::storeDefaults() {
    for (int i = 0; i < Channels; ++i) {
        if (txtZeroCurr[i]->text().trimmed().isEmpty())
            txtZeroCurr[i]->setText(QStringLiteral("0"));
        txtZeroDef[i]->setText(txtZeroCurr[i]->text());
        validate(i, Which::Default);
    }
}

} // namespace kx
