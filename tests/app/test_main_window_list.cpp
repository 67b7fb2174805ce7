#include "MainWindowFixture.h"
#include "app/ConverterPanel.h"
#include "app/GeneralInfoPanel.h"
#include "app/frmSplash.h"
#include "resources/StringTable.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QStatusBar>
#include <QTableWidget>

namespace kx::test {
namespace {

using MainWindowList = MainWindowFixture;

QString soundEvent() {
    return QStringLiteral("sound:") + QCoreApplication::applicationDirPath() +
           QStringLiteral("/PSND_XX.sts");
}

TEST_F(MainWindowList, LoadShowsTheSplashUntilTheFirstListHasArrived) {
    create();
    window->load();
    const auto splashes = QApplication::topLevelWidgets();
    const auto shown = std::find_if(splashes.begin(), splashes.end(), [](QWidget* w) {
        return qobject_cast<frmSplash*>(w) && w->isVisible();
    });
    ASSERT_NE(shown, splashes.end());
    QPointer<QWidget> splashWindow = *shown;
    EXPECT_FALSE(window->isVisible());

    clock.advance(999);
    EXPECT_FALSE(window->isVisible()) << "the load waits 1000 ms for the list events";
    clock.advance(1);
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(splashWindow.isNull());

    EXPECT_EQ(entries(), (QStringList{Fw2Plate, Fw1Plate}));
    EXPECT_EQ(window->cbxDevice->currentIndex(), 0);
    EXPECT_EQ(window->StatusBar1Panel1->text(), QStringLiteral("Ready"));
    EXPECT_EQ(window->StatusBar1Panel2->text(),
              QStringLiteral("2 Plates Installed - 4 HID devices"));
    EXPECT_EQ(text(QStringLiteral("txtSerialNumber")), Fw2Plate);
    EXPECT_EQ(control<QLabel>(QStringLiteral("lblFrimwareTxt"))->text(), QStringLiteral("2.3"));
    EXPECT_EQ(text(QStringLiteral("txtAVoltageCurr")), QStringLiteral("5.000"));
    EXPECT_EQ(text(QStringLiteral("txtResolutionDef")), QStringLiteral("20"));
    EXPECT_TRUE(window->frmConverter->isEnabled());

    // The list update ends with the sound, then the beep.
    const qsizetype sound = prompt.events.indexOf(soundEvent());
    ASSERT_GE(sound, 0);
    EXPECT_EQ(prompt.events.value(sound + 1), QStringLiteral("beep"));
}

TEST_F(MainWindowList, WindowIsCentredOnItsScreen) {
    start();
    const QRect screen = window->screen()->geometry();
    const QRect frame = window->frameGeometry();
    EXPECT_LE(std::abs(frame.left() - (screen.width() - frame.width()) / 2), 1);
    EXPECT_LE(std::abs(frame.top() - (screen.height() - frame.height()) / 2), 1);
}

TEST_F(MainWindowList, NothingConnectedStillLoads) {
    Scenario empty;
    create(empty);
    window->load();
    sim->setOtherHidDevices(0);
    clock.advance(1000);
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(entries().isEmpty());
    EXPECT_EQ(window->StatusBar1Panel2->text(),
              QStringLiteral("0 Plates Installed - 0 HID devices"));
    EXPECT_FALSE(window->frmConverter->isEnabled());
    EXPECT_FALSE(window->frmGeneralInfo->isEnabled());
    EXPECT_EQ(text(QStringLiteral("txtSerialNumber")), QString());
}

struct Caption {
    const char* objectName;
    int id;
};

QString captionOf(QObject* control) {
    if (auto* button = qobject_cast<QAbstractButton*>(control))
        return button->text();
    if (auto* frame = qobject_cast<QGroupBox*>(control))
        return frame->title();
    if (auto* label = qobject_cast<QLabel*>(control))
        return label->text();
    return qobject_cast<QWidget*>(control)->windowTitle();
}

TEST_F(MainWindowList, EveryCaptionComesFromTheStringTable) {
    start();
    const Caption captions[] = {
        {"frmMain", 100},          {"cmdClose", 110},         {"cmdGetZero", 120},
        {"cmdMeter", 130},         {"cmdScale", 140},         {"cmdAcquire", 150},
        {"cmdProgramID", 160},     {"cmdEncoder", 170},       {"cmdNoise", 180},
        {"cmdCalibrate", 190},     {"frmDevices", 200},       {"cmdDevOpen", 210},
        {"cmdDevRefresh", 215},    {"cmdDevClose", 220},      {"frmGeneralInfo", 300},
        {"lblSerialNumber", 310},  {"lblFirmware", 320},      {"cmdDevInfoEx", 330},
        {"frmCalibration", 350},   {"lblCalMatCaption", 360}, {"frmCalibrate", 400},
        {"cmdCalSelf", 410},       {"cmdCalOffset", 420},     {"cmdCalFullScale", 430},
        {"cmdPseudo", 440},        {"frmStatus", 500},        {"chkPolled", 510},
        {"chkADSleep", 520},       {"chkBkgCal", 530},        {"chkPowerON", 540},
        {"frmAppCounters", 600},   {"lblAppCounter0", 610},   {"lblAppCounter1", 620},
        {"lblAppCounter2", 630},   {"lblAppCounter3", 635},   {"lblAppLastDate", 640},
        {"cmdSetCounters", 650},   {"frmConverter", 700},     {"lblAVoltage", 710},
        {"lblTurbo", 720},         {"lbResolution", 730},     {"lblSampFreq", 740},
        {"lbl3dBFreq", 750},       {"lblParamDef", 760},      {"lblParamCurr", 770},
        {"cmdStoreDefParam", 780}, {"frmZero", 800},          {"lblZero0", 810},
        {"lblZero1", 820},         {"lblZero2", 830},         {"lblZero3", 840},
        {"lblZeroDef", 850},       {"lblZeroCurr", 860},      {"cmdStoreDefZero", 870},
    };
    for (const Caption& c : captions) {
        const QString name = QLatin1String(c.objectName);
        QObject* control =
            name == QLatin1String("frmMain") ? window.get() : window->findChild<QObject*>(name);
        ASSERT_NE(control, nullptr) << c.objectName;
        EXPECT_EQ(captionOf(control), strings::text(c.id)) << c.objectName;
    }
}

TEST_F(MainWindowList, EveryInputCarriesAnAccessibleName) {
    start();
    for (QWidget* input : window->findChildren<QWidget*>()) {
        const bool isInput = qobject_cast<QLineEdit*>(input) || qobject_cast<QComboBox*>(input) ||
                             qobject_cast<QTableWidget*>(input);
        if (isInput) {
            EXPECT_FALSE(input->accessibleName().isEmpty()) << input->objectName().toStdString();
        }
    }
    EXPECT_EQ(box(QStringLiteral("txtSampFreqCurr"))->accessibleName(),
              QStringLiteral("Sampling Freq (Hz) Current"));
    EXPECT_EQ(box(QStringLiteral("txtAVoltageDef"))->accessibleName(),
              QStringLiteral("Gage Voltage (V) Default"));
    EXPECT_EQ(box(QStringLiteral("txtZeroCurr2"))->accessibleName(),
              QStringLiteral("Channel 3 Current"));
    EXPECT_EQ(box(QStringLiteral("txtDecimationDef"))->accessibleName(),
              QStringLiteral("Turbo/Dec Rate Default (decimation)"));
    EXPECT_EQ(box(QStringLiteral("txtAppCounter3"))->accessibleName(), QStringLiteral("Dunlith"));
}

TEST_F(MainWindowList, NormalLayoutHidesTheServicePanels) {
    start();
    for (const char* name : {"frmStatus", "frmCalibrate", "frmAppCounters", "lblTurbo",
                             "txtTurboCurr", "txtDecimationDef", "cmdProgramID", "cmdEncoder",
                             "cmdNoise", "cmdCalibrate", "lblZero3", "txtZeroCurr3"})
        EXPECT_FALSE(control(QLatin1String(name))->isVisibleTo(window.get())) << name;
    for (const char* name :
         {"frmZero", "frmCalibration", "txtSampFreqCurr", "cmdMeter", "cmdClose", "lblZero2"})
        EXPECT_TRUE(control(QLatin1String(name))->isVisibleTo(window.get())) << name;
}

struct Gesture {
    const char* name;
    Qt::MouseButton button;
    Qt::KeyboardModifiers modifiers;
    bool onBackground;
    bool opensService;
};

class ServiceGesture : public MainWindowFixture, public ::testing::WithParamInterface<Gesture> {};

TEST_P(ServiceGesture, OnlyMiddleClickWithShiftAndCtrlOnTheBackground) {
    start();
    const Gesture& g = GetParam();
    const int normalHeight = window->height();
    QWidget* target = g.onBackground ? window->centralWidget() : control(QStringLiteral("frmZero"));
    // The margin of the central widget and a frame's border are free of child controls.
    QTest::mouseClick(target, g.button, g.modifiers, QPoint(2, 2));
    QCoreApplication::processEvents();

    EXPECT_EQ(window->servicePanels(), g.opensService);
    for (const char* name : {"frmStatus", "frmCalibrate", "frmAppCounters", "lblTurbo",
                             "txtTurboDef", "cmdProgramID", "cmdEncoder", "cmdNoise"})
        EXPECT_EQ(control(QLatin1String(name))->isVisibleTo(window.get()), g.opensService) << name;
    if (g.opensService) {
        EXPECT_GT(window->height(), normalHeight) << "the window grows to fit";
        // The selection handler ran again and filled the newly shown panels.
        EXPECT_EQ(text(QStringLiteral("txtTurboCurr")),
                  QString::number(selectedPlate()->TurboRate(Which::Current)));
        EXPECT_EQ(control<QCheckBox>(QStringLiteral("chkPolled"))->isChecked(),
                  selectedPlate()->Polled(0));
        EXPECT_FALSE(control(QStringLiteral("lblZero3"))->isVisibleTo(window.get()));
    } else {
        EXPECT_EQ(window->height(), normalHeight);
    }
}

const Qt::KeyboardModifiers ShiftCtrl = Qt::ShiftModifier | Qt::ControlModifier;

INSTANTIATE_TEST_SUITE_P(
    MainWindow, ServiceGesture,
    ::testing::Values(
        Gesture{"MiddleShiftCtrl", Qt::MiddleButton, ShiftCtrl, true, true},
        Gesture{"MiddleShiftOnly", Qt::MiddleButton, Qt::ShiftModifier, true, false},
        Gesture{"MiddleCtrlOnly", Qt::MiddleButton, Qt::ControlModifier, true, false},
        Gesture{"MiddleShiftCtrlAlt", Qt::MiddleButton, ShiftCtrl | Qt::AltModifier, true, false},
        Gesture{"MiddleWithoutKeys", Qt::MiddleButton, Qt::NoModifier, true, false},
        Gesture{"LeftShiftCtrl", Qt::LeftButton, ShiftCtrl, true, false},
        Gesture{"RightShiftCtrl", Qt::RightButton, ShiftCtrl, true, false},
        Gesture{"MiddleShiftCtrlOnAFrame", Qt::MiddleButton, ShiftCtrl, false, false}),
    [](const auto& param) { return std::string(param.param.name); });

TEST_F(MainWindowList, TwoEnumerationsInARowLeaveListAndSelection) {
    start();
    select(Fw1Plate);
    PlateDevice* selected = window->selectedDevice();
    const int beeps = prompt.beeps;
    window->cmdDevRefresh->click();
    clock.settle();
    window->cmdDevRefresh->click();
    clock.settle();
    EXPECT_EQ(entries(), (QStringList{Fw2Plate, Fw1Plate}));
    EXPECT_EQ(window->cbxDevice->currentText(), Fw1Plate);
    EXPECT_EQ(window->selectedDevice(), selected);
    EXPECT_EQ(text(QStringLiteral("txtSerialNumber")), Fw1Plate);
    EXPECT_EQ(prompt.beeps, beeps + 2);
}

TEST_F(MainWindowList, UnpluggingTheSelectedPlateClearsTheSelection) {
    start();
    select(Fw2Plate);
    sim->unplug(Fw2Plate);
    clock.settle();
    EXPECT_EQ(entries(), QStringList{Fw1Plate});
    EXPECT_EQ(window->cbxDevice->currentIndex(), -1);
    EXPECT_EQ(window->selectedDevice(), nullptr);
    EXPECT_FALSE(window->frmConverter->isEnabled());

    window->cmdDevRefresh->click();
    clock.settle();
    EXPECT_EQ(window->cbxDevice->currentIndex(), 0);
    EXPECT_EQ(text(QStringLiteral("txtSerialNumber")), Fw1Plate);
    EXPECT_TRUE(window->frmConverter->isEnabled());
}

TEST_F(MainWindowList, UnpluggingAnotherPlateKeepsTheSelection) {
    start();
    select(Fw1Plate);
    sim->unplug(Fw2Plate);
    clock.settle();
    EXPECT_EQ(entries(), QStringList{Fw1Plate});
    EXPECT_EQ(window->cbxDevice->currentText(), Fw1Plate);
    EXPECT_EQ(window->selectedDevice(), plate(Fw1Plate));
}

TEST_F(MainWindowList, RemovalTakesOnlyTheFirstOfTwoEqualNeighbours) {
    start();
    Q_EMIT sim->PlateArrived(QStringLiteral("hid#7"), QStringLiteral("X-1"));
    Q_EMIT sim->PlateArrived(QStringLiteral("hid#8"), QStringLiteral("X-1"));
    Q_EMIT sim->PlateRemoved(QStringLiteral("hid#7"), QStringLiteral("x-1"));
    EXPECT_EQ(entries(), (QStringList{Fw2Plate, Fw1Plate, QStringLiteral("X-1")}));
    EXPECT_EQ(window->cbxDevice->currentText(), Fw2Plate);
}

TEST_F(MainWindowList, AnEntryWithoutAPlateShowsTheLastPlate) {
    start();
    Q_EMIT sim->PlateArrived(QStringLiteral("hid#9"), QStringLiteral("GONE"));
    select(QStringLiteral("GONE"));
    EXPECT_EQ(window->selectedDevice(), sim->Item(sim->Count()));
    EXPECT_EQ(text(QStringLiteral("txtSerialNumber")), Fw1Plate);
}

TEST_F(MainWindowList, ANotRespondingPlateIsReportedOnce) {
    start();
    prompt.whileMessageOpen = [this](const QString&) {
        Q_EMIT sim->PlateNotResponding(QStringLiteral("hid#2"));
        prompt.whileMessageOpen = nullptr;
    };
    sim->makeNotResponding(Fw1Plate);
    EXPECT_EQ(prompt.messages, (QStringList{strings::text(930), strings::text(930)}))
        << "the second report waits until the first box is closed";
    EXPECT_TRUE(window->isEnabled());
}

TEST_F(MainWindowList, CloseDevicesRestoresFullResolutionAndEmptiesTheList) {
    start();
    type(QStringLiteral("txtResolutionCurr"), QStringLiteral("16"));
    ASSERT_EQ(plate(Fw2Plate)->Resolution(), 16);
    plate(Fw1Plate)->SetResolution(12);
    window->cmdDevClose->click();
    EXPECT_EQ(plate(Fw2Plate)->Resolution(), 24);
    EXPECT_EQ(plate(Fw1Plate)->Resolution(), 24);
    EXPECT_TRUE(entries().isEmpty());
    EXPECT_FALSE(window->frmConverter->isEnabled());

    window->cmdDevOpen->click();
    clock.settle();
    EXPECT_EQ(entries(), (QStringList{Fw2Plate, Fw1Plate}));
    EXPECT_EQ(window->cbxDevice->currentIndex(), 0);
}

TEST_F(MainWindowList, UnloadDropsTheDriver) {
    start();
    QPointer<SimDriver> driver = sim;
    window->cmdClose->click();
    EXPECT_FALSE(window->isVisible());
    EXPECT_TRUE(driver.isNull());
    EXPECT_EQ(window->selectedDevice(), nullptr);
}

} // namespace
} // namespace kx::test
