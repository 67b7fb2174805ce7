#pragma once

#include "DialogFixture.h"
#include "measure/StripChart.h"
#include "measure/frmAcquire.h"
#include "support/Settings.h"
#include "support/SettingsKeys.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

namespace kx::test {

// The real signals display on plate 20418 sampling at `hertz`, counting the samples it sends.
class AcquireFixture : public DialogFixture<frmAcquire> {
protected:
    void open(float hertz = 1000) {
        plate.SetSampleFrequency(Which::Current, hertz);
        QObject::connect(&plate, &PlateDevice::ForcesIn, [this] { ++samples; });
        openDialog(&plate);
    }

    static void setNumber(const char* name, qint32 value) {
        SaveSettingLong(SettingsRoot::CurrentUser, QLatin1String(kAcquisitionKey),
                        QLatin1String(name), value);
    }
    static void setText(const char* name, const QString& value) {
        SaveSettingString(SettingsRoot::CurrentUser, QLatin1String(kAcquisitionKey),
                          QLatin1String(name), value);
    }
    static QString text(const char* name) {
        return GetSettingString(SettingsRoot::CurrentUser, QLatin1String(kAcquisitionKey),
                                QLatin1String(name), QStringLiteral("<missing>"));
    }

    // A weight of `kilograms` at (x, y) metres, from now.
    void placeWeight(double kilograms, double x = 0.1, double y = 0.05) {
        plate.loads().placeWeight(kilograms, x, y, plate.now());
    }
    void unload() { plate.loads().removeAll(plate.now()); }

    StripChart& chart(int i) const { return *dialog->KXIStripChart[static_cast<std::size_t>(i)]; }

    // Runs the event loop until the background save is over. A save that never ends fails
    // the test instead of hanging it; the minute is a guard, far above any real save here.
    void waitForSave() {
        const QDeadlineTimer guard(std::chrono::minutes(1));
        while (dialog->saving() && !guard.hasExpired())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        ASSERT_FALSE(dialog->saving()) << "the capture save hangs";
    }

    SimPlate& plate = openDefaultPlates();
    int samples = 0;
};

} // namespace kx::test
