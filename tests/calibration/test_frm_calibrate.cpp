#include "../support/PrintQString.h"
#include "CalibrateBench.h"
#include "FileSaves.h"
#include "calibration/Calibration.h"
#include "calibration/CalibrationRecovery.h"
#include "resources/StringTable.h"
#include "support/IniFile.h"

#include <QDir>
#include <QFileInfo>

namespace kx::test {
namespace {

class CalibrateDialog : public CalibrateDialogBench {
protected:
    const CalPoint& point(int i) const {
        return dialog->session().calibration().record.points[std::size_t(i)];
    }
};

// The first opening creates the profile complete in one save; closing and opening again on it
// writes nothing more.
TEST_F(CalibrateDialog, OpeningAndClosingWritesTheProfileOnceInAll) {
    const IniFile profile = IniFile::sharedProfile();
    ASSERT_TRUE(QDir().mkpath(QFileInfo(profile.path()).absolutePath()));
    ASSERT_FALSE(QFileInfo::exists(profile.path()));
    FileSaves saves(profile.path());
    ASSERT_TRUE(saves.watching());
    for (int opening = 1; opening <= 2; ++opening) {
        open();
        EXPECT_EQ(saves.take(), opening == 1 ? 1 : 0) << "opening " << opening;
        dialog->cmdCancel->click();
        EXPECT_EQ(unloads, opening);
        EXPECT_EQ(saves.take(), 0) << "closing " << opening;
    }
    EXPECT_EQ(profile.value(QStringLiteral("Linearity"), QStringLiteral("Load 8"), {}), "244.922");
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
// dialog closes half a second later, without a question, keeping the work for next time.
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
    EXPECT_TRUE(prompt.questions.empty());
    EXPECT_TRUE(CalibrationRecovery(plate.serial()).exists()) << "the zero is kept for next time";
}

} // namespace
} // namespace kx::test
