#include "MainWindowBench.h"
#include "app/ZeroPanel.h"
#include "measure/frmAcquire.h"
#include "measure/frmZero.h"
#include "resources/StringTable.h"

#include <QLabel>
#include <QPointer>
#include <QPushButton>

namespace kx::test {
namespace {

class DialogsInMainWindow : public MainWindowBench {
protected:
    // Clicks the main window's `button` and returns the dialog it opened.
    template <class Dialog>
    Dialog* openWith(QPushButton* button) {
        button->click();
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* dialog = qobject_cast<Dialog*>(widget); dialog && dialog->isVisible())
                return dialog;
        }
        ADD_FAILURE() << "the button opened no dialog";
        return nullptr;
    }
};

TEST_F(DialogsInMainWindow, UnplugWhileStreamingShowsOneBoxAndClosesHalfASecondLater) {
    start();
    select(Fw2Plate);
    QPointer<frmAcquire> dialog = openWith<frmAcquire>(window->cmdAcquire);
    ASSERT_TRUE(dialog);
    EXPECT_EQ(dialog->device(), plate(Fw2Plate));
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
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(window->isEnabled());
    clock.advance(1000);
    EXPECT_FALSE(entries().contains(Fw2Plate));
}

// The zero dialog opens with 5 s, and OK puts the new zero values into the main window's
// boxes as well as into the plate.
TEST_F(DialogsInMainWindow, ZeroOkFillsTheMainWindowsZeroBoxes) {
    start();
    frmZero* dialog = openWith<frmZero>(window->cmdGetZero);
    ASSERT_NE(dialog, nullptr);
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(dialog->txtDuration->text(), QStringLiteral("5"));
    dialog->cmdAcquire->click();
    clock.advance(6000);
    const QString codes = dialog->lblZeroAveTxt[1]->text();
    ASSERT_FALSE(codes.isEmpty());
    dialog->cmdOK->click();
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->frmZero->txtZeroCurr[1]->text(), codes);
    EXPECT_EQ(window->selectedDevice()->ZeroValue(1, Which::Current), codes.toInt());
    EXPECT_TRUE(prompt.messages.isEmpty());
}

} // namespace
} // namespace kx::test
