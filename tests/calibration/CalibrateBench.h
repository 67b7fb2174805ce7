#pragma once

#include "DialogFixture.h"
#include "SessionBench.h"
#include "calibration/CalibrationSession.h"
#include "calibration/CalibrationSettings.h"
#include "calibration/PlatePicture.h"
#include "calibration/frmCalibrate.h"

#include <QLineEdit>
#include <QPushButton>
#include <QStatusBar>
#include <QTest>

namespace kx::test {

// A technician's hands on frmCalibrate: clicks, weights on and off the simulated plate, and
// the clock moved on until the dialog is idle again.
class CalibrateHands : public WeightHands {
public:
    using WeightHands::WeightHands;

    bool idle(const frmCalibrate& dialog) const { return dialog.cmdZero->isEnabled(); }

    // The zero codes the plate subtracts, channels 1 to 3.
    std::array<qint32, 3> plateZero() const {
        return {m_plate.ZeroValue(0, Which::Current), m_plate.ZeroValue(1, Which::Current),
                m_plate.ZeroValue(2, Which::Current)};
    }

    void waitIdle(const frmCalibrate& dialog) {
        for (int ms = 0; ms < 10000 && !idle(dialog); ms += 10)
            m_clock.advance(10);
    }

    void clickPoint(frmCalibrate& dialog, int point) {
        const PointXY xy = CalibrationSettings::defaultPoints()[std::size_t(point)];
        const QPointF at = dialog.picPlate->view().toDevice({xy.x, xy.y});
        QTest::mouseClick(dialog.picPlate, Qt::LeftButton, {}, at.toPoint());
    }

    void takeZero(frmCalibrate& dialog) {
        unload();
        dialog.cmdZero->click();
        waitIdle(dialog);
    }

    // The weight on the point's mark, or `offMark` metres to its right.
    void takeData(frmCalibrate& dialog, int point, double offMark = 0) {
        const PointXY xy = CalibrationSettings::defaultPoints()[std::size_t(point)];
        place(CalibrationKilograms, xy.x + offMark, xy.y);
        dialog.cmdData->click();
        waitIdle(dialog);
    }

    // Compute Matrix, with the event loop run until the fit is in: Octave, where installed,
    // answers from a child process.
    void computeMatrix(frmCalibrate& dialog) {
        dialog.cmdMatrix->click();
        EXPECT_TRUE(QTest::qWaitFor([&] { return idle(dialog); }, 60000));
    }

    // Zero and data at each of the points, reached by clicks on the picture.
    void walk(frmCalibrate& dialog, int from, int to, int misplaced = -1) {
        for (int point = from; point < to; ++point) {
            if (point > 0)
                clickPoint(dialog, point);
            takeZero(dialog);
            takeData(dialog, point, point == misplaced ? 0.02 : 0);
        }
    }
};

// frmCalibrate on the calibration plate at the profile's gravity, with a 2 s duration.
class CalibrateDialogBench : public DialogFixture<frmCalibrate> {
protected:
    SimPlate& benchPlate() { return openCalibrationPlate(driver, clock); }
    frmCalibrate& open() {
        openDialog(&plate, [](frmCalibrate& d) { d.txtDuration->setText(QStringLiteral("2")); });
        return *dialog;
    }

    SimPlate& plate = benchPlate();
    CalibrateHands hands{clock, plate};
};

} // namespace kx::test
