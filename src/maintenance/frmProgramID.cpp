#include "maintenance/frmProgramID.h"

#include "device/TextBoxValidation.h"
#include "maintenance/HexByte.h"
#include "maintenance/HexByteValidator.h"
#include "maintenance/UsbIdentityPresets.h"
#include "resources/StringTable.h"
#include "support/Prompt.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <QStyleOptionFrame>
#include <QVBoxLayout>

namespace kx {

namespace {

constexpr int SetText = 10;
constexpr int GetText = 20;
constexpr int ExitText = 30;
constexpr int EepromText = 100;
constexpr int VidText = 110;
constexpr int PidText = 120;
constexpr int DidText = 130;
constexpr int FpDefaultsText = 200;
constexpr int BpDefaultsText = 210;

// Room for three of the widest digits, so an over-long entry is seen whole before it is
// refused.
constexpr int BoxCharacters = 3;

// "Vendor ID:" names its boxes as "Vendor ID".
QString withoutColon(const QString& caption) {
    return caption.endsWith(u':') ? caption.chopped(1) : caption;
}

} // namespace

frmProgramID::frmProgramID(const ToolContext& context, QWidget* parent)
    : ToolDialog(context, strings::ProgramIdBlock, parent) {
    setObjectName(QStringLiteral("frmProgramID"));
    setWindowTitle(text(0));

    lblEEPROM = makeLabel("lblEEPROM", EepromText);
    lblVID = makeLabel("lblVID", VidText);
    lblPID = makeLabel("lblPID", PidText);
    lblDID = makeLabel("lblDID", DidText);
    txtEEPROM = makeBox(QStringLiteral("txtEEPROM"), withoutColon(lblEEPROM->text()));
    const auto makePair = [this](const char* name, const QLabel* label) {
        const QString base = QLatin1String(name);
        const QString caption = withoutColon(label->text());
        return std::array<QLineEdit*, 2>{
            makeBox(base + u'0', tr("%1, first byte").arg(caption)),
            makeBox(base + u'1', tr("%1, second byte").arg(caption)),
        };
    };
    txtVID = makePair("txtVID", lblVID);
    txtPID = makePair("txtPID", lblPID);
    txtDID = makePair("txtDID", lblDID);
    m_boxes = {txtEEPROM, txtVID[0], txtVID[1], txtPID[0], txtPID[1], txtDID[0], txtDID[1]};

    cmdGet = makeButton("cmdGet", GetText);
    cmdSet = makeButton("cmdSet", SetText);
    cmdFPDefaults = makeButton("cmdFPDefaults", FpDefaultsText);
    cmdBPDefaults = makeButton("cmdBPDefaults", BpDefaultsText);
    cmdExit = makeButton("cmdExit", ExitText);
    connect(cmdGet, &QPushButton::clicked, this, &frmProgramID::cmdGet_Click);
    connect(cmdSet, &QPushButton::clicked, this, &frmProgramID::cmdSet_Click);
    connect(cmdFPDefaults, &QPushButton::clicked, this, &frmProgramID::cmdFPDefaults_Click);
    connect(cmdBPDefaults, &QPushButton::clicked, this, &frmProgramID::cmdBPDefaults_Click);
    connect(cmdExit, &QPushButton::clicked, this, &QDialog::close);

    auto* boxes = new QGridLayout;
    boxes->addWidget(lblEEPROM, 0, 0);
    boxes->addWidget(txtEEPROM, 0, 1);
    const std::array<std::pair<QLabel*, std::array<QLineEdit*, 2>>, 3> pairs{
        {{lblVID, txtVID}, {lblPID, txtPID}, {lblDID, txtDID}}};
    for (int row = 1; const auto& [label, pair] : pairs) {
        boxes->addWidget(label, row, 0);
        boxes->addWidget(pair[0], row, 1);
        boxes->addWidget(pair[1], row, 2);
        ++row;
    }
    boxes->setRowStretch(boxes->rowCount(), 1);

    auto* buttons = new QVBoxLayout;
    buttons->addWidget(cmdGet);
    buttons->addWidget(cmdSet);
    // The presets apart from the buttons that talk to the plate.
    buttons->addSpacing(fontMetrics().height());
    buttons->addWidget(cmdFPDefaults);
    buttons->addWidget(cmdBPDefaults);
    buttons->addStretch();
    buttons->addWidget(cmdExit);

    auto* layout = new QHBoxLayout(this);
    layout->addLayout(boxes);
    layout->addSpacing(fontMetrics().height());
    layout->addLayout(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

QLabel* frmProgramID::makeLabel(const char* objectName, int offset) {
    auto* label = new QLabel(text(offset), this);
    label->setObjectName(QLatin1String(objectName));
    return label;
}

QLineEdit* frmProgramID::makeBox(const QString& objectName, const QString& accessibleName) {
    auto* box = new QLineEdit(this);
    box->setObjectName(objectName);
    box->setAccessibleName(accessibleName);
    box->setValidator(new HexByteValidator(box));
    box->setAlignment(Qt::AlignCenter);
    QStyleOptionFrame option;
    option.initFrom(box);
    const QSize digits(box->fontMetrics().horizontalAdvance(QString(BoxCharacters, u'W')),
                       box->sizeHint().height());
    box->setFixedWidth(
        style()->sizeFromContents(QStyle::CT_LineEdit, &option, digits, box).width());
    // The boxes act only on Set; they share the plate boxes' select-all on focus.
    TextBoxValidation::attach(box, [] {});
    return box;
}

QPushButton* frmProgramID::makeButton(const char* objectName, int offset) {
    auto* button = new QPushButton(text(offset), this);
    button->setObjectName(QLatin1String(objectName));
    button->setAutoDefault(false);
    return button;
}

void frmProgramID::showIdentity(const UsbIdentity& identity) {
    for (std::size_t i = 0; i < identity.size(); ++i)
        m_boxes[i]->setText(formatHexByte(identity[i]));
}

void frmProgramID::cmdGet_Click() {
    PlateDevice* plate = device();
    if (!plate)
        return;
    runDevice([&] { showIdentity(plate->GetUsbIdentity()); });
}

void frmProgramID::cmdSet_Click() {
    PlateDevice* plate = device();
    if (!plate)
        return;
    UsbIdentity identity{};
    for (std::size_t i = 0; i < m_boxes.size(); ++i) {
        QLineEdit* box = m_boxes[i];
        const std::optional<quint8> value = parseHexByte(box->text());
        if (!value) {
            // Nothing is written unless every box holds a byte.
            const QString problem = box->text().isEmpty()
                                        ? tr("%1 is empty.").arg(box->accessibleName())
                                        : tr("%1: %2 is not a byte; the largest is FF (255).")
                                              .arg(box->accessibleName(), box->text());
            prompt().critical(problem + tr("\n\nNothing was written to the platform."));
            box->setFocus();
            box->selectAll();
            return;
        }
        identity[i] = *value;
    }
    runDevice([&] { plate->SetUsbIdentity(identity); });
}

void frmProgramID::cmdFPDefaults_Click() {
    PlateDevice* plate = device();
    if (!plate)
        return;
    runDevice([&] { showIdentity(forcePlatformDefaults(plate->FirmwareMajor())); });
}

void frmProgramID::cmdBPDefaults_Click() {
    showIdentity(secondPlateDefaults());
}

} // namespace kx
