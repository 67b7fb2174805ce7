#pragma once

#include "DialogFixture.h"
#include "SimBench.h"
#include "measure/frmAcquire.h"
#include "sim/PlateTopView.h"
#include "sim/SimPlatePage.h"
#include "sim/frmSimBench.h"

#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTest>
#include <memory>

namespace kx::test {

// The bench window on simulated plates under the manual clock; the signals display is at
// hand for the tests that watch what the bench does through the program's eyes.
class BenchFixture : public DialogFixture<frmAcquire> {
protected:
    void TearDown() override {
        bench.reset();
        DialogFixture::TearDown();
    }

    // The bench on these plates, opened (by default the default plates made ideal, so that a
    // weight lands where it is put); gives the page of `serial`.
    SimPlatePage& openBench(const Scenario& plates = idealPlates(), const char* serial = "20418") {
        plates.applyTo(driver);
        openPlates();
        bench = std::make_unique<frmSimBench>(driver, clock);
        bench->show();
        SimPlatePage* page = bench->page(QString::fromLatin1(serial));
        EXPECT_NE(page, nullptr);
        return *page;
    }

    // A left click on the plate's top at a point in plate coordinates.
    static void clickTop(SimPlatePage& page, QPointF plate) {
        const QPointF at = page.picPlate->topGeometry().toPicture(plate);
        QTest::mouseClick(page.picPlate, Qt::LeftButton, Qt::NoModifier, at.toPoint());
    }

    // What stands on the plate, once whatever was placed or taken off has settled.
    Wrench settledWrench(SimPlate& plate) {
        clock.advance(1000);
        return plate.loads().wrenchAt(plate.now());
    }

    std::unique_ptr<frmSimBench> bench;
};

} // namespace kx::test
