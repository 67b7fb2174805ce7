#include "../support/PrintQString.h"
#include "CalibrateBench.h"
#include "calibration/Calibration.h"
#include "measure/StripChart.h"
#include "resources/StringTable.h"
#include "support/Folders.h"
#include "support/IniFile.h"
#include "support/NumberFormat.h"
#include "support/Settings.h"
#include "support/SettingsKeys.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QProgressBar>
#include <QRadioButton>
#include <QRegularExpression>
#include <QTableWidget>
#include <cmath>

namespace kx::test {
namespace {

namespace c = strings::calibrate;

class CalibrateDialog : public DialogFixture<frmCalibrate> {
protected:
    SimPlate& benchPlate() {
        SimPlate* added = driver.addPlate(calibrationPlateConfig());
        added->loads().setGravity(ProfileGravity);
        openPlates();
        return *added;
    }
    frmCalibrate& open() {
        openDialog(&plate, [](frmCalibrate& d) { d.txtDuration->setText(QStringLiteral("2")); });
        return *dialog;
    }
    const CalPoint& point(int i) const {
        return dialog->calibration().record.points[std::size_t(i)];
    }
    void fillFileBoxes() {
        dialog->txtOpNow->setText(QStringLiteral("AB"));
        dialog->txtCTemp->setText(QStringLiteral("21"));
        dialog->txtCRH->setText(QStringLiteral("40"));
        dialog->txtCPres->setText(QStringLiteral("1000"));
    }
    std::array<qint32, 3> plateZero() {
        return {plate.ZeroValue(0, Which::Current), plate.ZeroValue(1, Which::Current),
                plate.ZeroValue(2, Which::Current)};
    }

    SimPlate& plate = benchPlate();
    CalibrateHands hands{clock, plate};
};

TEST_F(CalibrateDialog, FitsTheSmallestScreenAndNamesEveryInput) {
    open();
    const QSize needed = dialog->minimumSizeHint();
    EXPECT_LE(needed.width(), 1366);
    EXPECT_LE(needed.height(), 768 - 40) << "room for the title bar and the task bar";
    for (const QWidget* input : dialog->findChildren<QWidget*>()) {
        if (qobject_cast<const QLineEdit*>(input) || qobject_cast<const QCheckBox*>(input) ||
            qobject_cast<const QRadioButton*>(input)) {
            EXPECT_FALSE(input->accessibleName().isEmpty()) << input->objectName().toStdString();
        }
    }
    EXPECT_EQ(dialog->windowTitle(),
              "KX Force Platforms Control Panel - Force Platform Calibration");
    EXPECT_EQ(dialog->lblFreqTxt->text(), "100.000");
}

TEST_F(CalibrateDialog, APlateClickMapsToPlateCoordinatesWithYUp) {
    open();
    dialog->resize(1300, 720);
    const PlateView view = dialog->picPlate->view();
    const QRectF plateRect = view.plateRect();
    // The plate is 0.8128 m wide and 0.762 m high; its origin lies half-way across and
    // 0.5588 m below the top edge.
    EXPECT_NEAR(plateRect.width() / plateRect.height(), 0.8128 / 0.762, 0.01);
    const QPointF origin = view.toDevice({0, 0});
    EXPECT_NEAR((origin.x() - plateRect.left()) / plateRect.width(), 0.5, 0.005);
    EXPECT_NEAR((origin.y() - plateRect.top()) / plateRect.height(), 0.5588 / 0.762, 0.005);
    EXPECT_LT(view.toDevice({0, 0.3}).y(), origin.y()) << "up on the plate is up on screen";
    const QPointF back = view.toPlate(view.toDevice({-0.2, 0.41}));
    EXPECT_NEAR(back.x(), -0.2, 1e-9);
    EXPECT_NEAR(back.y(), 0.41, 1e-9);
}

// A click that leaves a point without data drops its zero; Next keeps it.
TEST_F(CalibrateDialog, LeavingAPointByClickDropsItsLoneZeroNextKeepsIt) {
    open();
    hands.takeZero(*dialog);
    ASSERT_TRUE(point(0).zeroDone);
    hands.clickPoint(*dialog, 2);
    EXPECT_EQ(dialog->calibration().currentPoint, 2);
    EXPECT_FALSE(point(0).zeroDone) << "left by a click without data";
    EXPECT_TRUE(dialog->lblZeroAve[0]->text().isEmpty()) << "point 3 has no zero to show";

    hands.takeZero(*dialog);
    dialog->cmdNext->click();
    EXPECT_EQ(dialog->calibration().currentPoint, 3);
    EXPECT_TRUE(point(2).zeroDone) << "left by Next";

    hands.clickPoint(*dialog, 2);
    hands.takeData(*dialog, 2);
    hands.clickPoint(*dialog, 5);
    EXPECT_TRUE(point(2).zeroDone && point(2).dataDone) << "a point with data keeps its zero";
}

TEST_F(CalibrateDialog, AnAcceptedZeroBecomesThePlatesZeroAndGetDataWritesItAgain) {
    open();
    hands.takeZero(*dialog);
    const CalPoint zeroed = point(0);
    ASSERT_TRUE(zeroed.zeroDone);
    const std::array<qint32, 3> expected{qint32(std::lround(zeroed.zeroAverage[0])),
                                         qint32(std::lround(zeroed.zeroAverage[1])),
                                         qint32(std::lround(zeroed.zeroAverage[2]))};
    EXPECT_EQ(plateZero(), expected);
    EXPECT_EQ(dialog->lblZeroAve[1]->text(), formatNumber(zeroed.zeroAverage[1], u"0.0"));
    EXPECT_EQ(dialog->StatusBar1->currentMessage(), "Ready");

    for (int channel = 0; channel < 3; ++channel)
        plate.SetZeroValue(channel, Which::Current, 0);
    hands.place(CalibrationKilograms, 0, 0);
    dialog->cmdData->click();
    EXPECT_EQ(dialog->StatusBar1->currentMessage(), "Acquiring data");
    EXPECT_EQ(plateZero(), expected) << "the point's zero goes back into the plate first";
    EXPECT_EQ(dialog->ProgressBar1->maximum(), 200) << "2 s at 100 Hz";
    clock.advance(1000);
    EXPECT_NEAR(dialog->ProgressBar1->value(), 100, 15) << "the bar follows the plate";
    hands.waitIdle(*dialog);
    EXPECT_TRUE(point(0).dataDone);
    EXPECT_GT(point(0).dataMean[0], 0);
    // The completion sound comes with every acquisition.
    EXPECT_EQ(prompt.events.filter(QStringLiteral("sound:")).size(), 2);
}

// A zero noisier than the profile allows is refused with the text of its mode, after the
// completion sound, and the earlier results stay.
TEST_F(CalibrateDialog, ANoisyZeroIsRefusedWithTheTextOfItsMode) {
    for (const bool scaling : {false, true}) {
        const IniFile profile = IniFile::sharedProfile();
        CreateFolderPath(FolderOfPath(profile.path()));
        profile.setValue(QStringLiteral("Calibration"), QStringLiteral("Max Zero StdDev"),
                         QStringLiteral("1"));
        open();
        prompt.events.clear();
        prompt.messages.clear();
        const std::array<qint32, 3> before = plateZero();
        hands.unload();
        (scaling ? dialog->cmdScaleZero : dialog->cmdZero)->click();
        hands.waitIdle(*dialog);
        const QString refusal = strings::text(scaling ? c::TooNoisyScaling : c::TooNoisy);
        EXPECT_EQ(prompt.messages, QStringList{refusal});
        ASSERT_EQ(prompt.events.size(), 2);
        EXPECT_TRUE(prompt.events[0].startsWith(QStringLiteral("sound:"))) << "sound first";
        EXPECT_FALSE(point(0).zeroDone);
        EXPECT_FALSE(dialog->calibration().record.scalingZero.done);
        EXPECT_EQ(plateZero(), before);
        EXPECT_EQ(dialog->StatusBar1->currentMessage(), "Ready");
        dialog->close();
    }
    EXPECT_EQ(strings::text(c::TooNoisy),
              "Error: Signal Too Noisy!\n\n\n\nTry the acquisition again.");
}

// Save refuses what it cannot record, in the order the boxes are checked.
TEST_F(CalibrateDialog, SaveNeedsAnOperatorAndEveryCondition) {
    struct Case {
        const char* operatorCode;
        const char* temperature;
        const char* humidity;
        int message;
    };
    for (const Case& k :
         {Case{"   ", "20", "40", c::InvalidOperator}, Case{"AB", "", "40", c::MissingConditions},
          Case{"AB", "20", "4O", c::InvalidCondition}}) {
        open();
        fillFileBoxes();
        dialog->txtOpNow->setText(QLatin1String(k.operatorCode));
        dialog->txtCTemp->setText(QLatin1String(k.temperature));
        dialog->txtCRH->setText(QLatin1String(k.humidity));
        prompt.messages.clear();
        dialog->cmdFileSave->click();
        EXPECT_EQ(prompt.messages, QStringList{strings::text(k.message)});
        EXPECT_TRUE(dialog->lblFileName->text().isEmpty()) << "nothing was written";
        dialog->close();
    }
}

TEST_F(CalibrateDialog, ASavedCalibrationOpensWhole) {
    open();
    hands.walk(*dialog, 0, 4);
    dialog->cmdNext->click();
    hands.takeZero(*dialog); // a zero without data at point 5
    fillFileBoxes();
    dialog->cmdFileSave->click();
    const QString saved = QDir::fromNativeSeparators(dialog->lblFileName->text());
    ASSERT_TRUE(saved.endsWith(QStringLiteral("/30417_1.cal"))) << saved.toStdString();
    const CalibrationRecord record = dialog->calibration().record;
    dialog->close();

    open();
    prompt.fileAnswers.push_back(saved);
    dialog->cmdFileName->click();
    ASSERT_EQ(prompt.dialogs.size(), 1u);
    EXPECT_EQ(prompt.dialogs[0].title,
              "KX Force Platforms Control Panel - Force Platform Calibration File");
    EXPECT_EQ(prompt.dialogs[0].filter, "All Files (*.*)|*.*|Calibration Files (*.cal)|*.cal");
    EXPECT_EQ(prompt.dialogs[0].defaultExtension, ".cal");
    EXPECT_EQ(prompt.dialogs[0].initialFolder, QFileInfo(saved).absolutePath());
    EXPECT_EQ(dialog->calibration().record, record);
    EXPECT_EQ(dialog->lblSerialNumFileTxt->text(), "30417");
    EXPECT_EQ(dialog->txtCPres->text(), "1000");
    EXPECT_EQ(dialog->lblZeroAve[0]->text(), formatNumber(record.points[0].zeroAverage[0], u"0.0"));
    int withData = 0;
    for (const PlateDrawing::Mark& mark : dialog->picPlate->drawing().marks)
        withData += mark.data ? 1 : 0;
    EXPECT_EQ(withData, 4);
    EXPECT_TRUE(dialog->picPlate->drawing().marks[4].zero);

    // A damaged file shows the reader's message and changes nothing.
    const QString damaged = QFileInfo(saved).absolutePath() + QStringLiteral("/damaged.cal");
    QFile file(damaged);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray::fromHex("0a000000cdcc"));
    file.close();
    prompt.messages.clear();
    prompt.fileAnswers.push_back(damaged);
    dialog->cmdFileName->click();
    ASSERT_EQ(prompt.messages.size(), 1);
    EXPECT_FALSE(prompt.messages[0].isEmpty());
    EXPECT_EQ(dialog->calibration().record, record);
}

TEST_F(CalibrateDialog, OkWithABlankOperatorLeavesThePlateAlone) {
    open();
    hands.walk(*dialog, 0, 1);
    const float cell = plate.MatrixElement(0, 0);
    const QDateTime recorded = plate.CalibrationRecordDate();
    dialog->txtOpNow->setText(QStringLiteral("    "));
    dialog->cmdOK->click();
    EXPECT_EQ(prompt.messages, QStringList{strings::text(c::InvalidOperator)});
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(plate.MatrixElement(0, 0), cell);
    EXPECT_EQ(plate.CalibrationRecordDate(), recorded);
}

TEST_F(CalibrateDialog, CancelDuringAZeroStopsItAndWritesNothing) {
    open();
    const std::array<qint32, 3> before = plateZero();
    dialog->cmdZero->click();
    clock.advance(500);
    dialog->cmdCancel->click();
    EXPECT_EQ(unloads, 1);
    clock.advance(5000);
    EXPECT_EQ(plateZero(), before);
    EXPECT_TRUE(prompt.events.filter(QStringLiteral("sound:")).isEmpty()) << "no zero finished";
    EXPECT_FALSE(plate.CalibrationRecordDate().isValid());
}

TEST_F(CalibrateDialog, UnplugDuringDataShowsOneBoxAndClosesHalfASecondLater) {
    open();
    hands.takeZero(*dialog);
    const CalPoint zeroed = point(0);
    hands.place(CalibrationKilograms, 0, 0);
    dialog->cmdData->click();
    clock.advance(700);
    driver.unplug(plate.serial());
    EXPECT_EQ(prompt.messages, QStringList{strings::text(strings::CalibrateBlock + 920)});
    clock.advance(499);
    EXPECT_EQ(unloads, 0);
    clock.advance(2);
    EXPECT_EQ(unloads, 1);
    EXPECT_EQ(point(0), zeroed) << "the zero taken before stays";
}

// A read time-out in the middle of a zero: the box, the idle state, the old zero kept.
TEST_F(CalibrateDialog, ATimeOutMidZeroReturnsToIdleWithTheEarlierZero) {
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
    EXPECT_TRUE(point(0).zeroDone) << "the technician can start again";
}

// The technician must see at a glance where the plate is off: a weight put 2 cm beside one
// mark gives that point the longest error arrow and the fit names it.
TEST_F(CalibrateDialog, AWeightBesideItsMarkStandsOutInThePictureAndTheWords) {
    open();
    dialog->resize(1340, 700);
    hands.walk(*dialog, 0, 10, 6);
    hands.computeMatrix(*dialog);
    double longest = 0;
    int longestAt = -1;
    for (int i = 0; i < 10; ++i) {
        const std::optional<QPointF> error =
            dialog->picPlate->drawing().marks[std::size_t(i)].copError;
        ASSERT_TRUE(error) << "every point with data has an arrow";
        const double length = std::hypot(error->x(), error->y());
        if (length > longest) {
            longest = length;
            longestAt = i;
        }
    }
    EXPECT_EQ(longestAt, 6);
    EXPECT_GT(longest * ErrorMagnification * dialog->picPlate->view().pixelsPerMetre(), 20)
        << "the arrow is long enough to see";
    const QString words = dialog->lblFitQuality->text();
    EXPECT_TRUE(words.contains(QRegularExpression(QStringLiteral("Points? (\\d+, )*7[ ,]"))))
        << words.toStdString();
    EXPECT_GE(dialog->lblFitQuality->height(),
              dialog->lblFitQuality->heightForWidth(dialog->lblFitQuality->width()))
        << "every finding in sight";
    keepScreenshot(*dialog, QStringLiteral("frmCalibrate-after-fit-arrows"));
}

TEST_F(CalibrateDialog, TheDisplayStreamsTheBridgesUntilAnAcquisitionStarts) {
    open();
    dialog->cmdDisplay->click();
    EXPECT_EQ(dialog->cmdDisplay->text(), "&Display OFF");
    hands.place(CalibrationKilograms, 0.1, 0.1);
    clock.advance(1000);
    EXPECT_GT(dialog->KXIStripChart[0]->Mean(), 0.0001f) << "the loaded bridge shows";
    dialog->cmdZero->click();
    EXPECT_EQ(dialog->cmdDisplay->text(), "&Display ON");
    EXPECT_EQ(dialog->KXIStripChart[0]->Mean(), 0.0f) << "the zero clears the charts";
}

TEST_F(CalibrateDialog, TheWheelSpanIsSharedByTheChartsAndKeptForTheNextCalibration) {
    open();
    dialog->cmdDisplay->click();
    EXPECT_FLOAT_EQ(dialog->KXIStripChart[0]->Span(), 50.0f) << "5000 points at 100 Hz";
    turnWheel(dialog->KXIStripChart[1], -1);
    for (const StripChart* chart : dialog->KXIStripChart)
        EXPECT_FLOAT_EQ(chart->Span(), 60.0f) << "one rung up the ladder";
    dialog->close();
    EXPECT_EQ(GetSettingString(SettingsRoot::CurrentUser, QLatin1String(kCalibrationKey),
                               QStringLiteral("Chart Span (s)"), {}),
              QStringLiteral("60"));

    open();
    dialog->cmdDisplay->click();
    EXPECT_FLOAT_EQ(dialog->KXIStripChart[2]->Span(), 60.0f);
}

} // namespace
} // namespace kx::test
