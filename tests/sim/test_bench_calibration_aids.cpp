// What the bench gives a technician who trains calibrations: time at speed, the stored matrix's
// errors before and after, the calibration's points numbered and the one it is at, and a
// loading strip that stays above the dialogs.
#include "BenchFixture.h"
#include "BusyClock.h"
#include "sim/BenchLoadingStrip.h"
#include "support/ScaledClock.h"

#include <QComboBox>
#include <QLabel>

namespace kx::test {
namespace {

using BenchAids = BenchFixture;

QStringList itemTexts(const QComboBox& box) {
    QStringList texts;
    for (int i = 0; i < box.count(); ++i)
        texts << box.itemText(i);
    return texts;
}

TEST_F(BenchAids, TheTimeControlSetsTheSpeedAndSaysWhenTheMachineCannotKeepUp) {
    openBench();
    BusyClock wall;
    ScaledClock time(wall, 50); // as --speed 50 gives it
    bench->setTimeControl(time);
    EXPECT_EQ(itemTexts(*bench->cbxSpeed), (QStringList{"×1", "×10", "×50", "×100", "×1000"}));
    EXPECT_EQ(bench->cbxSpeed->currentText(), "×50");

    const int hundred = bench->cbxSpeed->findText(QStringLiteral("×100"));
    bench->cbxSpeed->setCurrentIndex(hundred);
    Q_EMIT bench->cbxSpeed->activated(hundred);
    EXPECT_EQ(time.speed(), 100);

    // Every 10 ms of plate time takes 5 ms of the machine's: about ×2 is all it can do.
    QObject work;
    Timer* heavy = time.createTimer(&work);
    QObject::connect(heavy, &Timer::timeout, [&] { wall.busyMs += 5; });
    heavy->start(10);
    wall.manual.advance(3000);
    clock.advance(frmSimBench::RefreshMs);
    const QString slow = bench->lblSpeed->text();
    ASSERT_TRUE(slow.startsWith("this computer keeps up only ×")) << slow.toStdString();
    EXPECT_NEAR(slow.mid(slow.indexOf(u'×') + 1).toDouble(), 2.0, 0.2);
    EXPECT_TRUE(bench->lblSpeed->styleSheet().contains("color")) << "in red";

    delete heavy;
    wall.manual.advance(3000);
    clock.advance(frmSimBench::RefreshMs);
    EXPECT_EQ(bench->lblSpeed->text(), "runs at ×100");
    EXPECT_TRUE(bench->lblSpeed->styleSheet().isEmpty());

    time.setSpeed(1000); // from elsewhere, the command line say
    EXPECT_EQ(bench->cbxSpeed->currentText(), "×1000");
}

// For 25 kg anywhere on the top: an Fz row 0.2 % high weighs 0.2 % of 245 N too much, and
// pulls the centre of pressure 0.2 % towards the origin, most at the far corner 0.69 m away.
TEST_F(BenchAids, TheStoredMatrixsErrorsOverTheTopShowBeforeAndAfterACommit) {
    SimPlateConfig config;
    config.serial = QStringLiteral("30577");
    config.calibrated = false;
    driver.addPlate(config);
    SimPlatePage& page = openBench(idealPlates(), "30577");
    EXPECT_TRUE(page.lblMatrixErrors->text().contains("not calibrated"));

    const Matrix3& truth = page.plate().truth().trueMatrix;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            page.plate().SetMatrixElement(
                r, c, float(truth[size_t(r)][size_t(c)] * (r == 0 ? 1.002 : 1)));
    clock.advance(frmSimBench::RefreshMs);
    const QString shown = page.lblMatrixErrors->text();
    EXPECT_TRUE(shown.contains("mm RMS, 1.38 mm worst")) << shown.toStdString();
    EXPECT_TRUE(shown.contains("0.49 N RMS, 0.49 N worst")) << shown.toStdString();
}

TEST_F(BenchAids, TheCalibrationsPointIsRingedAndTheStripCarriesTheWeightToEachPoint) {
    SimPlatePage& first = openBench();
    QList<QPointF> points{{-0.3, 0.46}, {0, 0.46},    {0.3, 0.46}, {0.3, 0.18}, {0, 0.18},
                          {-0.3, 0.18}, {-0.3, -0.1}, {0, -0.1},   {0.3, -0.1}, {0.15, 0.32}};
    bench->setGuidePointSource([&points] { return points; });
    EXPECT_EQ(first.guidePoints(), points);

    points[0] = {-0.2, 0.4}; // the calibration's profile moved point 1
    bench->showCalibrationPoint(QStringLiteral("11093"), 3);
    SimPlatePage& shown = *bench->page(QStringLiteral("11093"));
    EXPECT_EQ(shown.guidePoints(), points) << "read again";
    EXPECT_EQ(shown.picPlate->currentGuide(), 3);
    EXPECT_EQ(first.picPlate->currentGuide(), -1);
    EXPECT_EQ(bench->tabPlates->currentWidget(), &shown);

    BenchLoadingStrip& strip = *bench->loadingStrip();
    ASSERT_TRUE(strip.isVisible()) << "over the dialog that covers the bench";
    EXPECT_EQ(strip.page(), &shown);
    ASSERT_EQ(strip.cmdPoint.size(), 10);
    EXPECT_EQ(strip.cmdPoint[9]->text(), "10");
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(strip.cmdPoint[i]->isChecked(), i == 3) << i;

    SimPlate& plate = shown.plate();
    retype(shown.txtMass, QStringLiteral("20"));
    for (const int point : {3, 0}) {
        strip.cmdPoint[point]->click();
        const auto loads = plate.loads().onPlate(plate.now());
        ASSERT_EQ(loads.size(), 1u) << "carried, not added";
        EXPECT_EQ(loads[0].kilograms, 20);
        EXPECT_EQ(QPointF(loads[0].x, loads[0].y), points[point]);
    }
    EXPECT_TRUE(strip.cmdPoint[3]->isChecked()) << "the calibration's point stays pressed";
    strip.cmdUnload->click();
    EXPECT_TRUE(plate.loads().onPlate(plate.now()).empty());

    bench->showCalibrationPoint(QStringLiteral("11093"), -1);
    EXPECT_EQ(shown.picPlate->currentGuide(), -1);
    EXPECT_FALSE(strip.cmdPoint[3]->isChecked());

    strip.hide();
    bench->hide();
    bench->showCalibrationPoint(QStringLiteral("20418"), 1);
    EXPECT_FALSE(strip.isVisible()) << "nobody is at the bench";
    EXPECT_EQ(first.picPlate->currentGuide(), 1);
}

} // namespace
} // namespace kx::test
