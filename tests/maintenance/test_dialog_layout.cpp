#include "SimBench.h"
#include "maintenance/frmEncoder.h"
#include "maintenance/frmPlateInfoEx.h"
#include "maintenance/frmProgramID.h"

#include <QAbstractButton>
#include <QDir>
#include <QLabel>
#include <QLocale>
#include <QPixmap>
#include <QPushButton>
#include <memory>

namespace kx {
namespace {

// The dialogs filled from a plate, as a technician sees them. Set KX_SCREENSHOT_DIR to keep
// a picture of each.
class DialogLayout : public test::SimBench {
protected:
    void SetUp() override {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        plate = addPlate(QStringLiteral("KX2001"));
        open();
        // A long operator name and the longest weekday and month the record can show.
        plate->SetOperatorRecord3(QStringLiteral("Technician 12"),
                                  QDateTime(QDate(2025, 9, 24), QTime(23, 59, 59)));
    }
    void TearDown() override { QLocale::setDefault(m_savedLocale); }

    // Every caption and value is shown whole, then the picture is kept when asked for.
    void check(ToolDialog& dialog, const QString& name) {
        dialog.show();
        for (const QLabel* label : dialog.findChildren<QLabel*>()) {
            if (label->isVisible()) {
                EXPECT_GE(label->width(), label->sizeHint().width())
                    << name.toStdString() << " " << label->objectName().toStdString() << " \""
                    << label->text().toStdString() << "\"";
            }
        }
        for (const QAbstractButton* button : dialog.findChildren<QAbstractButton*>()) {
            EXPECT_GE(button->width(), button->sizeHint().width())
                << name.toStdString() << " " << button->objectName().toStdString();
        }
        const QPixmap picture = dialog.grab();
        EXPECT_FALSE(picture.isNull());
        if (const QString folder = qEnvironmentVariable("KX_SCREENSHOT_DIR"); !folder.isEmpty()) {
            EXPECT_TRUE(picture.save(QDir(folder).filePath(name + QStringLiteral(".png"))));
        }
    }

    SimPlate* plate = nullptr;

private:
    QLocale m_savedLocale;
};

TEST_F(DialogLayout, ExtendedDeviceInfoInServiceMode) {
    frmPlateInfoEx dialog(context());
    dialog.setServicePanels(true);
    dialog.setDevice(plate);
    check(dialog, QStringLiteral("frmPlateInfoEx"));
}

TEST_F(DialogLayout, UsbIdentityAfterGet) {
    frmProgramID dialog(context());
    dialog.setDevice(plate);
    dialog.cmdGet->click();
    check(dialog, QStringLiteral("frmProgramID"));
}

TEST_F(DialogLayout, EncoderWhilePolling) {
    frmEncoder dialog(context());
    dialog.setDevice(plate);
    clock.advance(2 * frmEncoder::PollIntervalMs);
    check(dialog, QStringLiteral("frmEncoder"));
}

} // namespace
} // namespace kx
