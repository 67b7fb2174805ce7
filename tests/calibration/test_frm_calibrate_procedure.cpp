#include "../support/PrintQString.h"
#include "CalibrateBench.h"
#include "MainWindowBench.h"
#include "app/ConverterPanel.h"
#include "calibration/Calibration.h"
#include "resources/StringTable.h"
#include "support/IniFile.h"

#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QTableWidget>
#include <cmath>

namespace kx::test {
namespace {

class CalibrationProcedure : public MainWindowBench {
protected:
    frmCalibrate& openCalibration() {
        Scenario bench;
        bench.gravity = ProfileGravity;
        bench.plates = {calibrationPlateConfig()};
        start(bench);
        enterServiceMode();
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
};

// The whole procedure as a technician does it: ten points reached by clicks on the picture,
// the matrix, the linearity weights, the suggested scaling, save and OK. The plate ends up
// holding the matrix it hides, and the operator records.
TEST_F(CalibrationProcedure, TheGridWalkedByHandGivesThePlateItsOwnMatrix) {
    frmCalibrate& dialog = openCalibration();
    SimPlate& plate = benchPlate();
    EXPECT_EQ(dialog.txtExcitation->text(), window->frmConverter->txtAVoltageCurr->text());
    EXPECT_EQ(dialog.txtDuration->text(), "2");
    EXPECT_EQ(dialog.StatusBar1->currentMessage(), "Ready");
    keepScreenshot(dialog, QStringLiteral("frmCalibrate-first-point"));

    CalibrateHands hands(clock, plate);
    const int points = int(dialog.calibration().record.points.size());
    ASSERT_EQ(points, 10);
    hands.walk(dialog, 0, 5);
    keepScreenshot(dialog, QStringLiteral("frmCalibrate-mid-grid"));
    hands.walk(dialog, 5, points);
    for (const CalPoint& point : dialog.calibration().record.points)
        EXPECT_TRUE(point.zeroDone && point.dataDone);

    hands.computeMatrix(dialog);
    EXPECT_EQ(messagesBesidesEngine(), QStringList());
    EXPECT_EQ(dialog.flxgrdErrors->rowCount(), points);
    EXPECT_EQ(dialog.StatusBar1->currentMessage(), "Ready");

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

    dialog.txtOpNow->setText(QStringLiteral(" JD7 "));
    dialog.txtCTemp->setText(QStringLiteral("22.5"));
    dialog.txtCRH->setText(QStringLiteral("41"));
    dialog.txtCPres->setText(QStringLiteral("1013.2"));
    const CalMatrix scaled = dialog.calibration().scaledMatrix;
    dialog.cmdOK->click();
    EXPECT_EQ(messagesBesidesEngine(), QStringList());
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_TRUE(window->isVisible());

    const Matrix3& truth = plate.truth().trueMatrix;
    for (int r = 0; r < 3; ++r) {
        double largest = 0;
        for (int c = 0; c < 3; ++c)
            largest = std::max(largest, std::abs(truth[r][c]));
        for (int c = 0; c < 3; ++c) {
            const float held = plate.MatrixElement(r, c);
            // The plate holds the single-precision value of the text the dialog handed over.
            EXPECT_EQ(held, QString::number(double(scaled[r][c]), 'g', 7).toFloat())
                << r << "," << c;
            EXPECT_LT(std::abs(held - truth[r][c]) / largest, 0.0005) << r << "," << c;
        }
    }
    EXPECT_EQ(plate.CalibrationRecordOperator(), "JD7");
    EXPECT_TRUE(plate.CalibrationRecordDate().isValid());
    EXPECT_EQ(plate.InspectionRecordOperator(), "JD7");
    EXPECT_LE(std::abs(plate.CalibrationRecordDate().secsTo(plate.InspectionRecordDate())), 1);
    // The unsaved calibration was saved on the way, under the plate's serial number.
    const QString folder = CalibrationSettings::load(IniFile::sharedProfile()).LastFilePath;
    EXPECT_TRUE(QFileInfo::exists(QDir(folder).filePath(QStringLiteral("30417_1.cal"))))
        << folder.toStdString();
}

} // namespace
} // namespace kx::test
