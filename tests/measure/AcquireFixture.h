#pragma once

#include "RecordingPrompt.h"
#include "SimBench.h"
#include "TempEnvironment.h"
#include "measure/StripChart.h"
#include "measure/frmAcquire.h"
#include "support/Settings.h"
#include "support/SettingsKeys.h"

#include <QCoreApplication>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <gtest/gtest.h>
#include <memory>

namespace kx::test {

// The real signals display on simulated plate 20418 sampling at 1000 Hz, a manual clock and
// a recording prompt. Settings written before open() are what the dialog loads.
class AcquireFixture : public ::testing::Test {
protected:
    void TearDown() override { dialog.reset(); }

    void open(float hertz = 1000) {
        plate.SetSampleFrequency(Which::Current, hertz);
        dialog = std::make_unique<frmAcquire>(ToolContext{bench.clock, prompt});
        dialog->setDevice(&plate);
        dialog->show();
    }

    static void setNumber(const char* name, qint32 value) {
        SaveSettingLong(SettingsRoot::CurrentUser, QLatin1String(kAcquisitionKey),
                        QLatin1String(name), value);
    }
    static void setText(const char* name, const QString& value) {
        SaveSettingString(SettingsRoot::CurrentUser, QLatin1String(kAcquisitionKey),
                          QLatin1String(name), value);
    }
    static qint32 number(const char* name) {
        return GetSettingLong(SettingsRoot::CurrentUser, QLatin1String(kAcquisitionKey),
                              QLatin1String(name), -12345);
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
    void advance(qint64 ms) { bench.clock.advance(ms); }

    StripChart& chart(int i) const { return *dialog->KXIStripChart[static_cast<std::size_t>(i)]; }

    // Runs the event loop until the background save is over.
    void waitForSave() {
        while (dialog->saving())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    TempEnvironment environment;
    SimBench bench;
    SimPlate& plate = bench.plate("20418");
    RecordingPrompt prompt;
    std::unique_ptr<frmAcquire> dialog;
};

} // namespace kx::test
