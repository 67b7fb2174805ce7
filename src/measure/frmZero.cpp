#include "measure/frmZero.h"

#include "measure/ZeroStatistics.h"
#include "resources/StringTable.h"
#include "support/NumberFormat.h"
#include "support/NumberInput.h"
#include "support/Rounding.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QStatusBar>
#include <QVBoxLayout>
#include <algorithm>

namespace kx {

namespace {
constexpr int AcquireCaption = 10;
constexpr int OkCaption = 20;
constexpr int CancelCaption = 30;
constexpr int AcquisitionFrameCaption = 100;
constexpr int FrequencyCaption = 110;
constexpr int DurationCaption = 120;
constexpr int NoPlatform = 130;
constexpr int ZeroValuesCaption = 200;
constexpr int AverageCaption = 210;
constexpr int CodeCaption = 211;
constexpr int VoltsCaption = 212;
constexpr int NoiseCaption = 220;
constexpr int CodesCaption = 221;
constexpr int SnrCaption = 222;
constexpr int ChannelCaption = 230; // "Channel 1:", then one number per channel

// The library's settling options of a zero acquisition, passed as the plate expects them.
constexpr qint32 ZeroOption = 30;

QLabel* valueLabel(QLabel* label) {
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    label->setMinimumWidth(label->fontMetrics().horizontalAdvance(QStringLiteral("-88888888")));
    return label;
}
} // namespace

frmZero::frmZero(const ToolContext& context, QWidget* parent)
    : ToolDialog(context, strings::ZeroBlock, parent) {
    setObjectName(QStringLiteral("frmZero"));
    setWindowTitle(text(0));

    cmdOK = new QPushButton(text(OkCaption), this);
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    cmdOK->setDefault(true);
    cmdCancel = new QPushButton(text(CancelCaption), this);
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    ProgressBar1 = makeProgressBar();
    StatusBar1 = makeStatusBar();

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cmdOK);
    buttons->addWidget(cmdCancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(buildAcquisitionFrame());
    layout->addWidget(buildZeroValuesFrame());
    layout->addLayout(buttons);
    layout->addWidget(ProgressBar1);
    layout->addWidget(StatusBar1);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    connect(cmdAcquire, &QPushButton::clicked, this, &frmZero::cmdAcquire_Click);
    connect(cmdOK, &QPushButton::clicked, this, &frmZero::cmdOK_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &QWidget::close);
    // The controls step enables cmdAcquire and cmdCancel; the results of an earlier run stay.
    setDeviceErrorActions(
        {.stop = [this] { stopZero(); }, .recover = [this](DeviceEvent) { showProgress(false); }});
}

QLabel* frmZero::makeLabel(const QString& objectName, const QString& caption) {
    auto* label = new QLabel(caption, this);
    label->setObjectName(objectName);
    return label;
}

QGroupBox* frmZero::buildAcquisitionFrame() {
    fraAcquisition = new QGroupBox(text(AcquisitionFrameCaption), this);
    fraAcquisition->setObjectName(QStringLiteral("fraAcquisition"));
    lblFreq = makeLabel(QStringLiteral("lblFreq"), text(FrequencyCaption));
    lblFreqTxt = makeLabel(QStringLiteral("lblFreqTxt"), {});
    lblDuration = makeLabel(QStringLiteral("lblDuration"), text(DurationCaption));
    txtDuration = new QLineEdit(fraAcquisition);
    txtDuration->setObjectName(QStringLiteral("txtDuration"));
    txtDuration->setMaximumWidth(txtDuration->fontMetrics().horizontalAdvance(u'0') * 10);
    lblDuration->setBuddy(txtDuration);
    cmdAcquire = new QPushButton(text(AcquireCaption), fraAcquisition);
    cmdAcquire->setObjectName(QStringLiteral("cmdAcquire"));

    auto* grid = new QGridLayout(fraAcquisition);
    grid->addWidget(lblFreq, 0, 0);
    grid->addWidget(lblFreqTxt, 0, 1);
    grid->addWidget(lblDuration, 1, 0);
    grid->addWidget(txtDuration, 1, 1);
    grid->addWidget(cmdAcquire, 0, 3, 2, 1, Qt::AlignVCenter);
    grid->setColumnStretch(2, 1);
    return fraAcquisition;
}

QGroupBox* frmZero::buildZeroValuesFrame() {
    fraZeroValues = new QGroupBox(text(ZeroValuesCaption), this);
    fraZeroValues->setObjectName(QStringLiteral("fraZeroValues"));
    auto* grid = new QGridLayout(fraZeroValues);
    const auto heading = [&](const char* name, int caption, int row, int column, int span) {
        grid->addWidget(makeLabel(QLatin1String(name), text(caption)), row, column, 1, span,
                        Qt::AlignHCenter);
    };
    heading("lblAverage", AverageCaption, 0, 1, 2);
    heading("lblNoise", NoiseCaption, 0, 3, 2);
    heading("lblCode", CodeCaption, 1, 1, 1);
    heading("lblVolts", VoltsCaption, 1, 2, 1);
    heading("lblCodes", CodesCaption, 1, 3, 1);
    heading("lblSnr", SnrCaption, 1, 4, 1);
    for (int i = 0; i < Channels; ++i) {
        const int row = i + 2;
        grid->addWidget(makeLabel(QStringLiteral("lblChannel%1").arg(i), text(ChannelCaption + i)),
                        row, 0);
        for (int column : {i, Channels + i}) {
            lblZeroAveTxt[column] =
                valueLabel(makeLabel(QStringLiteral("lblZeroAveTxt%1").arg(column), {}));
            lblZeroSDTxt[column] =
                valueLabel(makeLabel(QStringLiteral("lblZeroSDTxt%1").arg(column), {}));
        }
        grid->addWidget(lblZeroAveTxt[i], row, 1);
        grid->addWidget(lblZeroAveTxt[Channels + i], row, 2);
        grid->addWidget(lblZeroSDTxt[i], row, 3);
        grid->addWidget(lblZeroSDTxt[Channels + i], row, 4);
    }
    return fraZeroValues;
}

void frmZero::loading() {
    cmdAcquire->setEnabled(device() != nullptr);
    if (!device()) {
        lblFreqTxt->setText(text(NoPlatform));
        return;
    }
    runDevice([this] {
        m_frequency = device()->SampleFrequency(Which::Current);
        lblFreqTxt->setText(formatNumber(m_frequency, u"0.000"));
    });
    connect(device(), &PlateDevice::ZeroProgress, this, &frmZero::ZeroProgress);
    connect(device(), &PlateDevice::ZeroDone, this,
            [this](qint32, const ChannelValues& average, const ChannelValues& deviation,
                   const ChannelValues&) { ZeroDone(average, deviation); });
}

void frmZero::cmdAcquire_Click() {
    const std::optional<double> typed = parseNumber(txtDuration->text());
    if (!typed || !device())
        return;
    const double duration = *typed;
    setButtonsEnabled(false);
    const qint32 samples = roundHalfEven(duration * static_cast<double>(m_frequency));
    ProgressBar1->setMaximum(samples);
    ProgressBar1->setValue(0);
    showProgress(true);
    repaint();
    m_acquiring = runDevice([&] {
        device()->FlushData();
        device()->CalibrateSelf();
        device()->StartZero(samples, true, ZeroOption,
                            roundHalfEven(0.5 * static_cast<double>(m_frequency)));
    });
    if (!m_acquiring) {
        showProgress(false);
        setButtonsEnabled(true);
    }
}

void frmZero::ZeroProgress(qint32 samples) {
    if (!m_acquiring)
        return;
    ProgressBar1->setValue(std::min(samples, ProgressBar1->maximum()));
    ProgressBar1->repaint();
}

void frmZero::ZeroDone(const ChannelValues& average, const ChannelValues& deviation) {
    if (!m_acquiring)
        return;
    m_acquiring = false;
    int firmware = 0;
    int resolution = 0;
    runDevice([&] {
        firmware = device()->FirmwareMajor();
        resolution = device()->Resolution();
    });
    const QList<ZeroReadout> readouts =
        zeroReadouts(average, deviation, firmware, resolution, Channels);
    for (int i = 0; i < readouts.size(); ++i) {
        const ZeroReadout& r = readouts[i];
        lblZeroAveTxt[i]->setText(r.averageText);
        lblZeroAveTxt[Channels + i]->setText(r.voltsText);
        lblZeroSDTxt[i]->setText(r.deviationText);
        lblZeroSDTxt[Channels + i]->setText(r.snrText);
    }
    setButtonsEnabled(true);
    showProgress(false);
}

void frmZero::cmdOK_Click() {
    if (device()) {
        runDevice([this] {
            for (int channel = 0; channel < Channels; ++channel) {
                const QString codes = lblZeroAveTxt[channel]->text().trimmed();
                if (codes.isEmpty())
                    continue;
                device()->SetZeroValue(channel, Which::Current, codes.toInt());
                Q_EMIT zeroValueWritten(channel, codes);
            }
        });
    }
    close();
}

void frmZero::setButtonsEnabled(bool enabled) {
    cmdAcquire->setEnabled(enabled);
    cmdOK->setEnabled(enabled);
    cmdCancel->setEnabled(enabled);
}

void frmZero::showProgress(bool shown) {
    StatusBar1->setVisible(!shown);
    ProgressBar1->setVisible(shown);
}

void frmZero::stopZero() {
    m_acquiring = false;
    runDevice([this] { device()->StopAcquisition(); });
}

void frmZero::unloading() {
    if (!device())
        return;
    if (m_acquiring && !deviceRemoved())
        stopZero();
    disconnect(device(), nullptr, this, nullptr);
}

} // namespace kx
