#include "MainWindowBench.h"
#include "app/GeneralInfoPanel.h"
#include "device/ToolDialog.h"
#include "resources/StringTable.h"

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

class MainWindowTools : public MainWindowBench {
protected:
    void addBenchTool(QPushButton* button, int block) {
        window->addTool(button, [this, block] {
            dialog = new BenchDialog(window->toolContext(), block, window->servicePanels());
            return dialog;
        });
    }
    QPointer<BenchDialog> dialog;
};

TEST_F(MainWindowTools, ADialogGetsThePlateAndTheWindowWhileOpenAndClosesWithTheWindow) {
    start();
    QPointer<SimDriver> driver = sim;
    addBenchTool(window->cmdNoise, strings::NoiseBlock);
    EXPECT_TRUE(window->cmdNoise->isEnabled());
    select(Fw1Plate);
    window->cmdNoise->click();
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
    window->cmdNoise->click();
    EXPECT_FALSE(dialog.isNull()) << "the next press loads it afresh";

    window->close();
    EXPECT_TRUE(dialog.isNull());
    EXPECT_TRUE(driver.isNull());
    EXPECT_EQ(window->selectedDevice(), nullptr);
}

TEST_F(MainWindowTools, ExtendedInformationNeedsFirmware2AndLearnsTheServiceFlag) {
    start();
    QPushButton* info = window->frmGeneralInfo->cmdDevInfoEx;
    addBenchTool(info, strings::PlateInfoExBlock);
    info->click();
    EXPECT_FALSE(dialog->servicePanels);
    dialog->close();
    enterServiceMode();
    info->click();
    EXPECT_TRUE(dialog->servicePanels);
    dialog->close();
    select(Fw1Plate);
    EXPECT_FALSE(info->isVisibleTo(window.get()));
}

} // namespace
} // namespace kx::test
