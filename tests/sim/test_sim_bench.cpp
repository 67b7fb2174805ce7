#include "BenchFixture.h"
#include "device/PlateError.h"
#include "sim/ScenarioReader.h"

#include <QAbstractButton>
#include <QLineEdit>
#include <QListWidget>
#include <QSignalSpy>
#include <QTableWidget>

namespace kx::test {
namespace {

using BenchWindow = BenchFixture;

// What a refused box must show is in BenchNumber's table; here each box's own range.
TEST_F(BenchWindow, AClickPlacesTheChosenMassRefusedInputPlacesNothingAndUnloadTakesAllOff) {
    SimPlatePage& page = openBench();
    SimPlate& plate = page.plate();
    typeInto(page.txtMass, QStringLiteral("40"));
    clickTop(page, {0.2, 0.3});

    const auto placed = plate.loads().onPlate(plate.now());
    ASSERT_EQ(placed.size(), 1u);
    EXPECT_EQ(placed[0].kilograms, 40);
    EXPECT_NEAR(placed[0].x, 0.2, 0.003) << "within a pixel of the click";
    EXPECT_NEAR(placed[0].y, 0.3, 0.003);
    const Wrench loaded = settledWrench(plate);
    EXPECT_NEAR(loaded.fz, -40 * DefaultSiteGravity, 1e-6);
    EXPECT_NEAR(loaded.mx / loaded.fz, 0.3, 0.003) << "CoPy";
    EXPECT_NEAR(-loaded.my / loaded.fz, 0.2, 0.003) << "CoPx";
    EXPECT_EQ(page.lstLoads->count(), 1);

    clickTop(page, {0.45, 0.0}); // beside the top
    const std::pair<QLineEdit * SimPlatePage::*, const char*> refused[] = {
        {&SimPlatePage::txtMass, "0"},  {&SimPlatePage::txtMass, "5000"},
        {&SimPlatePage::txtX, "0.41"},  {&SimPlatePage::txtX, "-0.41"},
        {&SimPlatePage::txtY, "-0.21"}, {&SimPlatePage::txtY, "0.56"}};
    for (const auto& [box, typed] : refused) {
        const QString before = (page.*box)->text();
        bench->lblMessage->clear();
        retype(page.*box, QLatin1String(typed));
        page.cmdPlace->click();
        EXPECT_EQ((page.*box)->text(), before) << typed << ": the last good value is back";
        EXPECT_FALSE(bench->lblMessage->text().isEmpty()) << typed;
    }
    EXPECT_EQ(plate.loads().onPlate(plate.now()).size(), 1u);

    page.cmdUnload->click();
    EXPECT_EQ(settledWrench(plate).fz, 0);
    EXPECT_EQ(page.lstLoads->count(), 0);
}

TEST_F(BenchWindow, APersonSwaysAboutWhereHeStands) {
    SimPlatePage& page = openBench();
    SimPlate& plate = page.plate();
    retype(page.txtPersonMass, QStringLiteral("80"));
    page.optSwaying->click();
    page.cmdPerson->click();

    const auto placed = plate.loads().onPlate(plate.now());
    ASSERT_EQ(placed.size(), 1u);
    EXPECT_TRUE(placed[0].person);
    const Wrench first = settledWrench(plate);
    EXPECT_NEAR(first.fz, -80 * DefaultSiteGravity, 0.01 * 80 * DefaultSiteGravity);
    const Wrench later = settledWrench(plate);
    EXPECT_GT(std::abs(later.mx / later.fz - first.mx / first.fz), 1e-4) << "CoPy moves";
}

// Each fault button makes the plate do what the scenario's fault would.
TEST_F(BenchWindow, TheFaultButtonsReachThePlateAndTheDriver) {
    SimPlatePage& page = openBench();
    SimPlate& plate = page.plate();
    const std::pair<QPushButton * SimPlatePage::*, void (PlateDevice::*)()> events[] = {
        {&SimPlatePage::cmdReadTimeout, &PlateDevice::ReadTimeout},
        {&SimPlatePage::cmdWriteTimeout, &PlateDevice::WriteTimeout},
        {&SimPlatePage::cmdOverrun, &PlateDevice::BufferOverRun},
        {&SimPlatePage::cmdClipping, &PlateDevice::DataClipped}};
    for (const auto& [button, event] : events) {
        QSignalSpy raised(&plate, event);
        (page.*button)->click();
        EXPECT_EQ(raised.count(), 1) << (page.*button)->objectName().toStdString();
    }

    retype(page.txtFailMessage, QStringLiteral("USB transfer failed"));
    page.cmdFailNext->click();
    try {
        plate.SampleFrequency(Which::Current);
        ADD_FAILURE() << "the next call goes through";
    } catch (const PlateError& error) {
        EXPECT_EQ(error.message(), QStringLiteral("USB transfer failed"));
    }
    EXPECT_NO_THROW(plate.SampleFrequency(Which::Current));
    page.cmdFailNext->click();
    page.cmdRecover->click();
    EXPECT_NO_THROW(plate.SampleFrequency(Which::Current));

    QSignalSpy removed(&driver, &PlateDriver::PlateRemoved);
    QSignalSpy silent(&driver, &PlateDriver::PlateNotResponding);
    page.cmdUnplug->click();
    EXPECT_FALSE(plate.isPlugged());
    EXPECT_EQ(removed.count(), 1);
    EXPECT_FALSE(page.cmdUnplug->isEnabled());
    EXPECT_FALSE(page.cmdReadTimeout->isEnabled());
    page.cmdPlugIn->click();
    clock.settle();
    EXPECT_TRUE(plate.isPlugged());
    EXPECT_EQ(driver.Item(QStringLiteral("20418")), &plate) << "enumerated again";
    page.cmdNotResponding->click();
    EXPECT_FALSE(plate.isResponding());
    EXPECT_EQ(silent.count(), 1);
    EXPECT_FALSE(page.cmdNotResponding->isEnabled());
}

TEST_F(BenchWindow, GravityChangesTheWeightOfWhatIsOnThePlatesAndNonsenseIsRefused) {
    SimPlate& plate = openBench().plate();
    plate.placeWeight(10, 0, 0);
    typeInto(bench->txtGravity, QStringLiteral("9.79"));
    EXPECT_EQ(driver.gravity(), 9.79);
    EXPECT_NEAR(settledWrench(plate).fz, -97.9, 1e-9);
    EXPECT_EQ(driver.plate(QStringLiteral("11093"))->loads().gravity(), 9.79) << "every plate";

    typeInto(bench->txtGravity, QStringLiteral("1.62"));
    EXPECT_EQ(driver.gravity(), 9.79);
    EXPECT_EQ(bench->txtGravity->text(), QStringLiteral("9.79"));
    EXPECT_TRUE(bench->lblMessage->text().startsWith(QStringLiteral("Gravity")));
}

TEST_F(BenchWindow, AmbientTemperatureIsWhatThePlateWarmsFrom) {
    SimPlatePage& page = openBench();
    SimPlate& plate = page.plate();
    typeInto(page.txtAmbient, QStringLiteral("30"));
    EXPECT_EQ(plate.ambientTemperature(), 30);
    EXPECT_GE(plate.Temperature(), 30.0f) << "what the program reads";
    EXPECT_LT(plate.Temperature(), 36.0f);

    typeInto(page.txtAmbient, QStringLiteral("500"));
    EXPECT_EQ(plate.ambientTemperature(), 30);
    EXPECT_EQ(page.txtAmbient->text(), QStringLiteral("30"));
}

TEST_F(BenchWindow, StoredMatrixIsComparedWithTheTrueOneAndFollowsAWrite) {
    SimPlateConfig config;
    config.serial = QStringLiteral("30577");
    config.calibrated = false;
    config.trueMatrix = Matrix3{{{-1000, -1000, -1000}, {300, 300, -700}, {-500, 500, 2}}};
    driver.addPlate(config);
    SimPlatePage& page = openBench(idealPlates(), "30577");
    EXPECT_EQ(page.flxgrdTrue->item(1, 2)->text(), QStringLiteral("-700.000"));
    EXPECT_EQ(page.flxgrdStored->item(1, 2)->text(), QStringLiteral("0.000"));
    EXPECT_EQ(page.flxgrdDifference->item(1, 2)->text(), QStringLiteral("100.00 %"));

    page.plate().SetMatrixElement(1, 0, 307); // as a calibration commit writes it
    EXPECT_EQ(page.flxgrdStored->item(1, 0)->text(), QStringLiteral("0.000")) << "not yet";
    clock.advance(frmSimBench::RefreshMs);
    EXPECT_EQ(page.flxgrdStored->item(1, 0)->text(), QStringLiteral("307.000"));
    EXPECT_EQ(page.flxgrdDifference->item(1, 0)->text(), QStringLiteral("1.00 %"));
}

TEST_F(BenchWindow, OnePagePerPlateAndEveryControlIsNamedForAssistiveTools) {
    openBench();
    ASSERT_EQ(bench->tabPlates->count(), 2);
    EXPECT_EQ(bench->tabPlates->tabText(1), QStringLiteral("11093"));
    EXPECT_EQ(bench->windowTitle(), QStringLiteral("Simulated Plates"));
    int checked = 0;
    for (QWidget* control : bench->findChildren<QWidget*>()) {
        if (qobject_cast<QLineEdit*>(control) || qobject_cast<QAbstractButton*>(control) ||
            qobject_cast<QTableWidget*>(control) || qobject_cast<QListWidget*>(control) ||
            qobject_cast<PlateTopView*>(control)) {
            const QObject* owner = control->parent();
            if (owner && (owner->inherits("QTabBar") || owner->inherits("QAbstractItemView")))
                continue; // Qt's own parts: the tab bar's arrows, a grid's corner button
            EXPECT_FALSE(control->accessibleName().isEmpty()) << qPrintable(control->objectName());
            ++checked;
        }
    }
    EXPECT_GT(checked, 40);
}

TEST_F(BenchWindow, TheCalibrationScenarioLeavesTheLoadingToTheBench) {
    ScenarioReader reader;
    const auto scenario =
        reader.readFile(QStringLiteral(KX_SCENARIO_DIR "/calibration-bench.scenario"));
    ASSERT_TRUE(scenario) << reader.errorString().toStdString();
    SimPlatePage& page = openBench(*scenario, "30577");
    ASSERT_EQ(bench->tabPlates->count(), 1);
    EXPECT_EQ(page.plate().storedMatrix(), Matrix3{}) << "uncalibrated";
    clock.advance(20 * 60 * 1000);
    EXPECT_EQ(page.lstLoads->count(), 0) << "nothing comes on by itself";
    EXPECT_EQ(bench->txtGravity->text(), QStringLiteral("9.796878")) << "the site's, to copy";
}

TEST_F(BenchWindow, TheShortcutOnTheMainWindowBringsTheBenchBack) {
    openBench();
    bench->hide();
    QWidget host;
    bench->installShortcut(host);
    host.show();
    host.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&host));
    QTest::keySequence(&host, frmSimBench::shortcut());
    EXPECT_TRUE(bench->isVisible());
}

} // namespace
} // namespace kx::test
