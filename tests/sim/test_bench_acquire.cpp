#include "BenchFixture.h"
#include "MainWindowBench.h"
#include "measure/StripChart.h"
#include "support/Settings.h"
#include "support/SettingsKeys.h"

#include <QScreen>

namespace kx::test {
namespace {

using BenchAndDisplay = BenchFixture;

// The ten points a calibration of the whole top visits, drawn faintly on the picture.
const QList<QPointF> TenPoints{{-0.3, -0.1}, {0, -0.1},    {0.3, -0.1}, {-0.3, 0.18}, {0, 0.18},
                               {0.3, 0.18},  {-0.3, 0.45}, {0, 0.45},   {0.3, 0.45},  {0, 0.3}};

TEST_F(BenchAndDisplay, AWeightPlacedAtTheBenchShowsInTheSignalsDisplay) {
    SaveSettingLong(SettingsRoot::CurrentUser, QLatin1String(kAcquisitionKey),
                    QLatin1String("Display Type"), 0); // forces
    SimPlatePage& page = openBench();
    bench->setGuidePoints(TenPoints);
    openDialog(&page.plate());

    typeInto(page.txtMass, QStringLiteral("30"));
    clickTop(page, {-0.25, 0.4});
    clock.advance(500); // settled
    dialog->cmdDisplay->click();
    clock.advance(2000);

    // The plate's stored matrix is within half a percent of its true one.
    const double fz = -30 * 9.80665;
    EXPECT_NEAR(dialog->KXIStripChart[0]->Mean(), fz, 0.01 * 30 * 9.80665) << "Fz";
    EXPECT_NEAR(dialog->KXIStripChart[1]->Mean(), fz * 0.4, 0.03 * 30 * 9.80665 * 0.4) << "Mx";
    EXPECT_NEAR(dialog->KXIStripChart[2]->Mean(), -fz * -0.25, 0.03 * 30 * 9.80665 * 0.25) << "My";

    bench->resize(1000, 700);
    keepScreenshot(*bench, QStringLiteral("sim_bench_weight_on_plate"));
}

using BenchBesideMainWindow = MainWindowBench;

TEST_F(BenchBesideMainWindow, StaysUsableWhileAToolHidesTheMainWindowAndGoesWithIt) {
    start();
    QPointer<frmSimBench> bench = new frmSimBench(*sim, clock);
    bench->show();
    control<QPushButton>(QStringLiteral("cmdAcquire"))->click();
    ASSERT_NE(shownDialog<frmAcquire>(), nullptr);
    ASSERT_FALSE(window->isVisible());

    EXPECT_TRUE(bench->isVisible());
    EXPECT_TRUE(bench->isEnabled());
    SimPlatePage* page = bench->page(Fw2Plate);
    ASSERT_NE(page, nullptr);
    page->cmdPlace->click();
    EXPECT_EQ(plate(Fw2Plate)->loads().onPlate(plate(Fw2Plate)->now()).size(), 1u);

    shownDialog<frmAcquire>()->close();
    window->close(); // the main window lets go of the driver
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(bench.isNull());
}

// Once, when the main window first shows: beside it, or on a screen too narrow for both, at
// the screen's right edge with the main window at its left.
TEST_F(BenchBesideMainWindow, StandsBesideTheMainWindowWhenItFirstShows) {
    create();
    window->load();
    auto bench = std::make_unique<frmSimBench>(*sim, clock);
    bench->placeBeside(*window);
    bench->show();
    clock.advance(1000);
    ASSERT_TRUE(window->isVisible());
    const QRect screen = window->screen()->availableGeometry();
    const QRect main = window->frameGeometry();
    const QRect beside = bench->frameGeometry();
    EXPECT_TRUE(screen.contains(beside)) << "bench on the screen";
    if (main.width() + bench->minimumSizeHint().width() <= screen.width()) {
        EXPECT_FALSE(main.intersects(beside));
    } else {
        EXPECT_EQ(main.left(), screen.left());
        EXPECT_EQ(beside.right(), screen.right());
    }

    bench->move(screen.topLeft());
    window->hide();
    window->show(); // as after a tool dialog
    clock.settle();
    EXPECT_EQ(bench->pos(), screen.topLeft()) << "where the user put it";
}

} // namespace
} // namespace kx::test
