#include "scale/frmScale.h"

#include "resources/StringTable.h"
#include "scale/FormatForce.h"
#include "support/Clock.h"
#include "support/Rounding.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QStatusBar>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <limits>

namespace kx {

namespace {
constexpr int ZeroCaption = 10;
constexpr int DisplayOnCaption = 20;
constexpr int DisplayOffCaption = 30;
constexpr int CloseCaption = 40;
constexpr int NoPlatform = 100;

const QColor DisplayingColour(0, 255, 0);
const QColor StoppedColour(255, 128, 0);

// The library's options of the zero and test acquisitions, passed as the plate expects them.
constexpr qint32 AcquisitionOption = 30;
// A tare found on the plate is zeroed this long after the check.
constexpr int TareSettleMs = 100;
// The window's length: at least one value, and few enough that the count stays exact as a
// single (2^24).
constexpr qint32 LongestWindow = 1 << 24;

qint32 samplesFor(float seconds, float hertz) {
    return roundHalfEven(static_cast<double>(seconds * hertz));
}

qint16 decimalsArgument(qint32 decimals) {
    return static_cast<qint16>(std::clamp<qint32>(decimals, std::numeric_limits<qint16>::min(),
                                                  std::numeric_limits<qint16>::max()));
}

void setTextColour(QLabel* label, const QColor& colour) {
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, colour);
    label->setPalette(palette);
}
} // namespace

frmScale::frmScale(const ToolContext& context, QWidget* parent)
    : ToolDialog(context, strings::ScaleBlock, parent)
    , m_average(ScaleSettings{}.AverageSamples, ScaleSettings{}.AverageResetDifference) {
    setObjectName(QStringLiteral("frmScale"));
    setWindowTitle(text(0));

    cmdZero = new QPushButton(text(ZeroCaption), this);
    cmdZero->setObjectName(QStringLiteral("cmdZero"));
    cmdDisplay = new QPushButton(text(DisplayOnCaption), this);
    cmdDisplay->setObjectName(QStringLiteral("cmdDisplay"));
    cmdClose = new QPushButton(text(CloseCaption), this);
    cmdClose->setObjectName(QStringLiteral("cmdClose"));
    ProgressBar1 = makeProgressBar();
    StatusBar1 = makeStatusBar();
    StatusBar1Panel1 = new QLabel(StatusBar1);
    StatusBar1Panel1->setObjectName(QStringLiteral("StatusBar1Panel1"));
    StatusBar1->addWidget(StatusBar1Panel1, 1);
    // The progress of a zero shows beside the status, so the dialog keeps its size.
    StatusBar1->addPermanentWidget(ProgressBar1, 2);
    tmrPlateZero = clock().createTimer(this);
    tmrPlateZero->setObjectName(QStringLiteral("tmrPlateZero"));

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(cmdZero);
    buttons->addWidget(cmdDisplay);
    buttons->addStretch();
    buttons->addWidget(cmdClose);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(buildDisplay());
    layout->addLayout(buttons);
    layout->addWidget(StatusBar1);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    connect(cmdZero, &QPushButton::clicked, this, &frmScale::cmdZero_Click);
    connect(cmdDisplay, &QPushButton::clicked, this, &frmScale::cmdDisplay_Click);
    connect(cmdClose, &QPushButton::clicked, this, &QWidget::close);
    connect(tmrPlateZero, &Timer::timeout, this, &frmScale::tmrPlateZero_Timer);
    setDeviceErrorActions({
        .stop = [this] { stopRunning(); },
        .showStatus = [this](const QString& status) { StatusBar1Panel1->setText(status); },
        .showLabel =
            [this](const QString& mark) {
                lblError->setText(mark);
                lblError->show();
            },
        // An overrun or clipping only matters to a zero or a load check.
        .applies =
            [this](DeviceEvent event) {
                const bool fault =
                    event == DeviceEvent::BufferOverRun || event == DeviceEvent::DataClipped;
                return !fault || (m_busy && !m_displaying);
            },
    });
}

QWidget* frmScale::buildDisplay() {
    // A dark panel, as on a scale's read-out: green while weighing, orange when stopped.
    auto* panel = new QWidget(this);
    panel->setObjectName(QStringLiteral("picDisplay"));
    panel->setAutoFillBackground(true);
    QPalette dark = panel->palette();
    dark.setColor(QPalette::Window, Qt::black);
    panel->setPalette(dark);

    QFont readingFont = font();
    readingFont.setPointSizeF(readingFont.pointSizeF() * 2.6);
    readingFont.setBold(true);
    auto* column = new QVBoxLayout(panel);
    for (std::size_t i = 0; i < lblData.size(); ++i) {
        lblData[i] = new QLabel(panel);
        lblData[i]->setObjectName(QStringLiteral("lblData%1").arg(i));
        lblData[i]->setFont(readingFont);
        lblData[i]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        // Wide enough for a heavy load at a few decimals, so the dialog keeps its size.
        lblData[i]->setMinimumWidth(
            lblData[i]->fontMetrics().horizontalAdvance(QStringLiteral("-888 lbf -88.88 ozf")));
        setTextColour(lblData[i], StoppedColour);
        column->addWidget(lblData[i]);
    }
    lblError = new QLabel(panel);
    lblError->setObjectName(QStringLiteral("lblError"));
    setTextColour(lblError, Qt::red);
    // The mark takes its place whether shown or not, so the read-out never moves.
    QSizePolicy keepPlace = lblError->sizePolicy();
    keepPlace.setRetainSizeWhenHidden(true);
    lblError->setSizePolicy(keepPlace);
    lblError->hide();
    column->addWidget(lblError, 0, Qt::AlignLeft);
    return panel;
}

void frmScale::loading() {
    if (device()) {
        m_settings = ScaleSettings::load();
        m_average = WeightAverager(std::clamp(m_settings->AverageSamples, 1, LongestWindow),
                                   m_settings->AverageResetDifference);
        m_connected = runDevice([this] {
            StatusBar1Panel1->setText(device()->SerialNumber());
            m_savedFrequency = device()->SampleFrequency(Which::Current);
            device()->SetSampleFrequency(Which::Current, m_settings->ScaleFrequency);
        });
    }
    m_displaying = false;
    if (m_connected) {
        PlateDevice* plate = device();
        connect(plate, &PlateDevice::ForcesIn, this,
                [this](qint32, const Float3& forces, const Float3&) { ForcesIn(forces); });
        connect(plate, &PlateDevice::ZeroProgress, this, &frmScale::ZeroProgress);
        connect(plate, &PlateDevice::ZeroDone, this,
                [this](qint32, const ChannelValues& average, const ChannelValues&,
                       const ChannelValues&) { ZeroDone(average); });
        connect(plate, &PlateDevice::TestDone, this,
                [this](qint32 count, const QList<Float3>& forces, const QList<Float3>&) {
                    TestDone(count, forces);
                });
        tmrPlateZero->setInterval(m_settings->AutoZeroIntervalMs);
        tmrPlateZero->setEnabled(m_settings->AutoZeroEnabled);
    } else {
        tmrPlateZero->setEnabled(false);
        StatusBar1Panel1->setText(text(NoPlatform));
    }
    updateButtons();
    cmdZero->setFocus();
}

void frmScale::updateButtons() {
    cmdZero->setEnabled(m_connected);
    cmdDisplay->setEnabled(m_zeroReady && !m_busy && m_connected);
    cmdClose->setEnabled(!m_busy);
}

void frmScale::cmdDisplay_Click() {
    switchDisplay(!m_displaying);
}

void frmScale::switchDisplay(bool on) {
    if (on) {
        const bool started = runDevice([this] {
            device()->FlushData();
            device()->CalibrateSelf();
            device()->StartAcquisition(true, false, true, false, true);
        });
        if (!started)
            return;
    } else if (!deviceRemoved()) {
        runDevice([this] { device()->StopAcquisition(); });
    }
    m_displaying = on;
    cmdDisplay->setText(text(on ? DisplayOffCaption : DisplayOnCaption));
    for (QLabel* label : lblData)
        setTextColour(label, on ? DisplayingColour : StoppedColour);
    updateButtons();
}

void frmScale::cmdZero_Click() {
    if (m_displaying)
        switchDisplay(false);
    zeroProcedure();
}

void frmScale::zeroProcedure() {
    if (m_displaying)
        return;
    tmrPlateZero->setEnabled(false);
    m_busy = true;
    const bool started = runDevice([this] {
        device()->SetSampleFrequency(Which::Current, m_settings->ScaleFrequency);
        updateButtons();
        const float frequency = device()->SampleFrequency(Which::Current);
        const qint32 samples = samplesFor(m_settings->ZeroDuration, frequency);
        ProgressBar1->setMaximum(samples);
        ProgressBar1->setValue(0);
        ProgressBar1->show();
        device()->StartZero(samples, true, AcquisitionOption,
                            roundHalfEven(static_cast<double>(frequency) * 0.5));
    });
    if (!started)
        endBusy();
}

void frmScale::ZeroProgress(qint32 samples) {
    if (!m_displaying)
        ProgressBar1->setValue(std::min(samples, ProgressBar1->maximum()));
}

void frmScale::ZeroDone(const ChannelValues& zeroValues) {
    // Only a zero of ours that made progress counts.
    if (m_displaying || ProgressBar1->value() <= 0)
        return;
    constexpr int Channels = 4;
    runDevice([&] {
        for (int channel = 0; channel < Channels; ++channel) {
            const qint32 codes =
                channel < zeroValues.size() ? roundHalfEven(zeroValues[channel]) : 0;
            device()->SetZeroValue(channel, Which::Current, codes);
        }
    });
    ProgressBar1->hide();
    m_busy = false;
    m_average.reset();
    m_zeroReady = true;
    resumeAutoZero();
    updateButtons();
    cmdDisplay_Click();
}

void frmScale::tmrPlateZero_Timer() {
    tmrPlateZero->setEnabled(false);
    if (m_displaying || deviceRemoved())
        return;
    m_busy = true;
    updateButtons();
    m_checking = runDevice([this] {
        device()->FlushData();
        device()->CalibrateSelf();
        const qint32 samples = std::max(
            1, samplesFor(m_settings->AutoZeroDuration, device()->SampleFrequency(Which::Current)));
        ProgressBar1->setMaximum(samples);
        ProgressBar1->setValue(1);
        ProgressBar1->hide();
        device()->StartTest(samples, true, true, false, AcquisitionOption, true);
    });
    if (!m_checking)
        endBusy();
}

void frmScale::TestDone(qint32 count, const QList<Float3>& forces) {
    if (m_displaying || !m_checking)
        return;
    m_checking = false;
    qint32 expected = 0;
    runDevice([&] {
        expected =
            samplesFor(m_settings->AutoZeroDuration, device()->SampleFrequency(Which::Current));
    });
    if (count != expected) {
        endBusy();
        return;
    }
    float sum = 0.0f;
    for (const Float3& sample : forces)
        sum += sample[0];
    const float load = std::abs(sum / static_cast<float>(forces.size()));
    if (load > m_settings->MinTare && load < m_settings->MaxTare) {
        // A tare rests on the plate: zero it once it has settled.
        clock().singleShot(TareSettleMs, this, [this] {
            if (device() && !deviceRemoved())
                zeroProcedure();
        });
    } else {
        // Nothing on the plate, or a person or a real load: check again later.
        ProgressBar1->hide();
        resumeAutoZero();
    }
    m_busy = false;
    m_zeroReady = true;
    updateButtons();
}

void frmScale::resumeAutoZero() {
    if (m_connected && m_settings->AutoZeroEnabled)
        tmrPlateZero->setEnabled(true);
}

void frmScale::endBusy() {
    ProgressBar1->hide();
    resumeAutoZero();
    m_busy = false;
    updateButtons();
}

void frmScale::stopRunning() {
    if (m_displaying)
        switchDisplay(false);
    else
        runDevice([this] { device()->StopAcquisition(); });
    m_checking = false;
    endBusy();
}

void frmScale::ForcesIn(const Float3& forces) {
    m_average.add(forces[0]);
    if (!m_throttle.due(clock().wallTickCount(), m_settings->DisplayIntervalMs))
        return;
    const double weight = m_average.weight();
    const qint16 decimals = decimalsArgument(m_settings->DisplayDecimals);
    lblData[0]->setText(FormatForce(weight, forceunit::Kilograms, decimals));
    lblData[1]->setText(FormatForce(weight, forceunit::PoundsOunces, decimals));
    if (!lblError->isHidden())
        lblError->hide();
}

void frmScale::unloading() {
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    if (m_displaying)
        switchDisplay(false);
    tmrPlateZero->setEnabled(false);
    if (m_connected && !deviceRemoved()) {
        runDevice([this] {
            // A zero or check left running would outlive the dialog.
            if (m_busy)
                device()->StopAcquisition();
            device()->SetSampleFrequency(Which::Current, m_savedFrequency);
        });
    }
    if (m_settings)
        m_settings->save();
    if (device())
        disconnect(device(), nullptr, this, nullptr);
    QGuiApplication::restoreOverrideCursor();
}

} // namespace kx
