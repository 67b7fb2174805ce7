#include "MainWindowFixture.h"
#include "app/GeneralInfoPanel.h"
#include "device/ToolDialog.h"
#include "resources/StringTable.h"

#include <QApplication>
#include <QPushButton>

namespace kx::test {
namespace {

// A tool dialog with nothing of its own, to drive the hosting protocol.
class BenchDialog : public ToolDialog {
public:
    BenchDialog(const ToolContext& context, int block, bool service)
        : ToolDialog(context, block)
        , servicePanels(service) {}
    const bool servicePanels;
};

class MainWindowTools : public MainWindowFixture {
protected:
    void addBenchTool(QPushButton* button, int block) {
        window->addTool(button, [this, block] {
            dialog = new BenchDialog(window->toolContext(), block, window->servicePanels());
            return dialog;
        });
    }
    QPointer<BenchDialog> dialog;
};

TEST_F(MainWindowTools, ButtonsWithoutADialogStayDisabled) {
    start();
    for (QPushButton* button : {window->cmdNoise, window->cmdCalibrate})
        EXPECT_FALSE(button->isEnabled()) << button->objectName().toStdString();
    addBenchTool(window->cmdNoise, strings::NoiseBlock);
    EXPECT_TRUE(window->cmdNoise->isEnabled());
    EXPECT_FALSE(window->cmdCalibrate->isEnabled());
}

TEST_F(MainWindowTools, ASecondRegistrationReplacesTheFirst) {
    start();
    addBenchTool(window->cmdScale, strings::ScaleBlock);
    window->cmdScale->click();
    int open = 0;
    for (QWidget* top : QApplication::topLevelWidgets())
        open += qobject_cast<ToolDialog*>(top) && top->isVisible() ? 1 : 0;
    EXPECT_EQ(open, 1);
    EXPECT_TRUE(dialog->isVisible());
}

TEST_F(MainWindowTools, ADialogGetsThePlateAndTheWindowWhileOpen) {
    start();
    select(Fw1Plate);
    addBenchTool(window->cmdMeter, strings::MeterBlock);
    window->cmdMeter->click();
    ASSERT_FALSE(dialog.isNull());
    EXPECT_EQ(dialog->device(), plate(Fw1Plate));
    EXPECT_TRUE(dialog->isVisible());
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
    ASSERT_FALSE(dialog.isNull()) << "the next press loads it afresh";
    EXPECT_TRUE(dialog->isVisible());
}

TEST_F(MainWindowTools, ExtendedInformationLearnsTheServiceFlag) {
    start();
    addBenchTool(window->frmGeneralInfo->cmdDevInfoEx, strings::PlateInfoExBlock);
    window->frmGeneralInfo->cmdDevInfoEx->click();
    EXPECT_FALSE(dialog->servicePanels);
    dialog->close();
    QTest::mouseClick(window->centralWidget(), Qt::MiddleButton,
                      Qt::ShiftModifier | Qt::ControlModifier, QPoint(2, 2));
    window->frmGeneralInfo->cmdDevInfoEx->click();
    EXPECT_TRUE(dialog->servicePanels);
}

TEST_F(MainWindowTools, ExtendedInformationNeedsFirmware2) {
    start();
    addBenchTool(window->frmGeneralInfo->cmdDevInfoEx, strings::PlateInfoExBlock);
    EXPECT_TRUE(window->frmGeneralInfo->cmdDevInfoEx->isVisibleTo(window.get()));
    select(Fw1Plate);
    EXPECT_FALSE(window->frmGeneralInfo->cmdDevInfoEx->isVisibleTo(window.get()));
}

TEST_F(MainWindowTools, UnpluggingDuringAStreamingDialogClosesItHalfASecondLater) {
    start();
    addBenchTool(window->cmdScale, strings::ScaleBlock);
    window->cmdScale->click();
    sim->unplug(Fw2Plate);
    EXPECT_EQ(prompt.messages, QStringList{strings::text(3920)}) << "exactly one disconnect box";
    EXPECT_TRUE(dialog->isVisible());
    clock.advance(499);
    EXPECT_TRUE(dialog->isVisible());
    clock.advance(1);
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(window->isEnabled());
    EXPECT_EQ(entries(), QStringList{Fw1Plate});
    EXPECT_EQ(prompt.messages.size(), 1);
}

TEST_F(MainWindowTools, UnpluggingDuringAMaintenanceDialogClosesItAtOnce) {
    start();
    addBenchTool(window->cmdProgramID, strings::ProgramIdBlock);
    QTest::mouseClick(window->centralWidget(), Qt::MiddleButton,
                      Qt::ShiftModifier | Qt::ControlModifier, QPoint(2, 2));
    window->cmdProgramID->click();
    sim->unplug(Fw2Plate);
    EXPECT_EQ(prompt.messages, QStringList{strings::text(5920)});
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_TRUE(window->isVisible());
}

TEST_F(MainWindowTools, UnloadClosesAnOpenDialog) {
    start();
    addBenchTool(window->cmdAcquire, strings::AcquireBlock);
    window->cmdAcquire->click();
    window->close();
    EXPECT_TRUE(dialog.isNull());
}

} // namespace
} // namespace kx::test
