#include "../support/PrintQString.h"
#include "CalibrateBench.h"
#include "MainWindowBench.h"
#include "app/ConverterPanel.h"
#include "calibration/Calibration.h"
#include "measure/StripChart.h"
#include "resources/StringTable.h"
#include "support/IniFile.h"
#include "support/NumberFormat.h"
#include "support/Settings.h"
#include "support/SettingsKeys.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QProgressBar>
#include <QRadioButton>
#include <QRegularExpression>
#include <QTableWidget>
#include <cmath>

namespace kx::test {
namespace {

namespace c = strings::calibrate;

class CalibrationProcedure : public MainWindowBench {
protected:
    frmCalibrate& openCalibration() {
        window->cmdCalibrate->click();
        frmCalibrate* dialog = shownDialog<frmCalibrate>();
        EXPECT_NE(dialog, nullptr);
        return *dialog;
    }
    SimPlate& benchPlate() const { return *plate(calibrationPlateConfig().serial); }

    // Messages other than the engine's absence, which depends on the machine.
    QStringList messagesBesidesEngine() const {
        QStringList shown = prompt.messages;
        shown.removeAll(strings::text(strings::calibrate::EngineUnavailable));
        return shown;
    }
    // The point's zero averages as the plate's zero codes.
    static std::array<qint32, 3> codes(const CalPoint& p) {
        return {qint32(std::lround(p.zeroAverage[0])), qint32(std::lround(p.zeroAverage[1])),
                qint32(std::lround(p.zeroAverage[2]))};
    }
};

void expectFitsTheScreenWithEveryInputNamed(const frmCalibrate& dialog) {
    const QSize needed = dialog.minimumSizeHint();
    EXPECT_LE(needed.width(), 1366);
    EXPECT_LE(needed.height(), 768 - 40) << "room for the title bar and the task bar";
    for (const QWidget* input : dialog.findChildren<QWidget*>()) {
        if (qobject_cast<const QLineEdit*>(input) || qobject_cast<const QCheckBox*>(input) ||
            qobject_cast<const QRadioButton*>(input)) {
            EXPECT_FALSE(input->accessibleName().isEmpty()) << input->objectName().toStdString();
        }
    }
}

// The plate is 0.8128 m wide and 0.762 m high; its origin lies half-way across and 0.5588 m
// below the top edge, and up on the plate is up on screen.
void expectThePlateDrawnToScaleWithYUp(const PlateView& view) {
    const QRectF plateRect = view.plateRect();
    EXPECT_NEAR(plateRect.width() / plateRect.height(), 0.8128 / 0.762, 0.01);
    const QPointF origin = view.toDevice({0, 0});
    EXPECT_NEAR((origin.x() - plateRect.left()) / plateRect.width(), 0.5, 0.005);
    EXPECT_NEAR((origin.y() - plateRect.top()) / plateRect.height(), 0.5588 / 0.762, 0.005);
    EXPECT_LT(view.toDevice({0, 0.3}).y(), origin.y());
    const QPointF back = view.toPlate(view.toDevice({-0.2, 0.41}));
    EXPECT_NEAR(back.x(), -0.2, 1e-9);
    EXPECT_NEAR(back.y(), 0.41, 1e-9);
}

// The whole procedure as a technician does it, each step checked on the way: the display, the
// first point by hand, the rest reached by clicks on the picture with one weight put 2 cm
// beside its mark, the fit pointing at it, that point taken again, the linearity weights, the
// suggested scaling, the checks before saving, OK. The plate ends up holding the matrix it
// hides and the operator records; the file saved on the way opens whole in the next
// calibration.
TEST_F(CalibrationProcedure, TheGridWalkedByHandGivesThePlateItsOwnMatrix) {
    Scenario bench;
    bench.gravity = ProfileGravity;
    bench.plates = {calibrationPlateConfig()};
    start(bench);
    enterServiceMode();
    frmCalibrate& dialog = openCalibration();
    SimPlate& plate = benchPlate();
    EXPECT_EQ(dialog.windowTitle(),
              "KX Force Platforms Control Panel - Force Platform Calibration");
    EXPECT_EQ(dialog.txtExcitation->text(), window->frmConverter->txtAVoltageCurr->text());
    EXPECT_EQ(dialog.txtDuration->text(), "2");
    EXPECT_EQ(dialog.lblFreqTxt->text(), "100.000");
    EXPECT_EQ(dialog.StatusBar1->currentMessage(), "Ready");
    expectFitsTheScreenWithEveryInputNamed(dialog);
    dialog.resize(1340, 700);
    expectThePlateDrawnToScaleWithYUp(dialog.picPlate->view());
    keepScreenshot(dialog, QStringLiteral("frmCalibrate-first-point"));

    // The display streams the bridges on one span the wheel sets, until a zero starts.
    CalibrateHands hands(clock, plate);
    dialog.cmdDisplay->click();
    EXPECT_EQ(dialog.cmdDisplay->text(), "&Display OFF");
    EXPECT_FLOAT_EQ(dialog.KXIStripChart[0]->Span(), 50.0f) << "5000 points at 100 Hz";
    turnWheel(dialog.KXIStripChart[1], -1);
    for (const StripChart* chart : dialog.KXIStripChart)
        EXPECT_FLOAT_EQ(chart->Span(), 60.0f) << "one rung up the ladder";
    hands.place(CalibrationKilograms, 0.1, 0.1);
    clock.advance(1000);
    EXPECT_GT(dialog.KXIStripChart[0]->Mean(), 0.0001f) << "the loaded bridge shows";
    dialog.cmdZero->click();
    EXPECT_EQ(dialog.cmdDisplay->text(), "&Display ON");
    EXPECT_EQ(dialog.KXIStripChart[0]->Mean(), 0.0f) << "the zero clears the charts";
    hands.waitIdle(dialog);

    // The first points by hand: an accepted zero becomes the plate's zero; a click leaving a
    // point without data drops its zero, Next keeps it; Get Data writes the zero again first.
    const auto point = [&dialog](int i) -> const CalPoint& {
        return dialog.session().calibration().record.points[std::size_t(i)];
    };
    prompt.events.clear();
    hands.takeZero(dialog);
    EXPECT_EQ(hands.plateZero(), codes(point(0)));
    EXPECT_EQ(dialog.lblZeroAve[1]->text(), formatNumber(point(0).zeroAverage[1], u"0.0"));
    hands.clickPoint(dialog, 2);
    EXPECT_FALSE(point(0).zeroDone) << "left by a click without data";
    EXPECT_TRUE(dialog.lblZeroAve[0]->text().isEmpty()) << "point 3 has no zero to show";
    hands.takeZero(dialog);
    dialog.cmdNext->click();
    EXPECT_EQ(dialog.session().calibration().currentPoint, 3);
    EXPECT_TRUE(point(2).zeroDone) << "left by Next";
    hands.clickPoint(dialog, 0);
    hands.takeZero(dialog);
    for (int channel = 0; channel < 3; ++channel)
        plate.SetZeroValue(channel, Which::Current, 0);
    hands.place(CalibrationKilograms, -0.30, 0.46);
    dialog.cmdData->click();
    EXPECT_EQ(dialog.StatusBar1->currentMessage(), "Acquiring data");
    EXPECT_EQ(hands.plateZero(), codes(point(0)))
        << "the point's zero goes back into the plate first";
    EXPECT_EQ(dialog.ProgressBar1->maximum(), 200) << "2 s at 100 Hz";
    clock.advance(1000);
    EXPECT_NEAR(dialog.ProgressBar1->value(), 100, 15) << "the bar follows the plate";
    hands.waitIdle(dialog);
    EXPECT_EQ(prompt.events.filter(QStringLiteral("sound:")).size(), 4) << "one per acquisition";

    hands.walk(dialog, 1, 5);
    keepScreenshot(dialog, QStringLiteral("frmCalibrate-mid-grid"));
    hands.walk(dialog, 5, 10, 6);
    for (int i = 0; i < 10; ++i)
        EXPECT_TRUE(point(i).zeroDone && point(i).dataDone) << "clicks keep zeros with data";

    // The weight beside point 7's mark gives it the longest error arrow, and the fit names it.
    hands.computeMatrix(dialog);
    EXPECT_EQ(messagesBesidesEngine(), QStringList());
    EXPECT_EQ(dialog.flxgrdErrors->rowCount(), 10);
    EXPECT_EQ(dialog.StatusBar1->currentMessage(), "Ready");
    double longest = 0;
    int longestAt = -1;
    for (int i = 0; i < 10; ++i) {
        const std::optional<QPointF> error =
            dialog.picPlate->drawing().marks[std::size_t(i)].copError;
        ASSERT_TRUE(error) << "every point with data has an arrow";
        if (std::hypot(error->x(), error->y()) > longest) {
            longest = std::hypot(error->x(), error->y());
            longestAt = i;
        }
    }
    EXPECT_EQ(longestAt, 6);
    EXPECT_GT(longest * ErrorMagnification * dialog.picPlate->view().pixelsPerMetre(), 20)
        << "the arrow is long enough to see";
    const QString words = dialog.lblFitQuality->text();
    EXPECT_TRUE(words.contains(QRegularExpression(QStringLiteral("Points? (\\d+, )*7[ ,]"))))
        << words.toStdString();
    EXPECT_GE(dialog.lblFitQuality->height(),
              dialog.lblFitQuality->heightForWidth(dialog.lblFitQuality->width()))
        << "every finding in sight";
    keepScreenshot(dialog, QStringLiteral("frmCalibrate-after-fit-arrows"));
    hands.clickPoint(dialog, 6);
    hands.takeZero(dialog);
    hands.takeData(dialog, 6);
    hands.computeMatrix(dialog);
    for (const bool flagged : dialog.session().calibration().fit->diagnostics.flagged)
        EXPECT_FALSE(flagged) << "taken again on its mark";

    // Linearity: a zero, then 25 to 100 kg stacked at the plate's origin and taken off again.
    hands.unload();
    dialog.cmdScaleZero->click();
    hands.waitIdle(dialog);
    for (int step = 0; step < 8; ++step) {
        const int weights = step < 4 ? step + 1 : 8 - step;
        hands.unload();
        hands.place(CalibrationKilograms * weights, 0, 0);
        dialog.cmdScaleLoad[std::size_t(step)]->click();
        hands.waitIdle(dialog);
    }
    EXPECT_EQ(messagesBesidesEngine(), QStringList());
    const QString suggested = dialog.lblScaleSuggested->text().mid(11);
    EXPECT_NEAR(suggested.toDouble(), 1.0, 0.002) << "the fitted matrix weighs right";
    dialog.txtScale->setText(suggested);
    dialog.cmdScale->click();
    keepScreenshot(dialog, QStringLiteral("frmCalibrate-after-fit"));

    // Save refuses what it cannot record, in the order the boxes are checked.
    struct Refusal {
        const char* operatorCode;
        const char* temperature;
        const char* humidity;
        int message;
    };
    for (const Refusal& k : {Refusal{"   ", "20", "40", c::InvalidOperator},
                             Refusal{"AB", "", "40", c::MissingConditions},
                             Refusal{"AB", "20", "4O", c::InvalidCondition}}) {
        dialog.txtOpNow->setText(QLatin1String(k.operatorCode));
        dialog.txtCTemp->setText(QLatin1String(k.temperature));
        dialog.txtCRH->setText(QLatin1String(k.humidity));
        dialog.txtCPres->setText(QStringLiteral("1013.2"));
        prompt.messages.clear();
        dialog.cmdFileSave->click();
        EXPECT_EQ(messagesBesidesEngine(), QStringList{strings::text(k.message)});
        EXPECT_TRUE(dialog.lblFileName->text().isEmpty()) << "nothing was written";
    }

    dialog.txtOpNow->setText(QStringLiteral(" JD7 "));
    dialog.txtCTemp->setText(QStringLiteral("22.5"));
    dialog.txtCRH->setText(QStringLiteral("41"));
    const CalMatrix scaled = dialog.session().calibration().scaledMatrix;
    prompt.messages.clear();
    dialog.cmdOK->click();
    CalibrationRecord record = dialog.session().calibration().record;
    record.scalingZero.temperature = 0; // the file keeps none for the scaling zero
    EXPECT_EQ(messagesBesidesEngine(), QStringList());
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_TRUE(window->isVisible());

    const Matrix3& truth = plate.truth().trueMatrix;
    for (int r = 0; r < 3; ++r) {
        double largest = 0;
        for (int col = 0; col < 3; ++col)
            largest = std::max(largest, std::abs(truth[r][col]));
        for (int col = 0; col < 3; ++col) {
            const float held = plate.MatrixElement(r, col);
            // The plate holds the single-precision value of the text the dialog handed over.
            EXPECT_EQ(held, QString::number(double(scaled[r][col]), 'g', 7).toFloat())
                << r << "," << col;
            EXPECT_LT(std::abs(held - truth[r][col]) / largest, 0.0005) << r << "," << col;
        }
    }
    EXPECT_EQ(plate.CalibrationRecordOperator(), "JD7");
    EXPECT_TRUE(plate.CalibrationRecordDate().isValid());
    EXPECT_EQ(plate.InspectionRecordOperator(), "JD7");
    EXPECT_LE(std::abs(plate.CalibrationRecordDate().secsTo(plate.InspectionRecordDate())), 1);

    // The unsaved calibration was saved on the way, under the plate's serial number, and opens
    // whole in the next calibration, whose charts keep the span chosen by the wheel.
    const QString folder = CalibrationSettings::load(IniFile::sharedProfile()).LastFilePath;
    const QString saved = QDir(folder).filePath(QStringLiteral("30417_1.cal"));
    ASSERT_TRUE(QFileInfo::exists(saved)) << saved.toStdString();
    EXPECT_EQ(GetSettingString(SettingsRoot::CurrentUser, QLatin1String(kCalibrationKey),
                               QStringLiteral("Chart Span (s)"), {}),
              QStringLiteral("60"));
    frmCalibrate& next = openCalibration();
    next.cmdDisplay->click();
    EXPECT_FLOAT_EQ(next.KXIStripChart[2]->Span(), 60.0f);
    prompt.fileAnswers.push_back(saved);
    next.cmdFileName->click();
    ASSERT_EQ(prompt.dialogs.size(), 1u);
    EXPECT_EQ(prompt.dialogs[0].title,
              "KX Force Platforms Control Panel - Force Platform Calibration File");
    EXPECT_EQ(prompt.dialogs[0].filter, "All Files (*.*)|*.*|Calibration Files (*.cal)|*.cal");
    EXPECT_EQ(prompt.dialogs[0].defaultExtension, ".cal");
    EXPECT_EQ(prompt.dialogs[0].initialFolder, QFileInfo(saved).absolutePath());
    EXPECT_EQ(next.session().calibration().record, record);
    EXPECT_EQ(next.lblSerialNumFileTxt->text(), "30417");
    EXPECT_EQ(next.txtCPres->text(), "1013.2");
    EXPECT_EQ(next.lblZeroAve[0]->text(), formatNumber(record.points[0].zeroAverage[0], u"0.0"));
    for (const PlateDrawing::Mark& mark : next.picPlate->drawing().marks)
        EXPECT_TRUE(mark.zero && mark.data);

    // A damaged file shows the reader's message and changes nothing; OK with an operator of
    // blanks leaves the plate alone.
    const QString damaged = QDir(folder).filePath(QStringLiteral("damaged.cal"));
    QFile file(damaged);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray::fromHex("0a000000cdcc"));
    file.close();
    prompt.messages.clear();
    prompt.fileAnswers.push_back(damaged);
    next.cmdFileName->click();
    ASSERT_EQ(messagesBesidesEngine().size(), 1);
    EXPECT_EQ(next.session().calibration().record, record);
    const QDateTime recorded = plate.CalibrationRecordDate();
    prompt.messages.clear();
    next.txtOpNow->setText(QStringLiteral("    "));
    next.cmdOK->click();
    EXPECT_EQ(messagesBesidesEngine(), QStringList{strings::text(c::InvalidOperator)});
    EXPECT_TRUE(next.isVisible());
    EXPECT_EQ(plate.MatrixElement(0, 0), QString::number(double(scaled[0][0]), 'g', 7).toFloat());
    EXPECT_EQ(plate.CalibrationRecordDate(), recorded);
}

} // namespace
} // namespace kx::test
