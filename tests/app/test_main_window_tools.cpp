#include "MainWindowBench.h"
#include "app/BenchLink.h"
#include "app/GeneralInfoPanel.h"
#include "app/MatrixPanel.h"
#include "calibration/frmCalibrate.h"
#include "maintenance/frmPlateInfoEx.h"
#include "measure/frmAcquire.h"
#include "sim/PlateTopView.h"
#include "sim/SimPlatePage.h"
#include "sim/frmSimBench.h"
#include "support/DateFormat.h"
#include "support/Settings.h"
#include "support/SettingsKeys.h"

#include <QCheckBox>
#include <QPushButton>
#include <QTableWidget>

namespace kx::test {
namespace {

using MainWindowTools = MainWindowBench;

// The bench rings the point the calibration dialog is at, on the plate being calibrated, and
// lets go of it when the dialog closes; other tools leave it alone.
TEST_F(MainWindowTools, TheBenchFollowsTheCalibrationDialogsPoint) {
    start();
    enterServiceMode();
    frmSimBench bench(*sim, clock);
    linkBenchToWindows(*window, bench);
    const PlateTopView& top = *bench.page(Fw2Plate)->picPlate;
    window->cmdMeter->click();
    shownDialog<ToolDialog>()->close();
    EXPECT_EQ(top.currentGuide(), -1);

    window->cmdCalibrate->click();
    QPointer<frmCalibrate> dialog = shownDialog<frmCalibrate>();
    ASSERT_FALSE(dialog.isNull());
    EXPECT_EQ(top.currentGuide(), 0);
    dialog->cmdNext->click();
    dialog->cmdNext->click();
    EXPECT_EQ(top.currentGuide(), 2);
    EXPECT_EQ(bench.page(Fw1Plate)->picPlate->currentGuide(), -1);
    dialog->close();
    EXPECT_EQ(top.currentGuide(), -1);
}

TEST_F(MainWindowTools, ADialogGetsThePlateAndTheWindowWhileOpenAndClosesWithTheWindow) {
    start();
    QPointer<SimDriver> driver = sim;
    select(Fw1Plate);
    window->cmdMeter->click();
    QPointer<ToolDialog> dialog = shownDialog<ToolDialog>();
    ASSERT_FALSE(dialog.isNull());
    EXPECT_EQ(dialog->device(), plate(Fw1Plate));
    EXPECT_FALSE(dialog->isModal());
    EXPECT_FALSE(window->isVisible());
    EXPECT_FALSE(window->isEnabled());

    dialog->close();
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(window->isEnabled());
    EXPECT_EQ(dialog->device(), nullptr);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(dialog.isNull()) << "an unloaded dialog is dropped";
    window->cmdMeter->click();
    dialog = shownDialog<ToolDialog>();
    EXPECT_FALSE(dialog.isNull()) << "the next press loads it afresh";

    window->close();
    EXPECT_TRUE(dialog.isNull());
    EXPECT_TRUE(driver.isNull());
    EXPECT_EQ(window->selectedDevice(), nullptr);
}

TEST_F(MainWindowTools, ExtendedInformationNeedsFirmware2AndLearnsTheServiceFlag) {
    start();
    QPushButton* info = window->frmGeneralInfo->cmdDevInfoEx;
    for (bool service : {false, true}) {
        if (service)
            enterServiceMode();
        info->click();
        auto* dialog = shownDialog<frmPlateInfoEx>();
        ASSERT_NE(dialog, nullptr);
        EXPECT_EQ(dialog->cmdResetTemp->isEnabled(), service);
        dialog->close();
    }
    select(Fw1Plate);
    EXPECT_FALSE(info->isVisibleTo(window.get()));
}

// A dialog may change the plate behind the hidden main window (the calibration writes zero
// values, the signals display the resolution). When it closes, every panel shows what the
// plate now holds, except matrix cells whose text was typed: they keep it until the next
// selection.
TEST_F(MainWindowTools, AfterADialogClosesThePanelsShowWhatThePlateNowHolds) {
    start();
    enterServiceMode();
    SimPlate& plate = *selectedPlate();
    window->frmCalibration->enterCell(0, 0, QStringLiteral("-1234.5"));
    const bool polled = plate.Polled(0);

    window->frmGeneralInfo->cmdDevInfoEx->click();
    QPointer<ToolDialog> dialog = shownDialog<ToolDialog>();
    ASSERT_FALSE(dialog.isNull());
    plate.SetZeroValue(0, Which::Current, -109426);
    plate.SetZeroValue(1, Which::Current, 42084);
    plate.SetZeroValue(2, Which::Default, 105685);
    plate.SetSampleFrequency(Which::Current, 200);
    plate.SetMatrixElement(1, 1, 2.5f);
    plate.SetMatrixElement(3, 2, 7);
    plate.SetMatrixElement(0, 3, 45365); // 14 March 2024
    plate.SetPolled(0, !polled);
    dialog->close();

    const std::pair<const char*, QString> shown[] = {
        {"txtZeroCurr0", "-109426"}, {"txtZeroCurr1", "42084"},
        {"txtZeroDef2", "105685"},   {"txtSampFreqCurr", "200.000"},
        {"txtAppCounter2", "7"},     {"txtAppLastDate", formatShortDate(QDate(2024, 3, 14))},
    };
    for (const auto& [name, expected] : shown)
        EXPECT_EQ(text(QLatin1String(name)), expected) << name;
    EXPECT_EQ(control<QCheckBox>(QStringLiteral("chkPolled"))->isChecked(), !polled);
    keepScreenshot(*window, QStringLiteral("frmMain-after-a-tool"));
    const QTableWidget* grid = window->frmCalibration->flxgrdCalibrationMat;
    EXPECT_EQ(grid->item(1, 1)->text(), QStringLiteral("2.500"));
    EXPECT_EQ(grid->item(0, 0)->text(), QStringLiteral("-1234.5")) << "typed text stays";
    select(Fw2Plate);
    EXPECT_EQ(grid->item(0, 0)->text(), QStringLiteral("-1234.500"));
}

// The signals display sets the plate to the resolution of its settings and leaves it so.
TEST_F(MainWindowTools, TheResolutionSetByTheSignalsDisplayShowsAfterIt) {
    SaveSettingString(SettingsRoot::CurrentUser, QLatin1String(kAcquisitionKey),
                      QStringLiteral("AD Resolution"), QStringLiteral("16"));
    start();
    ASSERT_NE(text(QStringLiteral("txtResolutionCurr")), QStringLiteral("16"));
    window->cmdAcquire->click();
    QPointer<frmAcquire> dialog = shownDialog<frmAcquire>();
    ASSERT_FALSE(dialog.isNull());
    dialog->close();
    EXPECT_EQ(selectedPlate()->Resolution(), 16);
    EXPECT_EQ(text(QStringLiteral("txtResolutionCurr")), QStringLiteral("16"));
}

} // namespace
} // namespace kx::test
