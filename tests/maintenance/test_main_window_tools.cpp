#include "MainWindowFixture.h"
#include "app/GeneralInfoPanel.h"
#include "maintenance/frmEncoder.h"
#include "maintenance/frmPlateInfoEx.h"
#include "maintenance/frmProgramID.h"

#include <QLabel>
#include <QPushButton>

namespace kx::test {
namespace {

// The main window's buttons open the maintenance dialogs on the selected plate.
class MaintenanceTools : public MainWindowFixture {
protected:
    void enterServiceMode() {
        QTest::mouseClick(window->centralWidget(), Qt::MiddleButton,
                          Qt::ShiftModifier | Qt::ControlModifier, QPoint(2, 2));
        ASSERT_TRUE(window->servicePanels());
    }

    // The one visible dialog of type T, or null.
    template <typename T>
    static T* openDialog() {
        T* found = nullptr;
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* dialog = qobject_cast<T*>(widget); dialog && dialog->isVisible()) {
                EXPECT_EQ(found, nullptr) << "one dialog per press";
                found = dialog;
            }
        }
        return found;
    }
};

TEST_F(MaintenanceTools, ExtendedInfoGetsTheServiceFlagBeforeThePlate) {
    start();
    for (const bool service : {false, true}) {
        if (service)
            enterServiceMode();
        window->frmGeneralInfo->cmdDevInfoEx->click();
        auto* dialog = openDialog<frmPlateInfoEx>();
        ASSERT_NE(dialog, nullptr);
        EXPECT_FALSE(window->isVisible());
        EXPECT_EQ(dialog->device(), window->selectedDevice());
        EXPECT_EQ(dialog->lblSerialNumberTxt->text(), Fw2Plate);
        EXPECT_EQ(dialog->cmdResetTemp->isEnabled(), service);
        dialog->cmdOK->click();
        EXPECT_TRUE(window->isVisible());
        EXPECT_TRUE(window->isEnabled());
    }
}

TEST_F(MaintenanceTools, ServiceButtonsOpenTheUsbIdentityAndEncoderDialogs) {
    start();
    enterServiceMode();
    window->cmdProgramID->click();
    auto* programId = openDialog<frmProgramID>();
    ASSERT_NE(programId, nullptr);
    EXPECT_EQ(programId->device(), window->selectedDevice());
    programId->cmdExit->click();
    EXPECT_TRUE(window->isVisible());

    window->cmdEncoder->click();
    auto* encoder = openDialog<frmEncoder>();
    ASSERT_NE(encoder, nullptr);
    EXPECT_TRUE(encoder->Timer1->isEnabled());
    encoder->cmdOK->click();
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(prompt.messages.isEmpty());
}

} // namespace
} // namespace kx::test
