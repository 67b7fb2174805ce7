#include "MainWindowFixture.h"
#include "measure/frmAcquire.h"
#include "resources/StringTable.h"

#include <QDir>
#include <QPushButton>
#include <QRadioButton>

namespace kx::test {
namespace {

class AcquireInMainWindow : public MainWindowFixture {
protected:
    frmAcquire* openAcquire() {
        window->cmdAcquire->click();
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* dialog = qobject_cast<frmAcquire*>(widget); dialog && dialog->isVisible())
                return dialog;
        }
        ADD_FAILURE() << "cmdAcquire opened no signals display";
        return nullptr;
    }
};

TEST_F(AcquireInMainWindow, UnplugWhileStreamingShowsOneBoxAndClosesHalfASecondLater) {
    start();
    select(Fw2Plate);
    QPointer<frmAcquire> dialog = openAcquire();
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

// Pictures of each signal set while a person sways on the plate, for looking at: set
// KX_SCREENSHOTS to a folder and run under a display server.
TEST_F(AcquireInMainWindow, Screenshots) {
    const QString folder = qEnvironmentVariable("KX_SCREENSHOTS");
    if (folder.isEmpty())
        GTEST_SKIP() << "KX_SCREENSHOTS not set";
    start();
    select(Fw2Plate);
    plate(Fw2Plate)->SetSampleFrequency(Which::Current, 500);
    plate(Fw2Plate)->loads().placePerson(72, 0.03, -0.02, PlateLoads::Stance::Swaying,
                                         plate(Fw2Plate)->now());
    frmAcquire* dialog = openAcquire();
    ASSERT_NE(dialog, nullptr);
    dialog->resize(1000, 700);
    const char* names[] = {"forces", "voltages", "postural"};
    for (int type = 0; type < 3; ++type) {
        dialog->optSignal[static_cast<std::size_t>(type)]->click();
        if (!dialog->displaying())
            dialog->cmdDisplay->click();
        if (type == 2)
            dialog->cmdCapture->click();
        clock.advance(6000);
        QCoreApplication::processEvents();
        EXPECT_TRUE(dialog->grab().save(
            QDir(folder).filePath(QLatin1String(names[type]) + QStringLiteral(".png"))));
    }
}

} // namespace
} // namespace kx::test
