#include "DialogFixture.h"
#include "maintenance/frmEncoder.h"
#include "maintenance/frmPlateInfoEx.h"
#include "maintenance/frmProgramID.h"

#include <QAbstractButton>
#include <QLabel>
#include <QPushButton>

namespace kx {
namespace {

// Every caption and value of the filled dialogs is shown whole. Set KX_SCREENSHOT_DIR to keep
// a picture of each.
class DialogLayout : public test::DialogFixture<frmPlateInfoEx> {};

void checkShownWhole(ToolDialog& dialog) {
    dialog.show();
    for (const QWidget* w : dialog.findChildren<QWidget*>()) {
        if (w->isVisible() &&
            (qobject_cast<const QLabel*>(w) || qobject_cast<const QAbstractButton*>(w))) {
            EXPECT_GE(w->width(), w->sizeHint().width()) << w->objectName().toStdString();
        }
    }
    test::keepScreenshot(dialog, QString::fromLatin1(dialog.metaObject()->className()).mid(4));
}

TEST_F(DialogLayout, MaintenanceDialogsShowEveryTextWhole) {
    SimPlate* plate = addPlate(QStringLiteral("KX2001"));
    openPlates();
    plate->SetOperatorRecord3(QStringLiteral("Technician 12"), // the longest weekday
                              QDateTime(QDate(2025, 9, 24), QTime(23, 59, 59)));
    checkShownWhole(openDialog(plate, [](frmPlateInfoEx& d) { d.setServicePanels(true); }));
    frmProgramID programId(ToolContext{clock, prompt});
    programId.setDevice(plate);
    programId.cmdGet->click();
    checkShownWhole(programId);
    frmEncoder encoder(ToolContext{clock, prompt});
    encoder.setDevice(plate);
    clock.advance(2 * frmEncoder::PollIntervalMs);
    checkShownWhole(encoder);
}

} // namespace
} // namespace kx
