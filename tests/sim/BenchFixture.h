#pragma once

#include "DialogFixture.h"
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

    // The default plates made ideal (a weight lands where it is put), opened, and the bench on
    // them; gives the page of plate 20418.
    SimPlatePage& openBench() {
        Scenario plates = Scenario::defaults();
        for (SimPlateConfig& config : plates.plates)
            config.imperfections = SimImperfections::none();
        plates.applyTo(driver);
        openPlates();
        bench = std::make_unique<frmSimBench>(driver, clock);
        bench->show();
        SimPlatePage* page = bench->page(QStringLiteral("20418"));
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
