#include "app/BenchLink.h"

#include "app/frmMain.h"
#include "calibration/CalibrationSession.h"
#include "calibration/CalibrationSettings.h"
#include "calibration/frmCalibrate.h"
#include "sim/frmSimBench.h"
#include "support/IniFile.h"

#include <QPointer>

namespace kx {

void linkBenchToWindows(frmMain& window, frmSimBench& bench) {
    bench.setGuidePointSource([] {
        QList<QPointF> points;
        for (const PointXY& point : CalibrationSettings::profilePoints(IniFile::sharedProfile()))
            points.append({point.x, point.y});
        return points;
    });
    QObject::connect(
        &window, &frmMain::toolOpening, &bench,
        [&bench](ToolDialog* dialog, const QString& serial) {
            auto* calibrate = qobject_cast<frmCalibrate*>(dialog);
            if (!calibrate)
                return;
            const auto show = [bench = QPointer(&bench), serial](int point) {
                if (bench)
                    bench->showCalibrationPoint(serial, point);
            };
            QObject::connect(calibrate, &frmCalibrate::currentPointChanged, &bench, show);
            QObject::connect(calibrate, &ToolDialog::unloaded, &bench, [show] { show(-1); });
            show(calibrate->session().calibration().currentPoint);
        });
}

} // namespace kx
