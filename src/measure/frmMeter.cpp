#include "measure/frmMeter.h"

#include "measure/MeterReadout.h"
#include "measure/MultipleChoice.h"
#include "resources/StringTable.h"
#include "support/Clock.h"
#include "support/NumberFormat.h"
#include "support/Rounding.h"

#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QStatusBar>
#include <QVBoxLayout>
#include <algorithm>

namespace kx {

namespace {
constexpr int DisplayOnCaption = 10;
constexpr int DisplayOffCaption = 20;
constexpr int CloseCaption = 30;
constexpr int PlateFrameCaption = 100;
constexpr int SerialNumberCaption = 110;
constexpr int NoSerialNumber = 111;
constexpr int FirmwareCaption = 120;
constexpr int ExcitationCaption = 130;
constexpr int SpeedCaptions = 200;
constexpr int Channels = 3;
} // namespace

frmMeter::frmMeter(const ToolContext& context, QWidget* parent)
    : ToolDialog(context, strings::MeterBlock, parent) {
    setObjectName(QStringLiteral("frmMeter"));
    setWindowTitle(text(0));

    FrmPlate = new QGroupBox(text(PlateFrameCaption), this);
    FrmPlate->setObjectName(QStringLiteral("FrmPlate"));
    lblSerialNumberCap = makeLabel("lblSerialNumberCap", text(SerialNumberCaption));
    lblSerialNumber = makeLabel("lblSerialNumber", {});
    lblFirmwareCap = makeLabel("lblFirmwareCap", text(FirmwareCaption));
    lblFirmware = makeLabel("lblFirmware", {});
    lblExcVCap = makeLabel("lblExcVCap", text(ExcitationCaption));
    lblExcV = makeLabel("lblExcV", {});
    // A negative excitation surprises a newcomer: the tip says why it is so.
    for (QLabel* label : {lblExcVCap, lblExcV})
        label->setToolTip(strings::text(strings::meter::ExcitationHint));
    auto* plate = new QGridLayout(FrmPlate);
    const std::array<std::pair<QLabel*, QLabel*>, 3> rows{{{lblSerialNumberCap, lblSerialNumber},
                                                           {lblFirmwareCap, lblFirmware},
                                                           {lblExcVCap, lblExcV}}};
    for (int row = 0; row < static_cast<int>(rows.size()); ++row) {
        plate->addWidget(rows[row].first, row, 0);
        plate->addWidget(rows[row].second, row, 1);
    }
    plate->setColumnStretch(1, 1);

    lblData = makeLabel("lblData", {});
    QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    fixed.setPointSizeF(fixed.pointSizeF() * 1.5);
    lblData->setFont(fixed);
    lblData->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    lblData->setMargin(6);
    // Room for three lines at their widest, so the dialog keeps its size as values change.
    QStringList widest;
    for (int channel = 1; channel <= Channels; ++channel)
        widest << meterLine(channel, -8.888888);
    lblData->setMinimumSize(lblData->fontMetrics().size(0, widest.join(u'\n')) + QSize(16, 16));

    mchSpeed = new MultipleChoice(this);
    mchSpeed->setObjectName(QStringLiteral("mchSpeed"));
    mchSpeed->setCaptions(text(SpeedCaptions));

    lblError = makeLabel("lblError", {});
    QFont bold = lblError->font();
    bold.setBold(true);
    lblError->setFont(bold);
    QPalette red = lblError->palette();
    red.setColor(QPalette::WindowText, Qt::red);
    lblError->setPalette(red);
    // The mark takes its place whether shown or not, so the row keeps its layout.
    const QFontMetrics marks(bold);
    lblError->setMinimumWidth(std::max(marks.horizontalAdvance(text(strings::OverrunOffset)),
                                       marks.horizontalAdvance(text(strings::ClippingOffset))));
    QSizePolicy keepPlace = lblError->sizePolicy();
    keepPlace.setRetainSizeWhenHidden(true);
    lblError->setSizePolicy(keepPlace);
    lblError->hide();

    cmdDisplay = new QPushButton(text(DisplayOnCaption), this);
    cmdDisplay->setObjectName(QStringLiteral("cmdDisplay"));
    cmdOK = new QPushButton(text(CloseCaption), this);
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    StatusBar1 = makeStatusBar();

    auto* speedRow = new QHBoxLayout;
    speedRow->addWidget(mchSpeed);
    speedRow->addStretch();
    speedRow->addWidget(lblError);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cmdDisplay);
    buttons->addWidget(cmdOK);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(FrmPlate);
    layout->addWidget(lblData);
    layout->addLayout(speedRow);
    layout->addLayout(buttons);
    layout->addWidget(StatusBar1);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    connect(cmdDisplay, &QPushButton::clicked, this, &frmMeter::cmdDisplay_Click);
    connect(cmdOK, &QPushButton::clicked, this, &QWidget::close);
    setDeviceErrorActions({
        .stop = [this] { switchDisplayOff(); },
        .showLabel =
            [this](const QString& mark) {
                lblError->setText(mark);
                lblError->show();
            },
    });
}

QLabel* frmMeter::makeLabel(const char* objectName, const QString& caption) {
    auto* label = new QLabel(caption, this);
    label->setObjectName(QLatin1String(objectName));
    return label;
}

void frmMeter::loading() {
    m_settings = MeterSettings::load();
    m_basePeriodMs = periodMsFromHertz(m_settings.RefreshRateHz);
    lblExcV->setText(formatNumber(m_settings.excitationVolts(), u"0.000 V"));
    cmdDisplay->setEnabled(device() != nullptr);
    if (device()) {
        runDevice([this] {
            PlateDevice& plate = *device();
            const QString serial = plate.SerialNumber().trimmed();
            lblSerialNumber->setText(serial.isEmpty() ? text(NoSerialNumber) : serial);
            const int firmware = plate.FirmwareMajor();
            lblFirmware->setText(QString::number(firmware) + u'.' +
                                 QString::number(plate.FirmwareMinor()));
            PlateConfiguration saved{plate.GageVoltage(Which::Current),
                                     plate.SampleFrequency(Which::Current)};
            for (int channel = 0; channel < static_cast<int>(saved.zeroValues.size()); ++channel)
                saved.zeroValues[channel] = plate.ZeroValue(channel, Which::Current);
            m_saved = saved;

            plate.SetGageVoltage(Which::Current, m_settings.excitationVolts());
            plate.SetSampleFrequency(Which::Current, static_cast<float>(m_settings.SamplingFreqHz));
            for (int channel = 0; channel < static_cast<int>(saved.zeroValues.size()); ++channel)
                plate.SetZeroValue(channel, Which::Current, meterZeroCodes(firmware));
        });
        connect(device(), &PlateDevice::ForcesIn, this,
                [this](qint32, const Float3&, const Float3& volts) { ForcesIn(volts); });
    }
    // Through the first choice to the second, as the control always opened.
    mchSpeed->setValue(meterspeed::Fast);
    mchSpeed->repaint();
    mchSpeed->setValue(meterspeed::Medium);
    mchSpeed->repaint();
}

void frmMeter::cmdDisplay_Click() {
    if (m_displaying) {
        switchDisplayOff();
        return;
    }
    const bool started = runDevice([this] {
        device()->FlushData();
        device()->CalibrateSelf();
        device()->StartAcquisition(true, false, true, false, true);
    });
    if (!started)
        return;
    m_displaying = true;
    m_volts = {};
    lblError->hide();
    cmdDisplay->setText(text(DisplayOffCaption));
}

void frmMeter::switchDisplayOff() {
    if (!m_displaying)
        return;
    m_displaying = false;
    cmdDisplay->setText(text(DisplayOnCaption));
    if (!deviceRemoved())
        runDevice([this] { device()->StopAcquisition(); });
    repaint();
}

void frmMeter::ForcesIn(const Float3& volts) {
    m_volts.add(volts);
    if (!m_throttle.due(clock().wallTickCount(),
                        meterPeriodMs(m_basePeriodMs, mchSpeed->Value())))
        return;
    const std::array<double, 3> means = m_volts.takeMeans();
    QStringList lines;
    for (int channel = 1; channel <= Channels; ++channel)
        lines << meterLine(channel, means[channel - 1]);
    lblData->setText(lines.join(u'\n'));
}

void frmMeter::unloading() {
    switchDisplayOff();
    if (device() && m_saved && !deviceRemoved()) {
        runDevice([this] {
            PlateDevice& plate = *device();
            plate.SetGageVoltage(Which::Current, m_saved->gageVoltage);
            plate.SetSampleFrequency(Which::Current, m_saved->sampleFrequency);
            for (int channel = 0; channel < static_cast<int>(m_saved->zeroValues.size()); ++channel)
                plate.SetZeroValue(channel, Which::Current, m_saved->zeroValues[channel]);
        });
    }
    if (device())
        disconnect(device(), nullptr, this, nullptr);
    m_settings.save();
}

} // namespace kx
