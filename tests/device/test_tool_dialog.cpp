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

TEST(ToolDialog, EscapeOrAnyWayOfClosingUnloadsOnce) {
    ManualClock clock;
    test::RecordingPrompt prompt;
    ProbeDialog dialog{ToolContext{clock, prompt}, strings::ScaleBlock};
    int unloaded = 0;
    QObject::connect(&dialog, &ToolDialog::unloaded, [&] { ++unloaded; });
    dialog.show();
    dialog.hide();
    dialog.show();
    EXPECT_EQ(dialog.loadings, 1) << "loads once, on its first show";
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_FALSE(dialog.isVisible());
    dialog.reject();
    dialog.close();
    EXPECT_EQ(dialog.unloadings, 1);
    EXPECT_EQ(unloaded, 1);
    // Texts are numbered within the dialog's block.
    EXPECT_EQ(dialog.text(901), QStringLiteral("Ready (Buffer Overrun)"));
}

} // namespace
} // namespace kx
