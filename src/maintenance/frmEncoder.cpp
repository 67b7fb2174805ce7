#include "maintenance/frmEncoder.h"

#include "resources/StringTable.h"
#include "support/Clock.h"
#include "support/NumberFormat.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

namespace kx {

namespace {
constexpr int OkText = 10;
constexpr int CaptionText = 100;
// Room for a full 32-bit value, so the dialog keeps its size while the value changes.
constexpr int ValueCharacters = 12;
constexpr int TitleBarButtonsWidth = 80;
} // namespace

frmEncoder::frmEncoder(const ToolContext& context, QWidget* parent)
    : ToolDialog(context, strings::EncoderBlock, parent) {
    setObjectName(QStringLiteral("frmEncoder"));
    setWindowTitle(text(0));

    Label2 = new QLabel(text(CaptionText), this);
    Label2->setObjectName(QStringLiteral("Label2"));
    Label1 = new QLabel(this);
    Label1->setObjectName(QStringLiteral("Label1"));
    Label1->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    Label1->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    Label1->setMinimumWidth(
        Label1->fontMetrics().horizontalAdvance(QString(ValueCharacters, u'0')));
    cmdOK = new QPushButton(text(OkText), this);
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    cmdOK->setDefault(true);
    connect(cmdOK, &QPushButton::clicked, this, &QDialog::close);

    auto* layout = new QGridLayout(this);
    layout->addWidget(Label2, 0, 0);
    layout->addWidget(Label1, 0, 1);
    layout->addWidget(cmdOK, 1, 1, Qt::AlignRight);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    // The window would otherwise be narrower than its own title.
    const int titleWidth = fontMetrics().horizontalAdvance(windowTitle()) + TitleBarButtonsWidth;
    layout->setColumnMinimumWidth(1, titleWidth - Label2->sizeHint().width());

    Timer1 = clock().createTimer(this);
    Timer1->setObjectName(QStringLiteral("Timer1"));
    Timer1->setInterval(PollIntervalMs);
    connect(Timer1, &Timer::timeout, this, &frmEncoder::Timer1_Timer);
}

void frmEncoder::setDevice(PlateDevice* plate) {
    if (PlateDevice* previous = device())
        disconnect(previous, &PlateDevice::EncoderIn, this, &frmEncoder::EncoderIn);
    ToolDialog::setDevice(plate);
    if (plate)
        connect(plate, &PlateDevice::EncoderIn, this, &frmEncoder::EncoderIn);
    Timer1->setEnabled(plate != nullptr);
}

void frmEncoder::unloading() {
    Timer1->stop();
}

void frmEncoder::Timer1_Timer() {
    PlateDevice* plate = device();
    // An unplugged plate's calls only fail; the dialog is about to close.
    if (!plate || deviceRemoved())
        return;
    // A failing request would fail again on every tick: report it once and stop polling.
    Timer1->stop();
    if (runDevice([plate] { plate->RequestEncoder(); }))
        Timer1->start(PollIntervalMs);
}

void frmEncoder::EncoderIn(qint32 value) {
    Label1->setText(formatGeneral(value));
}

} // namespace kx
