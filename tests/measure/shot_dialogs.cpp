// Pictures of the zero, meter and scale dialogs at work on a simulated plate, for looking at
// their layout on a real display (run it under Xvfb): shot_dialogs OUTPUT_FOLDER.

#include "device/ToolContext.h"
#include "measure/frmMeter.h"
#include "measure/frmZero.h"
#include "scale/frmScale.h"
#include "sim/Scenario.h"
#include "sim/SimDriver.h"
#include "sim/SimPlate.h"
#include "support/ManualClock.h"
#include "support/Prompt.h"

#include <QApplication>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <cstdio>

namespace {

class PrintingPrompt final : public kx::Prompt {
public:
    void critical(const QString& text) override {
        std::fprintf(stderr, "message: %s\n", qPrintable(text));
    }
    std::optional<QString> saveFileName(const kx::FileDialogRequest&) override { return {}; }
    std::optional<QString> openFileName(const kx::FileDialogRequest&) override { return {}; }
    void beep() override {}
    bool playSound(const QString&) override { return true; }
};

// Lets the window system lay out and paint, then saves the dialog as it looks.
bool save(QWidget& dialog, const QDir& folder, const char* name) {
    for (int i = 0; i < 20; ++i)
        QApplication::processEvents();
    const QString path = folder.filePath(QLatin1String(name));
    const bool saved = dialog.grab().save(path);
    std::printf("%s %s\n", saved ? "saved" : "could not save", qPrintable(path));
    return saved;
}

} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: shot_dialogs OUTPUT_FOLDER\n");
        return 2;
    }
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    QTemporaryDir settings;
    qputenv("KX_SETTINGS_FILE", settings.filePath(QStringLiteral("settings.ini")).toLocal8Bit());

    kx::ManualClock clock(1000);
    PrintingPrompt prompt;
    kx::SimDriver driver(clock);
    kx::Scenario::defaults().applyTo(driver);
    driver.OpenDevices(kx::PlateVendorId, kx::PlateProductId1, kx::PlateProductId2);
    clock.settle();
    kx::SimPlate& plate = *driver.plate(QStringLiteral("20418"));
    const kx::ToolContext context{clock, prompt};
    bool ok = true;

    {
        kx::frmZero zero(context);
        zero.txtDuration->setText(QStringLiteral("5"));
        zero.setDevice(&plate);
        zero.show();
        zero.cmdAcquire->click();
        clock.advance(2000);
        ok &= save(zero, folder, "frmZero-acquiring.png");
        clock.advance(4000);
        ok &= save(zero, folder, "frmZero.png");
        zero.close();
    }
    {
        plate.loads().placeWeight(20.0, 0.1, -0.05, plate.now());
        kx::frmMeter meter(context);
        meter.setDevice(&plate);
        meter.show();
        meter.cmdDisplay->click();
        clock.advance(2000);
        ok &= save(meter, folder, "frmMeter.png");
        meter.close();
        plate.loads().removeAll(plate.now());
        clock.advance(1000);
    }
    {
        kx::frmScale scale(context);
        scale.setDevice(&plate);
        scale.show();
        ok &= save(scale, folder, "frmScale-opened.png");
        scale.cmdZero->click();
        clock.advance(2000);
        ok &= save(scale, folder, "frmScale-zeroing.png");
        clock.advance(4000);
        plate.loads().placePerson(72.5, 0.0, 0.0, kx::PlateLoads::Stance::Standing, plate.now());
        clock.advance(5000);
        ok &= save(scale, folder, "frmScale.png");
        scale.cmdZero->click();
        clock.advance(1000);
        driver.inject(QStringLiteral("20418"), kx::PlateFault::BufferOverRun);
        ok &= save(scale, folder, "frmScale-overrun.png");
        scale.close();
    }
    {
        kx::frmScale scale(context);
        scale.show();
        ok &= save(scale, folder, "frmScale-no-platform.png");
        scale.close();
    }
    return ok ? 0 : 1;
}
