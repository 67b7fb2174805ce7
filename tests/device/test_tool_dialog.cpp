#include "RecordingPrompt.h"
#include "device/ToolDialog.h"
#include "resources/StringTable.h"
#include "support/ManualClock.h"

#include <QTest>
#include <gtest/gtest.h>

namespace kx {
namespace {

// The smallest dialog: it records what the base class asks of it.
class ProbeDialog : public ToolDialog {
public:
    ProbeDialog(const ToolContext& context, int block)
        : ToolDialog(context, block) {}
    using ToolDialog::text;
    int loadings = 0;
    int unloadings = 0;

protected:
    void loading() override { ++loadings; }
    void unloading() override { ++unloadings; }
};

class ToolDialogTest : public ::testing::Test {
protected:
    ManualClock clock;
    test::RecordingPrompt prompt;
    ProbeDialog dialog{ToolContext{clock, prompt}, strings::ScaleBlock};
    int unloaded = 0;

    void SetUp() override {
        QObject::connect(&dialog, &ToolDialog::unloaded, [this] { ++unloaded; });
        dialog.show();
    }
};

TEST_F(ToolDialogTest, EveryWayOfClosingUnloadsOnce) {
    dialog.close();
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(dialog.unloadings, 1);
    EXPECT_EQ(unloaded, 1);
    dialog.reject();
    dialog.close();
    EXPECT_EQ(unloaded, 1);
}

TEST_F(ToolDialogTest, LoadsOnceOnItsFirstShow) {
    EXPECT_EQ(dialog.loadings, 1);
    dialog.hide();
    dialog.show();
    EXPECT_EQ(dialog.loadings, 1);
}

TEST_F(ToolDialogTest, EscapeUnloadsToo) {
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_EQ(unloaded, 1);
}

TEST_F(ToolDialogTest, TextsComeFromTheDialogsBlock) {
    EXPECT_EQ(dialog.text(901), QStringLiteral("Ready (Buffer Overrun)"));
}

} // namespace
} // namespace kx
