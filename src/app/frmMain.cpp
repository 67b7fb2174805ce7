#include "app/frmMain.h"

#include "app/AppCountersPanel.h"
#include "app/ConverterCommandsPanel.h"
#include "app/ConverterPanel.h"
#include "app/GeneralInfoPanel.h"
#include "app/MatrixPanel.h"
#include "app/StatusPanel.h"
#include "app/ZeroPanel.h"
#include "app/frmSplash.h"
#include "calibration/frmCalibrate.h"
#include "device/PlateError.h"
#include "device/SettingsSaveNotice.h"
#include "maintenance/frmEncoder.h"
#include "maintenance/frmPlateInfoEx.h"
#include "maintenance/frmProgramID.h"
#include "measure/frmAcquire.h"
#include "measure/frmMeter.h"
#include "measure/UnsavedCaptureOffer.h"
#include "measure/frmZero.h"
#include "noise/frmNoise.h"
#include "resources/ResourceFiles.h"
#include "resources/StringTable.h"
#include "scale/frmScale.h"
#include "support/Clock.h"
#include "support/Prompt.h"

#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QScreen>
#include <QStatusBar>
#include <QToolTip>
#include <QVBoxLayout>
#include <algorithm>

namespace kx {

namespace {

constexpr int OpenDevicesWaitMs = 1000;
constexpr int UpdatingListText = 900;
constexpr int ReadyText = 910;
constexpr int PlatesInstalledText = 920;
constexpr int HidDevicesText = 921;
constexpr int ClosedResolution = 24;

QIcon programIcon() {
    QIcon icon;
    for (int size : resources::IconSizes)
        icon.addFile(resources::iconFile(size), QSize(size, size));
    return icon;
}

// Centred on the screen, truncated to whole pixels.
QPoint centredTopLeft(const QRect& screen, const QSize& window) {
    return {screen.x() + (screen.width() - window.width()) / 2,
            screen.y() + (screen.height() - window.height()) / 2};
}

} // namespace

frmMain::frmMain(Clock& clock, Prompt& prompt, DriverFactory createDriver, QWidget* parent)
    : QMainWindow(parent)
    , m_clock(clock)
    , m_prompt(prompt)
    , m_createDriver(std::move(createDriver))
    , m_errors(
          new DeviceErrorReporter(deviceErrorProfile(strings::MainBlock), clock, prompt, this)) {
    setObjectName(QStringLiteral("frmMain"));
    setWindowTitle(strings::text(strings::ApplicationTitle));
    setCentralWidget(buildCentralWidget());

    StatusBar1Panel1 = new QLabel(this);
    StatusBar1Panel1->setObjectName(QStringLiteral("StatusBar1Panel1"));
    StatusBar1Panel2 = new QLabel(this);
    StatusBar1Panel2->setObjectName(QStringLiteral("StatusBar1Panel2"));
    statusBar()->setObjectName(QStringLiteral("StatusBar1"));
    statusBar()->setSizeGripEnabled(false);
    statusBar()->addWidget(StatusBar1Panel1, 1);
    statusBar()->addWidget(StatusBar1Panel2);
    // The window is as large as its layout asks, and follows it when frames hide or show.
    layout()->setSizeConstraint(QLayout::SetFixedSize);

    // Tool dialogs are registered here, one addTool line each, e.g.
    //   addTool(cmdMeter, [this] { return new kx::frmMeter(toolContext()); });
    // (qualified: the frames frmZero and frmCalibrate share their names with dialogs). The
    // factory prepares what its dialog needs before it is shown: frmZero's duration "5",
    // frmCalibrate's duration "2", frmPlateInfoEx's servicePanels(). A button without a line
    // stays disabled.
    addTool(cmdGetZero, [this] {
        auto* dialog = new kx::frmZero(toolContext());
        dialog->txtDuration->setText(QStringLiteral("5"));
        connect(dialog, &kx::frmZero::zeroValueWritten, frmZero,
                [this](int channel, const QString& codes) {
                    frmZero->txtZeroCurr[channel]->setText(codes);
                });
        return dialog;
    });
    addTool(cmdMeter, [this] { return new kx::frmMeter(toolContext()); });
    addTool(cmdScale, [this] { return new kx::frmScale(toolContext()); });
    addTool(frmGeneralInfo->cmdDevInfoEx, [this] {
        auto* dialog = new frmPlateInfoEx(toolContext());
        dialog->setServicePanels(m_servicePanels); // before the plate: it shows the resets
        return dialog;
    });
    addTool(cmdProgramID, [this] { return new frmProgramID(toolContext()); });
    addTool(cmdEncoder, [this] { return new frmEncoder(toolContext()); });
    addTool(cmdAcquire, [this] { return new frmAcquire(toolContext()); });
    addTool(cmdNoise, [this] { return new frmNoise(toolContext()); });
    addTool(cmdCalibrate, [this] {
        auto* dialog = new kx::frmCalibrate(toolContext());
        dialog->txtDuration->setText(QStringLiteral("2"));
        connect(dialog, &kx::frmCalibrate::matrixCommitted, frmCalibration,
                &MatrixPanel::enterCell);
        return dialog;
    });
    setPlatePanelsEnabled(false);
}

frmMain::~frmMain() {
    for (Tool& tool : m_tools)
        delete tool.dialog;
    delete m_splash;
}

QPushButton* frmMain::makeButton(const char* objectName, int captionId, QWidget* parent) {
    auto* button = new QPushButton(strings::text(captionId), parent);
    button->setObjectName(QLatin1String(objectName));
    return button;
}

QWidget* frmMain::buildCentralWidget() {
    auto* central = new QWidget(this);
    central->setObjectName(QStringLiteral("picBackground"));
    central->setToolTip(strings::text(strings::mainwindow::ServiceLayoutHint));
    central->installEventFilter(this);

    frmDevices = new QGroupBox(strings::text(200), central);
    frmDevices->setObjectName(QStringLiteral("frmDevices"));
    cbxDevice = new QComboBox(frmDevices);
    cbxDevice->setObjectName(QStringLiteral("cbxDevice"));
    cbxDevice->setAccessibleName(strings::text(200).remove(u':'));
    cmdDevOpen = makeButton("cmdDevOpen", 210, frmDevices);
    cmdDevRefresh = makeButton("cmdDevRefresh", strings::mainwindow::RefreshDevices, frmDevices);
    cmdDevClose = makeButton("cmdDevClose", 220, frmDevices);
    auto* devices = new QGridLayout(frmDevices);
    devices->addWidget(cbxDevice, 0, 0, 1, 3);
    devices->addWidget(cmdDevOpen, 1, 0);
    devices->addWidget(cmdDevRefresh, 1, 1);
    devices->addWidget(cmdDevClose, 1, 2);

    frmGeneralInfo = new GeneralInfoPanel(m_prompt, m_device, central);
    frmConverter = new ConverterPanel(m_prompt, m_device, central);
    frmZero = new ZeroPanel(m_prompt, m_device, central);
    frmCalibration = new MatrixPanel(m_prompt, m_device, central);
    frmStatus = new StatusPanel(m_prompt, m_device, central);
    frmCalibrate = new ConverterCommandsPanel(m_prompt, m_device, central);
    frmAppCounters = new AppCountersPanel(m_clock, m_prompt, m_device, central);

    cmdGetZero = makeButton("cmdGetZero", 120, central);
    cmdMeter = makeButton("cmdMeter", 130, central);
    cmdScale = makeButton("cmdScale", 140, central);
    cmdAcquire = makeButton("cmdAcquire", 150, central);
    cmdProgramID = makeButton("cmdProgramID", 160, central);
    cmdEncoder = makeButton("cmdEncoder", 170, central);
    cmdNoise = makeButton("cmdNoise", 180, central);
    cmdCalibrate = makeButton("cmdCalibrate", 190, central);
    cmdClose = makeButton("cmdClose", 110, central);

    // Two columns of frames beside the column of tool buttons; the service frames sit at the
    // foot of the columns, so the window grows downwards when they show.
    auto* plateColumn = new QVBoxLayout;
    for (QWidget* frame : std::initializer_list<QWidget*>{frmDevices, frmGeneralInfo, frmConverter,
                                                          frmStatus, frmCalibrate})
        plateColumn->addWidget(frame);
    plateColumn->addStretch();
    auto* tableColumn = new QVBoxLayout;
    for (QWidget* frame : std::initializer_list<QWidget*>{frmZero, frmCalibration, frmAppCounters})
        tableColumn->addWidget(frame);
    tableColumn->addStretch();
    auto* toolColumn = new QVBoxLayout;
    for (QPushButton* button : {cmdGetZero, cmdMeter, cmdScale, cmdAcquire, cmdProgramID,
                                cmdEncoder, cmdNoise, cmdCalibrate})
        toolColumn->addWidget(button);
    toolColumn->addStretch();
    toolColumn->addWidget(cmdClose);

    auto* layout = new QHBoxLayout(central);
    layout->addLayout(plateColumn);
    layout->addLayout(tableColumn);
    layout->addLayout(toolColumn);

    connect(cbxDevice, &QComboBox::activated, this, &frmMain::showSelectedDevice);
    connect(cmdDevOpen, &QPushButton::clicked, this, &frmMain::openDevices);
    connect(cmdDevRefresh, &QPushButton::clicked, this, &frmMain::refreshDevices);
    connect(cmdDevClose, &QPushButton::clicked, this, &frmMain::closeDevices);
    connect(cmdClose, &QPushButton::clicked, this, &QWidget::close);
    connect(frmGeneralInfo, &GeneralInfoPanel::serialNumberChanged, this,
            &frmMain::takeUpNewSerialNumber);
    return central;
}

void frmMain::load() {
    m_splash = new frmSplash;
    m_splash->show();
    m_splash->repaint();

    const QIcon icon = programIcon();
    setWindowIcon(icon);
    QApplication::setWindowIcon(icon);

    m_driver = m_createDriver();
    connect(m_driver.get(), &PlateDriver::PlateListUpdateBegin, this,
            &frmMain::PlateListUpdateBegin);
    connect(m_driver.get(), &PlateDriver::PlateArrived, this, &frmMain::PlateArrived);
    connect(m_driver.get(), &PlateDriver::PlateNotResponding, this,
            [this] { m_errors->report(DeviceEvent::NotResponding); });
    connect(m_driver.get(), &PlateDriver::PlateRemoved, this, &frmMain::PlateRemoved);
    connect(m_driver.get(), &PlateDriver::PlateListUpdateDone, this, &frmMain::PlateListUpdateDone);
    openDevices();
    m_clock.singleShot(OpenDevicesWaitMs, this, [this] { finishLoad(); });
}

void frmMain::finishLoad() {
    m_servicePanels = false;
    applyLayout();
    showSelectedDevice();
    adjustSize();
    centre();
    show();
    centre(); // again now that the frame is known
    raise();
    activateWindow();
    delete m_splash;
    setFocus();
    // Captures a crash left unsaved are offered once the window stands.
    m_clock.singleShot(0, this, [this] { offerUnsavedCaptures(this, m_prompt); });
}

void frmMain::centre() {
    if (const QScreen* screen = this->screen())
        move(centredTopLeft(screen->geometry(), frameGeometry().size()));
}

void frmMain::keepOnScreen() {
    const QScreen* screen = this->screen();
    if (!screen)
        return;
    adjustSize(); // the grown size, now rather than at the next layout pass
    const QRect available = screen->availableGeometry();
    QRect frame = frameGeometry();
    frame.moveRight(std::min(frame.right(), available.right()));
    frame.moveBottom(std::min(frame.bottom(), available.bottom()));
    frame.moveLeft(std::max(frame.left(), available.left()));
    frame.moveTop(std::max(frame.top(), available.top()));
    move(frame.topLeft());
}

void frmMain::applyLayout() {
    frmStatus->setVisible(m_servicePanels);
    frmCalibrate->setVisible(m_servicePanels);
    frmAppCounters->setVisible(m_servicePanels);
    frmConverter->setTurboRowVisible(m_servicePanels);
}

void frmMain::showServicePanels() {
    m_servicePanels = true;
    applyLayout();
    showSelectedDevice();
    keepOnScreen();
}

void frmMain::showTimeSpeed(double speed) {
    QString title = strings::text(strings::ApplicationTitle);
    if (speed != 1)
        title += strings::text(strings::mainwindow::TimeSpeed).arg(speed);
    setWindowTitle(title);
}

void frmMain::mousePressEvent(QMouseEvent* event) {
    const bool gesture = event->button() == Qt::MiddleButton &&
                         event->modifiers() == (Qt::ShiftModifier | Qt::ControlModifier);
    if (gesture) {
        const QWidget* hit = childAt(event->position().toPoint());
        if (hit == nullptr || hit == centralWidget())
            showServicePanels();
    }
    QMainWindow::mousePressEvent(event);
}

bool frmMain::eventFilter(QObject* watched, QEvent* event) {
    // The background's tip tells how to reach the service layout; it shows only where the
    // gesture works, not over the controls and frames that pass their tip requests up.
    if (watched == centralWidget() && event->type() == QEvent::ToolTip) {
        const QPoint at = static_cast<QHelpEvent*>(event)->pos();
        if (centralWidget()->childAt(at) != nullptr) {
            QToolTip::hideText();
            return true;
        }
    }
    return QMainWindow::eventFilter(watched, event);
}

void frmMain::showSelectedDevice() {
    for (QPushButton* button : {cmdProgramID, cmdEncoder, cmdNoise, cmdCalibrate})
        button->setVisible(m_servicePanels);
    if (cbxDevice->currentIndex() < 0 || !m_driver) {
        setPlatePanelsEnabled(false);
        return;
    }
    m_device = nullptr;
    runDeviceHandler(m_prompt, [this] {
        PlateDevice* plate = m_driver->Item(cbxDevice->currentText());
        if (!plate)
            plate = m_driver->Item(m_driver->Count());
        if (!plate) {
            setPlatePanelsEnabled(false);
            return;
        }
        m_device = plate;
        frmConverter->repairGageVoltage(*plate);
        fillPanels(*plate, MatrixPanel::TypedText::Replace);
        frmGeneralInfo->cmdDevInfoEx->setVisible(plate->FirmwareMajor() >= 2);
        setPlatePanelsEnabled(true);
    });
}

void frmMain::fillPanels(PlateDevice& plate, MatrixPanel::TypedText typedCells) {
    frmGeneralInfo->fill(plate);
    frmAppCounters->fill(plate);
    frmStatus->fill(plate);
    frmConverter->fill(plate);
    frmZero->hideFourthChannel();
    for (int row = 0; row < MatrixPanel::Size; ++row) {
        frmCalibration->fillRow(plate, row, typedCells);
        frmZero->fillChannel(plate, row);
    }
}

void frmMain::showWhatThePlateHolds() {
    // A dialog may have changed the plate (zero values, resolution, matrix): read it again,
    // but write nothing, and leave typed matrix cells as the user sees them.
    if (m_device)
        runDeviceHandler(m_prompt, [this] { fillPanels(*m_device, MatrixPanel::TypedText::Keep); });
}

void frmMain::setPlatePanelsEnabled(bool enabled) {
    for (QWidget* panel :
         std::initializer_list<QWidget*>{frmGeneralInfo, frmConverter, frmZero, frmCalibration,
                                         frmStatus, frmCalibrate, frmAppCounters})
        panel->setEnabled(enabled);
    for (QPushButton* button : {cmdGetZero, cmdMeter, cmdScale, cmdAcquire, cmdProgramID,
                                cmdEncoder, cmdNoise, cmdCalibrate, frmGeneralInfo->cmdDevInfoEx}) {
        const bool hasDialog = std::any_of(m_tools.begin(), m_tools.end(),
                                           [button](const Tool& t) { return t.button == button; });
        button->setEnabled(enabled && hasDialog);
    }
}

void frmMain::appendEntry(const QString& serial) {
    // A list without a selection keeps none: the list update decides what is selected.
    const int selected = cbxDevice->currentIndex();
    cbxDevice->addItem(serial);
    cbxDevice->setCurrentIndex(selected);
}

void frmMain::PlateListUpdateBegin() {
    StatusBar1Panel1->setText(strings::text(UpdatingListText));
}

void frmMain::PlateArrived(const QString&, const QString& serial) {
    appendEntry(serial);
}

void frmMain::PlateRemoved(const QString&, const QString& serial) {
    if (frmGeneralInfo->txtSerialNumber->text().toUpper() == serial.toUpper())
        m_device = nullptr;
    const int selectedBefore = cbxDevice->currentIndex();
    // The bound is the count before any removal and the index does not step back, so of two
    // equal neighbours only the first goes.
    const int count = cbxDevice->count();
    for (int i = 0; i < count; ++i) {
        if (cbxDevice->itemText(i).toUpper() == serial.toUpper()) {
            if (i == cbxDevice->currentIndex())
                cbxDevice->setCurrentIndex(-1);
            cbxDevice->removeItem(i);
        }
    }
    if (selectedBefore >= 0 && cbxDevice->currentIndex() < 0)
        showSelectedDevice();
}

void frmMain::PlateListUpdateDone() {
    StatusBar1Panel1->setText(strings::text(ReadyText));
    const int selectedBefore = cbxDevice->currentIndex();
    const QString remembered = selectedBefore >= 0 ? cbxDevice->currentText() : QString();
    bool rebuilt = false;
    runDeviceHandler(m_prompt, [&] {
        const int plates = m_driver->Count();
        if (cbxDevice->count() != plates) {
            cbxDevice->clear();
            rebuilt = true;
            for (int position = 1; position <= plates; ++position)
                appendEntry(m_driver->Item(position)->SerialNumber());
        }
        StatusBar1Panel2->setText(
            QString::number(m_driver->Plates()) + strings::text(PlatesInstalledText) +
            QString::number(m_driver->HIDs()) + strings::text(HidDevicesText));
    });
    if (!remembered.isEmpty()) {
        for (int i = 0; i < cbxDevice->count(); ++i) {
            if (cbxDevice->itemText(i) == remembered)
                cbxDevice->setCurrentIndex(i);
        }
    }
    if (cbxDevice->currentIndex() < 0 && cbxDevice->count() > 0)
        cbxDevice->setCurrentIndex(0);
    // The panels follow a selection that moved or a plate they no longer hold.
    if (cbxDevice->currentIndex() >= 0 &&
        (rebuilt || cbxDevice->currentIndex() != selectedBefore || !m_device))
        showSelectedDevice();

    // The beep was meant for a failed playback, but follows every playback.
    m_prompt.playSound(resources::soundFile(QCoreApplication::applicationDirPath()));
    m_prompt.beep();
}

void frmMain::openDevices() {
    runDeviceHandler(m_prompt, [this] {
        m_driver->AddDeviceId(PlateVendorId, PlateProductId1, 0);
        m_driver->AddDeviceId(PlateVendorId, PlateProductId2, 0);
        m_driver->OpenDevices(PlateVendorId, PlateProductId1, PlateProductId2);
    });
}

void frmMain::refreshDevices() {
    runDeviceHandler(m_prompt, [this] { m_driver->Refresh(); });
}

void frmMain::writeResolution24() {
    runDeviceHandler(m_prompt, [this] {
        for (int position = 1; position <= m_driver->Count(); ++position)
            m_driver->Item(position)->SetResolution(ClosedResolution);
    });
}

void frmMain::closeDevices() {
    writeResolution24();
    cbxDevice->clear();
    showSelectedDevice();
}

void frmMain::takeUpNewSerialNumber() {
    // The driver lets go of every plate: until the list is rebuilt no plate is selected, so no
    // panel or tool can reach a released plate.
    m_device = nullptr;
    setPlatePanelsEnabled(false);
    runDeviceHandler(m_prompt, [this] {
        m_driver->ReleaseAll();
        cbxDevice->clear();
        m_driver->OpenDevices(PlateVendorId, PlateProductId1, PlateProductId2);
    });
}

void frmMain::addTool(QPushButton* button, ToolFactory create) {
    // One dialog per button: a later registration takes the button over.
    const auto known = std::find_if(m_tools.begin(), m_tools.end(),
                                    [button](const Tool& tool) { return tool.button == button; });
    if (known != m_tools.end()) {
        known->create = std::move(create);
        return;
    }
    m_tools.push_back({button, std::move(create), nullptr});
    connect(button, &QPushButton::clicked, this, [this, button] {
        for (Tool& tool : m_tools) {
            if (tool.button == button)
                openTool(tool);
        }
    });
    setPlatePanelsEnabled(!m_device.isNull());
}

void frmMain::openTool(Tool& tool) {
    ToolDialog* dialog = tool.create();
    tool.dialog = dialog;
    Q_EMIT toolOpening(dialog, cbxDevice->currentText());
    dialog->setDevice(m_device);
    connect(dialog, &ToolDialog::unloaded, this, [this, dialog] {
        showWhatThePlateHolds();
        show();
        setEnabled(true);
        dialog->deleteLater();
    });
    dialog->show();
    dialog->update();
    setEnabled(false);
    hide();
}

void frmMain::closeEvent(QCloseEvent* event) {
    unload();
    QMainWindow::closeEvent(event);
}

void frmMain::unload() {
    if (m_unloaded)
        return;
    m_unloaded = true;
    if (m_driver)
        writeResolution24();
    for (Tool& tool : m_tools) {
        if (tool.dialog) {
            disconnect(tool.dialog, nullptr, this, nullptr); // the window is going, not back
            tool.dialog->close();
            delete tool.dialog;
        }
    }
    m_device = nullptr;
    m_driver.reset();
    noticeSettingsLostAtExit(m_prompt);
}

} // namespace kx
