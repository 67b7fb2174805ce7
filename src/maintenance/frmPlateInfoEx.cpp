#include "maintenance/frmPlateInfoEx.h"

#include "maintenance/ServiceRecordText.h"
#include "resources/StringTable.h"
#include "support/NumberFormat.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <functional>

namespace kx {

namespace {

constexpr int CloseText = 10;
constexpr int ResetTempText = 20;
constexpr int ResetEnumText = 30;
constexpr int ResetTimeText = 40;
constexpr int GeneralInfoText = 100;
constexpr int SerialNumberText = 110;
constexpr int NoPlatformText = 111;
constexpr int FirmwareText = 120;
constexpr int TMaxText = 130;
constexpr int TactText = 140;
constexpr int TMinText = 150;
constexpr int NUsesText = 160;
constexpr int TimeOnText = 170;
constexpr int DatesText = 200;
constexpr int CalDateText = 210;
constexpr int CalOperText = 211;
constexpr int InspDateText = 220;
constexpr int InspOperText = 221;

// ExecuteCommand's selector for the plate's maintenance commands.
constexpr qint16 CommandSelector = -1;

// Wide enough for a long date and time, so the dialog does not jump when the record arrives.
constexpr int ValueMinimumCharacters = 44;

// A record is shown only when the plate holds a valid date for it.
void showRecord(QLabel* dateText, QLabel* operatorText, const QDateTime& date,
                const std::function<QString()>& readOperator) {
    if (!date.isValid()) {
        dateText->clear();
        operatorText->clear();
        return;
    }
    dateText->setText(formatRecordDate(date));
    operatorText->setText(readOperator());
}

} // namespace

frmPlateInfoEx::frmPlateInfoEx(const ToolContext& context, QWidget* parent)
    : ToolDialog(context, strings::PlateInfoExBlock, parent) {
    setObjectName(QStringLiteral("frmPlateInfoEx"));
    setWindowTitle(text(0));

    FrmGeneralInfo = new QGroupBox(text(GeneralInfoText), this);
    FrmGeneralInfo->setObjectName(QStringLiteral("FrmGeneralInfo"));
    auto* general = new QFormLayout(FrmGeneralInfo);
    addField(general, lblSerialNumber, "lblSerialNumber", SerialNumberText, lblSerialNumberTxt,
             "lblSerialNumberTxt");
    addField(general, lblFirmware, "lblFirmware", FirmwareText, lblFrimwareTxt, "lblFrimwareTxt");
    addField(general, lblTMax, "lblTMax", TMaxText, lblTMaxTxt, "lblTMaxTxt");
    addField(general, lblTact, "lblTact", TactText, lblTactTxt, "lblTactTxt");
    addField(general, lblTMin, "lblTMin", TMinText, lblTMinTxt, "lblTMinTxt");
    addField(general, lblNUses, "lblNUses", NUsesText, lblNUsesTxt, "lblNUsesTxt");
    addField(general, lblTimeOn, "lblTimeOn", TimeOnText, lblTimeOnTxt, "lblTimeOnTxt");

    frmDates = new QGroupBox(text(DatesText), this);
    frmDates->setObjectName(QStringLiteral("frmDates"));
    auto* dates = new QFormLayout(frmDates);
    addField(dates, lblCalDate, "lblCalDate", CalDateText, lblCalDateTxt, "lblCalDateTxt");
    addField(dates, lblCalOper, "lblCalOper", CalOperText, lblCalOperTxt, "lblCalOperTxt");
    addField(dates, lblInspDate, "lblInspDate", InspDateText, lblInspDateTxt, "lblInspDateTxt");
    addField(dates, lblInspOper, "lblInspOper", InspOperText, lblInspOperTxt, "lblInspOperTxt");
    alignCaptions();

    m_resetButtons = new QWidget(this);
    m_resetButtons->setObjectName(QStringLiteral("fraReset"));
    cmdResetTemp = makeButton("cmdResetTemp", ResetTempText, Command::ResetTemperatures);
    cmdResetEnum = makeButton("cmdResetEnum", ResetEnumText, Command::ResetEnumerations);
    cmdResetTime = makeButton("cmdResetTime", ResetTimeText, Command::ResetTimeInService);
    auto* resets = new QHBoxLayout(m_resetButtons);
    resets->setContentsMargins({});
    resets->addWidget(cmdResetTemp);
    resets->addWidget(cmdResetEnum);
    resets->addWidget(cmdResetTime);
    m_resetButtons->setEnabled(false);

    cmdOK = new QPushButton(text(CloseText), this);
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    cmdOK->setDefault(true);
    connect(cmdOK, &QPushButton::clicked, this, &QDialog::close);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_resetButtons);
    buttons->addStretch();
    buttons->addWidget(cmdOK);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(FrmGeneralInfo);
    layout->addWidget(frmDates);
    layout->addLayout(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

void frmPlateInfoEx::addField(QFormLayout* form, QLabel*& caption, const char* captionName,
                              int captionOffset, QLabel*& value, const char* valueName) {
    QWidget* frame = form->parentWidget();
    caption = new QLabel(text(captionOffset), frame);
    caption->setObjectName(QLatin1String(captionName));
    m_captions << caption;
    value = new QLabel(frame);
    value->setObjectName(QLatin1String(valueName));
    value->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    value->setMinimumWidth(value->fontMetrics().averageCharWidth() * ValueMinimumCharacters);
    // Technicians copy serial numbers and dates into their reports.
    value->setTextInteractionFlags(Qt::TextSelectableByMouse);
    form->addRow(caption, value);
}

void frmPlateInfoEx::alignCaptions() {
    // Both frames start their value column at the same place.
    int width = 0;
    for (const QLabel* caption : std::as_const(m_captions))
        width = std::max(width, caption->sizeHint().width());
    for (QLabel* caption : std::as_const(m_captions))
        caption->setMinimumWidth(width);
}

QPushButton* frmPlateInfoEx::makeButton(const char* objectName, int offset, Command command) {
    auto* button = new QPushButton(text(offset), m_resetButtons);
    button->setObjectName(QLatin1String(objectName));
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, [this, command] { execute(command); });
    return button;
}

void frmPlateInfoEx::setDevice(PlateDevice* plate) {
    ToolDialog::setDevice(plate);
    if (!plate) {
        m_resetButtons->setEnabled(false);
        lblSerialNumberTxt->setText(text(NoPlatformText));
        return;
    }
    m_resetButtons->setEnabled(m_servicePanels);
    readRecord();
}

void frmPlateInfoEx::readRecord() {
    PlateDevice* plate = device();
    if (!plate)
        return;
    // Field by field: a failing read ends the pass and leaves the fields after it as they were.
    runDevice([&] {
        lblSerialNumberTxt->setText(plate->SerialNumber());
        // Major before minor: the operands of + are not sequenced.
        const quint8 major = plate->FirmwareMajor();
        lblFrimwareTxt->setText(QString::number(major) + u'.' +
                                QString::number(plate->FirmwareMinor()));
        lblTMaxTxt->setText(formatTemperature(plate->MaxTemperature()));
        lblTactTxt->setText(formatTemperature(plate->Temperature()));
        lblTMinTxt->setText(formatTemperature(plate->MinTemperature()));
        lblNUsesTxt->setText(formatGeneral(plate->EnumerationCount()));
        lblTimeOnTxt->setText(formatTimeInService(plate->TimeInService()));
        showRecord(lblCalDateTxt, lblCalOperTxt, plate->CalibrationRecordDate(),
                   [plate] { return plate->CalibrationRecordOperator(); });
        showRecord(lblInspDateTxt, lblInspOperTxt, plate->InspectionRecordDate(),
                   [plate] { return plate->InspectionRecordOperator(); });
    });
}

void frmPlateInfoEx::execute(Command command) {
    PlateDevice* plate = device();
    if (!plate)
        return;
    if (runDevice([&] { plate->ExecuteCommand(CommandSelector, static_cast<qint16>(command)); }))
        readRecord();
}

} // namespace kx
