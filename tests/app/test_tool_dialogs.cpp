#include "MainWindowBench.h"
#include "WindowChecks.h"
#include "app/GeneralInfoPanel.h"
#include "measure/frmAcquire.h"
#include "noise/NoiseSession.h"
#include "resources/StringTable.h"

#include <QAbstractButton>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <functional>
#include <string_view>

namespace kx::test {
namespace {

struct Tool {
    const char* name;
    std::function<QPushButton*(frmMain&)> button;
    // Clicks of the opened dialog that put it to work before the picture.
    QStringList clicks;
    const char* duration = nullptr; // what the main window puts into the duration box
};

// Names the case in failure messages.
void PrintTo(const Tool& tool, std::ostream* os) {
    *os << tool.name;
}

class ToolDialogs : public MainWindowBench, public ::testing::WithParamInterface<Tool> {};

// Every tool dialog opens from the main window on the selected plate with a person on it and,
// at work, shows every caption and value whole, and itself whole on the screen. Set
// KX_SCREENSHOT_DIR to keep a picture of each.
TEST_P(ToolDialogs, OpenOnTheSelectedPlateAndShowEveryTextWhole) {
    const Tool& tool = GetParam();
    start();
    enterServiceMode();
    plate(Fw2Plate)->loads().placePerson(72.5, 0.03, -0.02, PlateLoads::Stance::Swaying,
                                         plate(Fw2Plate)->now());
    tool.button(*window)->click();
    QPointer<ToolDialog> dialog = shownDialog<ToolDialog>();
    ASSERT_FALSE(dialog.isNull());
    EXPECT_EQ(dialog->device(), window->selectedDevice());
    EXPECT_FALSE(window->isVisible());
    if (tool.duration) {
        EXPECT_EQ(child<QLineEdit>(dialog, QStringLiteral("txtDuration"))->text(), tool.duration);
    }
    // The calibration's bridge excitation is the main window's current gage voltage.
    if (auto* excitation = dialog->findChild<QLineEdit*>(QStringLiteral("txtExcitation"))) {
        EXPECT_EQ(excitation->text(), text(QStringLiteral("txtAVoltageCurr")));
    }
    for (const QString& name : tool.clicks) {
        clock.advance(3000);
        child<QAbstractButton>(dialog, name)->click();
    }
    clock.advance(6000);
    expectEveryTextWhole(*dialog);
    expectWholeOnTheScreen(*dialog);
    keepScreenshot(*dialog, QLatin1String(tool.name));
    if (tool.name == std::string_view("frmNoise"))
        prompt.answers = {NoiseSession::StopRun}; // closing a run in progress asks first
    dialog->close();
    EXPECT_TRUE(window->isVisible());
}

INSTANTIATE_TEST_SUITE_P(
    MainWindow, ToolDialogs,
    ::testing::Values(
        Tool{"frmAcquire-forces", &frmMain::cmdAcquire, {"optSignal0", "cmdDisplay"}},
        Tool{"frmAcquire-voltages", &frmMain::cmdAcquire, {"optSignal1", "cmdDisplay"}},
        Tool{"frmAcquire-postural", &frmMain::cmdAcquire, {"optSignal2", "cmdDisplay"}},
        Tool{"frmZero", &frmMain::cmdGetZero, {"cmdAcquire"}, "5"},
        Tool{"frmMeter", &frmMain::cmdMeter, {"cmdDisplay"}},
        Tool{"frmScale", &frmMain::cmdScale, {"cmdDisplay"}},
        Tool{"frmPlateInfoEx", [](frmMain& w) { return w.frmGeneralInfo->cmdDevInfoEx; }, {}},
        Tool{"frmProgramID", &frmMain::cmdProgramID, {"cmdGet"}},
        Tool{"frmEncoder", &frmMain::cmdEncoder, {}},
        Tool{"frmNoise", &frmMain::cmdNoise, {"cmdAcquire"}},
        Tool{"frmCalibrate", &frmMain::cmdCalibrate, {"cmdZero", "cmdDisplay"}, "2"}),
    [](const auto& param) {
        return QString::fromLatin1(param.param.name).remove(u'-').toStdString();
    });

using DialogsInMainWindow = MainWindowBench;

// The main window as a user first sees it, on the selected plate. Set KX_SCREENSHOT_DIR to keep
// its picture.
TEST_F(DialogsInMainWindow, TheMainWindowShowsEveryTextWhole) {
    start();
    expectEveryTextWhole(*window);
    keepScreenshot(*window, QStringLiteral("frmMain"));
}

TEST_F(DialogsInMainWindow, UnplugWhileStreamingShowsOneBoxAndClosesHalfASecondLater) {
    start();
    window->cmdAcquire->click();
    QPointer<frmAcquire> dialog = shownDialog<frmAcquire>();
    ASSERT_TRUE(dialog);
    dialog->cmdDisplay->click();
    clock.advance(500);

    sim->unplug(Fw2Plate);
    clock.advance(499);
    EXPECT_EQ(prompt.messages, QStringList{strings::text(4920)});
    ASSERT_TRUE(dialog);
    EXPECT_TRUE(dialog->isVisible());
    clock.advance(1);
    EXPECT_TRUE(dialog.isNull() || !dialog->isVisible());
    EXPECT_EQ(prompt.messages.size(), 1) << "one box, nothing from the closing dialog";
    EXPECT_TRUE(window->isEnabled());
}

} // namespace
} // namespace kx::test
