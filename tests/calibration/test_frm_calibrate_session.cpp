#include "../support/PrintQString.h"
#include "CalibrateBench.h"
#include "calibration/CalibrationRecovery.h"
#include "resources/StringTable.h"
#include "support/NumberFormat.h"

#include <QGroupBox>
#include <QLabel>
#include <QSignalSpy>
#include <QTableWidget>

namespace kx::test {
namespace {

namespace c = strings::calibrate;

// The dialog as the session's view: its controls reach the session, and what the session
// decides shows in the controls.
class CalibrateView : public CalibrateDialogBench {
protected:
    QStringList asked() const {
        QStringList texts;
        for (const Question& question : prompt.questions)
            texts << question.text;
        return texts;
    }
    bool workKept() const { return CalibrationRecovery(plate.serial()).exists(); }
};

// Every way out of the dialog, and Open, asks first while work no file keeps is at risk;
// going back keeps the dialog and the work, a discard meant closes it and ends the work.
TEST_F(CalibrateView, LeavingWithWorkAtRiskAsksFirst) {
    open();
    hands.walk(*dialog, 0, 1);
    ASSERT_TRUE(workKept());
    const QString leave = strings::text(c::LeaveQuestion).arg(dialog->session().workSummary());
    const std::pair<const char*, std::function<void()>> ways[] = {
        {"Cancel", [&] { dialog->cmdCancel->click(); }},
        {"Esc", [&] { QTest::keyClick(dialog.get(), Qt::Key_Escape); }},
        {"the title bar's close", [&] { dialog->close(); }},
    };
    for (const auto& [name, leaveBy] : ways) {
        prompt.questions.clear();
        leaveBy(); // Esc in the question: Go Back
        EXPECT_EQ(asked(), QStringList{leave}) << name;
        EXPECT_TRUE(dialog->isVisible()) << name;
    }
    prompt.questions.clear();
    dialog->cmdFileName->click();
    EXPECT_EQ(asked(),
              QStringList{strings::text(c::OpenQuestion).arg(dialog->session().workSummary())});
    EXPECT_TRUE(prompt.dialogs.empty()) << "no file asked for";

    prompt.answers = {1, 0}; // Discard, and mean it
    dialog->cmdCancel->click();
    EXPECT_EQ(unloads, 1);
    EXPECT_FALSE(workKept());
}

// Work a crash left is offered when the dialog opens on its plate, and shows restored.
TEST_F(CalibrateView, WorkLeftByACrashIsOfferedBackAndShown) {
    open();
    dialog->txtOpNow->setText(QStringLiteral("JD7"));
    hands.walk(*dialog, 0, 2);
    const CalibrationRecord record = dialog->session().calibration().record;
    dialog.reset(); // gone without closing, as in a crash
    prompt.questions.clear();
    open();
    ASSERT_EQ(prompt.questions.size(), 1u);
    EXPECT_TRUE(prompt.questions[0].text.startsWith("Calibration work on plate 30417"));
    EXPECT_EQ(dialog->session().calibration().record, record);
    EXPECT_EQ(dialog->txtOpNow->text(), "JD7");
    EXPECT_EQ(dialog->lblDataAve[0]->text(),
              formatNumber(record.points[1].dataMean[0], u"0.000000"));
    EXPECT_TRUE(dialog->picPlate->drawing().marks[0].data);
}

// Enter confirms the box it is typed in and presses no button: no save, no OK.
TEST_F(CalibrateView, EnterPressesNoButton) {
    open();
    for (QPushButton* button : dialog->findChildren<QPushButton*>())
        EXPECT_FALSE(button->autoDefault() || button->isDefault())
            << button->objectName().toStdString();
    for (QLineEdit* box : {dialog->txtOpNow, dialog->txtCTemp, dialog->txtScale}) {
        box->setFocus();
        QTest::keyClick(box, Qt::Key_Return);
    }
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(prompt.messages, QStringList()) << "neither Save nor OK checked the boxes";
    EXPECT_TRUE(prompt.questions.empty());
}

// A matrix that no longer matches the points shows so: greyed, its arrows gone, the report
// refused with the reason in its tip and its description, and in a message when Report is
// pressed, from the keyboard too. The panels keep their places throughout, from the empty
// dialog to the stale fit.
TEST_F(CalibrateView, AStaleMatrixShowsSoAndNothingMoves) {
    open();
    QList<QRect> places;
    for (const QGroupBox* frame : dialog->findChildren<QGroupBox*>())
        places << frame->geometry();
    hands.walk(*dialog, 0, 4);
    hands.computeMatrix(*dialog);
    keepScreenshot(*dialog, QStringLiteral("frmCalibrate-fit-current"));
    EXPECT_TRUE(dialog->cmdReport->isEnabled());
    EXPECT_FALSE(dialog->lblMatrixStale->isVisible());
    EXPECT_TRUE(dialog->picPlate->drawing().marks[1].copError);

    hands.clickPoint(*dialog, 1);
    hands.takeZero(*dialog);
    keepScreenshot(*dialog, QStringLiteral("frmCalibrate-fit-stale"));
    EXPECT_TRUE(dialog->lblMatrixStale->isVisible());
    EXPECT_EQ(dialog->lblMatrixStale->text(), strings::text(c::FitStale));
    EXPECT_NE(dialog->flxgrdCalibrationMat->item(0, 0)->text(), "") << "the old matrix stays";
    EXPECT_EQ(dialog->flxgrdCalibrationMat->item(0, 0)->foreground().color(),
              dialog->palette().color(QPalette::Disabled, QPalette::Text));
    for (const PlateDrawing::Mark& mark : dialog->picPlate->drawing().marks)
        EXPECT_FALSE(mark.copError);
    const QString why = strings::text(c::ReportWithStaleFit);
    EXPECT_EQ(dialog->cmdReport->toolTip(), why);
    EXPECT_EQ(dialog->cmdReport->accessibleDescription(), why);
    ASSERT_TRUE(dialog->cmdReport->isEnabled());
    EXPECT_TRUE(dialog->cmdReport->focusPolicy() & Qt::TabFocus);
    prompt.messages.clear();
    dialog->cmdReport->setFocus();
    QTest::keyClick(dialog->cmdReport, Qt::Key_Space);
    EXPECT_EQ(prompt.messages, QStringList{why});
    EXPECT_TRUE(prompt.dialogs.empty()) << "no file asked for";
    QList<QRect> after;
    for (const QGroupBox* frame : dialog->findChildren<QGroupBox*>())
        after << frame->geometry();
    EXPECT_EQ(after, places);
}

// Numbers that cannot be computed are not shown: without a matrix a linearity step shows no
// computed force and no suggestion, never "Inf".
TEST_F(CalibrateView, NothingIsShownThatCannotBeComputed) {
    open();
    hands.unload();
    dialog->cmdScaleZero->click();
    hands.waitIdle(*dialog);
    hands.place(CalibrationKilograms, 0, 0);
    dialog->cmdScaleLoad[0]->click();
    hands.waitIdle(*dialog);
    ASSERT_TRUE(dialog->session().calibration().record.steps[0].done);
    EXPECT_EQ(dialog->lblScaleSuggested->text(), "Suggested: ");
    EXPECT_EQ(dialog->flxgrdLinearity->item(0, 1)->text(), "");
    EXPECT_EQ(dialog->flxgrdLinearity->item(0, 0)->text(), "244.922");
}

// The bench window can follow the point the technician is at.
TEST_F(CalibrateView, TheCurrentPointIsAnnounced) {
    open();
    QSignalSpy moved(dialog.get(), &frmCalibrate::currentPointChanged);
    dialog->cmdNext->click();
    hands.clickPoint(*dialog, 6);
    ASSERT_EQ(moved.size(), 2);
    EXPECT_EQ(moved[0][0].toInt(), 1);
    EXPECT_EQ(moved[1][0].toInt(), 6);
}

} // namespace
} // namespace kx::test
