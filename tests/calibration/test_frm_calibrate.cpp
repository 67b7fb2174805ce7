#include "../support/PrintQString.h"
#include "CalibrateBench.h"
#include "calibration/Calibration.h"
#include "resources/StringTable.h"
#include "support/Folders.h"
#include "support/IniFile.h"

namespace kx::test {
namespace {

class CalibrateDialog : public CalibrateDialogBench {
protected:
    const CalPoint& point(int i) const {
        return dialog->session().calibration().record.points[std::size_t(i)];
    }
};

// A zero noisier than the profile allows is refused with the text of its mode, after the
// completion sound, and the earlier results stay.
TEST_F(CalibrateDialog, ANoisyZeroIsRefusedWithTheTextOfItsMode) {
    const IniFile profile = IniFile::sharedProfile();
    CreateFolderPath(FolderOfPath(profile.path()));
    profile.setValue(QStringLiteral("Calibration"), QStringLiteral("Max Zero StdDev"),
                     QStringLiteral("1"));
    open();
    const std::array<qint32, 3> before = hands.plateZero();
    for (const bool scaling : {false, true}) {
        prompt.events.clear();
        prompt.messages.clear();
        hands.unload();
        (scaling ? dialog->cmdScaleZero : dialog->cmdZero)->click();
        hands.waitIdle(*dialog);
        EXPECT_EQ(prompt.messages,
                  QStringList{scaling
                                  ? "Error: Signal Too Noisy!\nTry the acquisition again."
                                  : "Error: Signal Too Noisy!\n\n\n\nTry the acquisition again."});
        ASSERT_EQ(prompt.events.size(), 2);
        EXPECT_TRUE(prompt.events[0].startsWith(QStringLiteral("sound:"))) << "sound first";
        EXPECT_FALSE(point(0).zeroDone);
        EXPECT_FALSE(dialog->session().calibration().record.scalingZero.done);
        EXPECT_EQ(hands.plateZero(), before);
        EXPECT_EQ(dialog->StatusBar1->currentMessage(), "Ready");
    }
}

TEST_F(CalibrateDialog, CancelDuringAZeroStopsItAndWritesNothing) {
    open();
    const std::array<qint32, 3> before = hands.plateZero();
    dialog->cmdZero->click();
    clock.advance(500);
    dialog->cmdCancel->click();
    EXPECT_EQ(unloads, 1);
    clock.advance(5000);
    EXPECT_EQ(hands.plateZero(), before);
    EXPECT_TRUE(prompt.events.filter(QStringLiteral("sound:")).isEmpty()) << "no zero finished";
    EXPECT_FALSE(plate.CalibrationRecordDate().isValid());
}

// A read time-out in the middle of a zero and an unplug in the middle of data: one box each,
// the earlier results kept; after the time-out the technician can go on, after the unplug the
// dialog closes half a second later.
TEST_F(CalibrateDialog, DeviceFaultsMidAcquisitionKeepTheEarlierResults) {
    open();
    hands.takeZero(*dialog);
    const CalPoint zeroed = point(0);
    dialog->cmdZero->click();
    clock.advance(800);
    plate.raise(PlateFault::ReadTimeout);
    EXPECT_EQ(prompt.messages, QStringList{strings::text(strings::CalibrateBlock + 930)});
    EXPECT_TRUE(hands.idle(*dialog));
    EXPECT_EQ(dialog->StatusBar1->currentMessage(), "Ready");
    clock.advance(3000);
    EXPECT_EQ(point(0), zeroed);

    hands.takeZero(*dialog);
    const CalPoint rezeroed = point(0);
    EXPECT_EQ(prompt.events.filter(QStringLiteral("sound:")).size(), 2) << "zeroed again";
    prompt.messages.clear();
    hands.place(CalibrationKilograms, 0, 0);
    dialog->cmdData->click();
    clock.advance(700);
    driver.unplug(plate.serial());
    EXPECT_EQ(prompt.messages, QStringList{strings::text(strings::CalibrateBlock + 920)});
    clock.advance(499);
    EXPECT_EQ(unloads, 0);
    clock.advance(2);
    EXPECT_EQ(unloads, 1);
    EXPECT_EQ(point(0), rezeroed);
}

} // namespace
} // namespace kx::test
