#include "MainWindowBench.h"
#include "app/ConverterPanel.h"
#include "app/frmSplash.h"
#include "resources/StringTable.h"

#include <QLabel>
#include <QPushButton>
#include <QStatusBar>
#include <QTableWidget>
#include <QTest>
#include <QToolTip>

namespace kx::test {
namespace {

using MainWindowList = MainWindowBench;

TEST_F(MainWindowList, LoadShowsTheSplashUntilTheFirstListHasArrived) {
    create();
    window->load();
    QPointer<frmSplash> splash = shownDialog<frmSplash>();
    ASSERT_FALSE(splash.isNull());
    clock.advance(999);
    EXPECT_FALSE(window->isVisible()) << "the load waits 1000 ms for the list events";
    clock.advance(1);
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(splash.isNull());

    EXPECT_EQ(entries(), (QStringList{Fw2Plate, Fw1Plate}));
    EXPECT_EQ(window->StatusBar1Panel2->text(),
              QStringLiteral("2 Plates Installed - 2 HID devices"));
    EXPECT_EQ(text(QStringLiteral("txtSerialNumber")), Fw2Plate);
    // The list update ends with the sound, then the beep.
    const qsizetype sound =
        prompt.events.indexOf(QStringLiteral("sound:") + QCoreApplication::applicationDirPath() +
                              QStringLiteral("/PSND_XX.sts"));
    ASSERT_GE(sound, 0);
    EXPECT_EQ(prompt.events.value(sound + 1), QStringLiteral("beep"));

    // Every input carries an accessible name from its caption.
    for (QWidget* input : window->findChildren<QWidget*>()) {
        if (qobject_cast<QLineEdit*>(input) || qobject_cast<QComboBox*>(input) ||
            qobject_cast<QTableWidget*>(input)) {
            EXPECT_FALSE(input->accessibleName().isEmpty()) << input->objectName().toStdString();
        }
    }
    EXPECT_EQ(box(QStringLiteral("txtSampFreqCurr"))->accessibleName(),
              QStringLiteral("Sampling Freq (Hz) Current"));
}

// Only a middle click with exactly Shift and Ctrl on the background opens the service layout;
// the one that does comes last, as it changes the window for good.
// Nobody takes a run on fast time for a real one.
TEST_F(MainWindowList, TheTitleSaysWhenTimeRunsFaster) {
    start();
    window->showTimeSpeed(100);
    EXPECT_EQ(window->windowTitle(),
              QStringLiteral("KX Force Platforms Control Panel - simulated time ×100"));
    window->showTimeSpeed(1);
    EXPECT_EQ(window->windowTitle(), QStringLiteral("KX Force Platforms Control Panel"));
}

TEST_F(MainWindowList, ServiceLayoutOpensOnlyOnMiddleClickWithShiftAndCtrlOnTheBackground) {
    start();
    const int normalHeight = window->height();
    const Qt::KeyboardModifiers shiftCtrl = Qt::ShiftModifier | Qt::ControlModifier;
    const struct {
        Qt::KeyboardModifiers modifiers;
        bool onBackground;
        bool opensService;
    } gestures[] = {
        {Qt::ShiftModifier, true, false},
        {shiftCtrl | Qt::AltModifier, true, false},
        {shiftCtrl, false, false},
        {shiftCtrl, true, true},
    };
    for (const auto& g : gestures) {
        SCOPED_TRACE(::testing::Message() << g.modifiers.toInt() << " " << g.onBackground);
        // The margin of the central widget and a frame's border are free of child controls.
        QWidget* target =
            g.onBackground ? window->centralWidget() : control(QStringLiteral("frmZero"));
        QTest::mouseClick(target, Qt::MiddleButton, g.modifiers, QPoint(2, 2));
        QCoreApplication::processEvents();
        EXPECT_EQ(window->servicePanels(), g.opensService);
        for (const char* name : {"frmStatus", "frmCalibrate", "frmAppCounters", "lblTurbo",
                                 "txtTurboDef", "cmdProgramID", "cmdEncoder", "cmdNoise"})
            EXPECT_EQ(control(QLatin1String(name))->isVisibleTo(window.get()), g.opensService)
                << name;
        EXPECT_FALSE(control(QStringLiteral("txtZeroCurr3"))->isVisibleTo(window.get()));
        EXPECT_EQ(window->height() > normalHeight, g.opensService) << "the window grows to fit";
    }
    // The selection handler ran again and filled the new panels.
    EXPECT_EQ(text(QStringLiteral("txtTurboCurr")),
              QString::number(selectedPlate()->TurboRate(Which::Current)));
}

// A newcomer finds the gesture in the background's tooltip, shown only where the gesture works.
TEST_F(MainWindowList, TheBackgroundTooltipTellsHowToReachTheServiceLayout) {
    start();
    for (const bool onBackground : {false, true}) {
        QWidget* target =
            onBackground ? window->centralWidget() : control(QStringLiteral("frmZero"));
        const QPoint at(2, 2);
        QHelpEvent help(QEvent::ToolTip, at, target->mapToGlobal(at));
        QApplication::sendEvent(target, &help);
        EXPECT_EQ(QToolTip::isVisible(), onBackground) << onBackground;
        if (onBackground) {
            EXPECT_EQ(QToolTip::text(), strings::text(strings::mainwindow::ServiceLayoutHint));
        }
    }
}

TEST_F(MainWindowList, TwoEnumerationsInARowLeaveListAndSelection) {
    start();
    select(Fw1Plate);
    PlateDevice* selected = window->selectedDevice();
    const int beeps = prompt.beeps;
    for (int i = 0; i < 2; ++i) {
        window->cmdDevRefresh->click();
        clock.settle();
    }
    EXPECT_EQ(entries(), (QStringList{Fw2Plate, Fw1Plate}));
    EXPECT_EQ(window->selectedDevice(), selected);
    EXPECT_EQ(text(QStringLiteral("txtSerialNumber")), Fw1Plate);
    EXPECT_EQ(prompt.beeps, beeps + 2);
}

// The driver lists the plates again after an unplug, and that update selects entry 0.
TEST_F(MainWindowList, UnpluggingTheSelectedPlateSelectsTheFirstRemainingOne) {
    start();
    sim->unplug(Fw2Plate);
    clock.settle();
    EXPECT_EQ(entries(), QStringList{Fw1Plate});
    EXPECT_EQ(window->selectedDevice(), plate(Fw1Plate));
    EXPECT_EQ(text(QStringLiteral("txtSerialNumber")), Fw1Plate);
    EXPECT_TRUE(window->frmConverter->isEnabled());
    EXPECT_EQ(window->StatusBar1Panel2->text(),
              QStringLiteral("1 Plates Installed - 1 HID devices"));

    sim->unplug(Fw1Plate);
    clock.settle();
    EXPECT_TRUE(entries().isEmpty());
    EXPECT_EQ(window->cbxDevice->currentIndex(), -1);
    EXPECT_EQ(window->selectedDevice(), nullptr);
    EXPECT_FALSE(window->frmConverter->isEnabled());
    EXPECT_EQ(window->StatusBar1Panel2->text(),
              QStringLiteral("0 Plates Installed - 0 HID devices"));
}

TEST_F(MainWindowList, CloseDevicesLeavesEveryPlateAt24Bits) {
    start();
    for (const QString& serial : {Fw2Plate, Fw1Plate})
        plate(serial)->SetResolution(16);
    window->cmdDevClose->click();
    for (const QString& serial : {Fw2Plate, Fw1Plate})
        EXPECT_EQ(plate(serial)->Resolution(), 24) << serial.toStdString();
    EXPECT_TRUE(entries().isEmpty());
    EXPECT_FALSE(window->frmConverter->isEnabled());
}

TEST_F(MainWindowList, RemovalTakesOnlyTheFirstOfTwoEqualNeighbours) {
    start();
    Q_EMIT sim->PlateArrived(QStringLiteral("hid#7"), QStringLiteral("X-1"));
    Q_EMIT sim->PlateArrived(QStringLiteral("hid#8"), QStringLiteral("X-1"));
    Q_EMIT sim->PlateRemoved(QStringLiteral("hid#7"), QStringLiteral("x-1"));
    EXPECT_EQ(entries(), (QStringList{Fw2Plate, Fw1Plate, QStringLiteral("X-1")}));
    // An entry without a plate of its own shows the last plate.
    select(QStringLiteral("X-1"));
    EXPECT_EQ(window->selectedDevice(), sim->Item(sim->Count()));
}

TEST_F(MainWindowList, ANotRespondingPlateWaitsBehindTheOpenBox) {
    start();
    prompt.whileMessageOpen = [this](const QString&) {
        prompt.whileMessageOpen = nullptr;
        Q_EMIT sim->PlateNotResponding(QStringLiteral("hid#2"));
        EXPECT_EQ(prompt.messages.size(), 1) << "boxes are never stacked";
    };
    sim->makeNotResponding(Fw1Plate);
    EXPECT_EQ(prompt.messages, (QStringList{strings::text(930), strings::text(930)}));
    EXPECT_TRUE(window->isEnabled());
}

} // namespace
} // namespace kx::test
