#include "MainWindowBench.h"
#include "app/GeneralInfoPanel.h"
#include "maintenance/frmPlateInfoEx.h"

#include <QPushButton>

namespace kx::test {
namespace {

using MainWindowTools = MainWindowBench;

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

} // namespace
} // namespace kx::test
