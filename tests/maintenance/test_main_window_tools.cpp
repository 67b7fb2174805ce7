#include "MainWindowBench.h"
#include "app/GeneralInfoPanel.h"
#include "maintenance/frmEncoder.h"
#include "maintenance/frmPlateInfoEx.h"
#include "maintenance/frmProgramID.h"

#include <QLabel>
#include <QPushButton>

namespace kx::test {
namespace {

using MaintenanceTools = MainWindowBench;

TEST_F(MaintenanceTools, ButtonsOpenTheirDialogsOnTheSelectedPlate) {
    start();
    enterServiceMode();
    window->frmGeneralInfo->cmdDevInfoEx->click();
    auto* info = shownDialog<frmPlateInfoEx>();
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->lblSerialNumberTxt->text(), Fw2Plate);
    EXPECT_TRUE(info->cmdResetTemp->isEnabled()) << "the service flag came before the plate";
    info->cmdOK->click();
    window->cmdProgramID->click();
    ASSERT_NE(shownDialog<frmProgramID>(), nullptr);
    shownDialog<frmProgramID>()->cmdExit->click();
    window->cmdEncoder->click();
    ASSERT_NE(shownDialog<frmEncoder>(), nullptr);
    EXPECT_EQ(shownDialog<frmEncoder>()->device(), window->selectedDevice());
}

} // namespace
} // namespace kx::test
