// Pictures of the measurement dialogs at work on a simulated plate with a person on it, for
// looking at their layout on a real display (run it under Xvfb): shot_dialogs OUTPUT_FOLDER.

#include "device/ToolContext.h"
#include "measure/frmAcquire.h"
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
#include <QRadioButton>
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
    // Lets the window system lay out and paint, then saves the dialog as it looks.
    const auto save = [&](QWidget& dialog, const QString& name) {
        for (int i = 0; i < 20; ++i)
            QApplication::processEvents();
        const QString path = folder.filePath(name + QStringLiteral(".png"));
        const bool saved = dialog.grab().save(path);
        std::printf("%s %s\n", saved ? "saved" : "could not save", qPrintable(path));
        ok &= saved;
    };

    {
        kx::frmScale scale(context); // zeroed empty, then weighing
        scale.setDevice(&plate);
        scale.show();
        scale.cmdZero->click();
        clock.advance(6000);
        plate.loads().placePerson(72.5, 0.03, -0.02, kx::PlateLoads::Stance::Swaying, plate.now());
        clock.advance(5000);
        save(scale, QStringLiteral("frmScale"));
    }
    {
        kx::frmZero zero(context);
        zero.txtDuration->setText(QStringLiteral("5"));
        zero.setDevice(&plate);
        zero.show();
        zero.cmdAcquire->click();
        clock.advance(6000);
        save(zero, QStringLiteral("frmZero"));
    }
    {
        kx::frmMeter meter(context);
        meter.setDevice(&plate);
        meter.show();
        meter.cmdDisplay->click();
        clock.advance(2000);
        save(meter, QStringLiteral("frmMeter"));
    }
    {
        plate.SetSampleFrequency(kx::Which::Current, 500);
        kx::frmAcquire acquire(context);
        acquire.setDevice(&plate);
        acquire.show();
        acquire.resize(1000, 700);
        const char* names[] = {"forces", "voltages", "postural"};
        for (std::size_t type = 0; type < 3; ++type) {
            acquire.optSignal[type]->click();
            if (!acquire.displaying())
                acquire.cmdDisplay->click();
            if (type == 2)
                acquire.cmdCapture->click();
            clock.advance(6000);
            save(acquire, QStringLiteral("frmAcquire-") + QLatin1String(names[type]));
        }
    }
    return ok ? 0 : 1;
}
