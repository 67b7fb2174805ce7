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

constexpr double SiteGravity = DefaultSiteGravity; // the default scenario's site

using SimBench = BenchFixture;

TEST_F(SimBench, AClickOnTheTopPlacesTheChosenMassThereAndUnloadTakesItOff) {
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
    EXPECT_NEAR(loaded.fz, -40 * SiteGravity, 1e-6);
    EXPECT_NEAR(loaded.mx / loaded.fz, 0.3, 0.003) << "CoPy";
    EXPECT_NEAR(-loaded.my / loaded.fz, 0.2, 0.003) << "CoPx";
    EXPECT_EQ(page.lstLoads->count(), 1);

    clickTop(page, {0.45, 0.0}); // beside the top
    EXPECT_EQ(plate.loads().onPlate(plate.now()).size(), 1u);

    page.cmdUnload->click();
    EXPECT_EQ(settledWrench(plate).fz, 0);
    EXPECT_EQ(page.lstLoads->count(), 0);
}

struct BadPlacement {
    const char* box; // objectName
    const char* typed;
};

class SimBenchRefusal : public BenchFixture, public ::testing::WithParamInterface<BadPlacement> {};

TEST_P(SimBenchRefusal, BadInputPlacesNothingAndIsShown) {
    SimPlatePage& page = openBench();
    auto* box = child<QLineEdit>(&page, QLatin1String(GetParam().box));
    const QString before = box->text();
    retype(box, QLatin1String(GetParam().typed));
    page.cmdPlace->click();

    EXPECT_TRUE(page.plate().loads().onPlate(page.plate().now()).empty());
    EXPECT_EQ(box->text(), before) << "the last good value is back";
    EXPECT_FALSE(bench->lblMessage->text().isEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Boxes, SimBenchRefusal,
    ::testing::Values(BadPlacement{"txtMass", "heavy"}, BadPlacement{"txtMass", "0"},
                      BadPlacement{"txtMass", "-25"}, BadPlacement{"txtMass", "5000"},
                      BadPlacement{"txtX", "0.41"}, BadPlacement{"txtX", ""},
                      BadPlacement{"txtY", "-0.21"}, BadPlacement{"txtY", "0.6"}));

TEST_F(SimBench, APersonSwaysAboutWhereHeStands) {
    SimPlatePage& page = openBench();
    SimPlate& plate = page.plate();
    retype(page.txtPersonMass, QStringLiteral("80"));
    page.optSwaying->click();
    page.cmdPerson->click();

    const auto placed = plate.loads().onPlate(plate.now());
    ASSERT_EQ(placed.size(), 1u);
    EXPECT_TRUE(placed[0].person);
    const Wrench first = settledWrench(plate);
    EXPECT_NEAR(first.fz, -80 * SiteGravity, 0.01 * 80 * SiteGravity);
    const Wrench later = settledWrench(plate);
    EXPECT_GT(std::abs(later.mx / later.fz - first.mx / first.fz), 1e-4) << "CoPy moves";
}

// Each fault button makes the plate raise its event, as the scenario's fault would.
struct FaultButton {
    QPushButton* SimPlatePage::*button;
    void (PlateDevice::*event)();
};

TEST_F(SimBench, FaultButtonsRaiseThePlatesEvents) {
    SimPlatePage& page = openBench();
    const FaultButton faults[] = {
        {&SimPlatePage::cmdReadTimeout, &PlateDevice::ReadTimeout},
        {&SimPlatePage::cmdWriteTimeout, &PlateDevice::WriteTimeout},
        {&SimPlatePage::cmdOverrun, &PlateDevice::BufferOverRun},
        {&SimPlatePage::cmdClipping, &PlateDevice::DataClipped},
    };
    for (const FaultButton& fault : faults) {
        QSignalSpy raised(&page.plate(), fault.event);
        (page.*fault.button)->click();
        EXPECT_EQ(raised.count(), 1) << (page.*fault.button)->objectName().toStdString();
    }
}

TEST_F(SimBench, UnplugPlugInAndNotRespondingReachTheDriver) {
    SimPlatePage& page = openBench();
    SimPlate& plate = page.plate();
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

TEST_F(SimBench, FailNextCallFailsOnceWithTheMessageAndRecoverClearsAPlan) {
    SimPlatePage& page = openBench();
    SimPlate& plate = page.plate();
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
}

TEST_F(SimBench, GravityChangesTheWeightOfWhatIsOnThePlatesAndNonsenseIsRefused) {
    SimPlatePage& page = openBench();
    SimPlate& plate = page.plate();
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

TEST_F(SimBench, AmbientTemperatureIsWhatThePlateWarmsFrom) {
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

TEST_F(SimBench, StoredMatrixIsComparedWithTheTrueOneAndFollowsAWrite) {
    SimPlateConfig config;
    config.serial = QStringLiteral("30577");
    config.calibrated = false;
    config.trueMatrix = Matrix3{{{-1000, -1000, -1000}, {300, 300, -700}, {-500, 500, 2}}};
    driver.addPlate(config);
    SimPlatePage& page = [this]() -> SimPlatePage& {
        openBench();
        return *bench->page(QStringLiteral("30577"));
    }();
    EXPECT_EQ(page.flxgrdTrue->item(1, 2)->text(), QStringLiteral("-700.000"));
    EXPECT_EQ(page.flxgrdStored->item(1, 2)->text(), QStringLiteral("0.000"));
    EXPECT_EQ(page.flxgrdDifference->item(1, 2)->text(), QStringLiteral("100.00 %"));

    page.plate().SetMatrixElement(1, 0, 307); // as a calibration commit writes it
    EXPECT_EQ(page.flxgrdStored->item(1, 0)->text(), QStringLiteral("0.000")) << "not yet";
    clock.advance(frmSimBench::RefreshMs);
    EXPECT_EQ(page.flxgrdStored->item(1, 0)->text(), QStringLiteral("307.000"));
    EXPECT_EQ(page.flxgrdDifference->item(1, 0)->text(), QStringLiteral("1.00 %"));
}

TEST_F(SimBench, OnePagePerPlateAndEveryControlIsNamedForAssistiveTools) {
    openBench();
    ASSERT_EQ(bench->tabPlates->count(), 2);
    EXPECT_EQ(bench->tabPlates->tabText(1), QStringLiteral("11093"));
    EXPECT_EQ(bench->windowTitle(), QStringLiteral("Simulated Plates"));
    const QList<QWidget*> controls = bench->findChildren<QWidget*>();
    int checked = 0;
    for (QWidget* control : controls) {
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

TEST_F(SimBench, TheCalibrationScenarioLeavesTheLoadingToTheBench) {
    ScenarioReader reader;
    const auto scenario =
        reader.readFile(QStringLiteral(KX_SCENARIO_DIR "/calibration-bench.scenario"));
    ASSERT_TRUE(scenario) << reader.errorString().toStdString();
    scenario->applyTo(driver);
    openPlates();
    bench = std::make_unique<frmSimBench>(driver, clock);
    bench->show();
    ASSERT_EQ(bench->tabPlates->count(), 1);
    SimPlatePage* page = bench->page(QStringLiteral("30577"));
    ASSERT_NE(page, nullptr);
    EXPECT_EQ(page->plate().storedMatrix(), Matrix3{}) << "uncalibrated";
    clock.advance(20 * 60 * 1000);
    EXPECT_EQ(page->lstLoads->count(), 0) << "nothing comes on by itself";
    EXPECT_EQ(bench->txtGravity->text(), QStringLiteral("9.796878")) << "the site's, to copy";
}

TEST_F(SimBench, TheShortcutOnTheMainWindowBringsTheBenchBack) {
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
