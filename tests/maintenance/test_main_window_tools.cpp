#include "RecordingPrompt.h"
#include "TempEnvironment.h"
#include "app/GeneralInfoPanel.h"
#include "app/frmMain.h"
#include "maintenance/frmEncoder.h"
#include "maintenance/frmPlateInfoEx.h"
#include "maintenance/frmProgramID.h"
#include "sim/SimDriver.h"
#include "sim/SimPlate.h"
#include "support/ManualClock.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

namespace kx {
namespace {

// The main window's tool buttons open the maintenance dialogs on the selected plate.
class MainWindowTools : public testing::Test {
protected:
    void SetUp() override {
        window.load();
        clock.advance(1000);
        ASSERT_TRUE(window.isVisible());
        ASSERT_NE(window.selectedDevice(), nullptr);
    }

    void enterServiceMode() {
        QTest::mouseClick(window.centralWidget(), Qt::MiddleButton,
                          Qt::ShiftModifier | Qt::ControlModifier, QPoint(1, 1));
        ASSERT_TRUE(window.servicePanels());
    }

    // The one visible dialog of type T, or null.
    template <typename T>
    static T* openDialog() {
        T* found = nullptr;
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* dialog = qobject_cast<T*>(widget); dialog && dialog->isVisible()) {
                EXPECT_EQ(found, nullptr);
                found = dialog;
            }
        }
        return found;
    }

    test::TempEnvironment environment;
    ManualClock clock;
    test::RecordingPrompt prompt;
    frmMain window{clock, prompt, [this] {
                       auto sim = std::make_unique<SimDriver>(clock);
                       SimPlateConfig config;
                       config.serial = QStringLiteral("KX2001");
                       sim->addPlate(config);
                       return sim;
                   }};
};

TEST_F(MainWindowTools, ExtendedInfoGetsTheServiceFlagAndThePlate) {
    for (const bool service : {false, true}) {
        if (service)
            enterServiceMode();
        window.frmGeneralInfo->cmdDevInfoEx->click();
        auto* dialog = openDialog<frmPlateInfoEx>();
        ASSERT_NE(dialog, nullptr);
        EXPECT_FALSE(window.isVisible());
        EXPECT_EQ(dialog->device(), window.selectedDevice());
        EXPECT_EQ(dialog->lblSerialNumberTxt->text(), "KX2001");
        EXPECT_EQ(dialog->cmdResetTemp->isEnabled(), service);
        dialog->cmdOK->click();
        EXPECT_TRUE(window.isVisible());
        EXPECT_TRUE(window.isEnabled());
    }
}

TEST_F(MainWindowTools, ServiceButtonsOpenTheUsbIdentityAndEncoderDialogs) {
    enterServiceMode();
    window.cmdProgramID->click();
    auto* programId = openDialog<frmProgramID>();
    ASSERT_NE(programId, nullptr);
    EXPECT_EQ(programId->device(), window.selectedDevice());
    programId->cmdExit->click();
    EXPECT_TRUE(window.isVisible());

    window.cmdEncoder->click();
    auto* encoder = openDialog<frmEncoder>();
    ASSERT_NE(encoder, nullptr);
    EXPECT_TRUE(encoder->Timer1->isEnabled());
    encoder->cmdOK->click();
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(prompt.messages.isEmpty());
}

} // namespace
} // namespace kx
