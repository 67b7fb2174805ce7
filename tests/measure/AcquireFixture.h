#pragma once

#include "DialogFixture.h"
#include "EventsUntil.h"
#include "measure/CaptureJournal.h"
#include "measure/CaptureJournalReader.h"
#include "measure/StripChart.h"
#include "measure/frmAcquire.h"
#include "support/Folders.h"
#include "support/Settings.h"
#include "support/SettingsKeys.h"

#include <QCoreApplication>
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

    void waitForSave() {
        ASSERT_TRUE(eventsUntil([this] { return !dialog->saving(); })) << "the save hangs";
    }
    // The rows the dialog's journal holds, once on the disk.
    std::vector<CaptureRow> journalRows() {
        bool written = false;
        dialog->journal().whenWritten([&written] { written = true; });
        EXPECT_TRUE(eventsUntil([&written] { return written; }));
        CaptureJournalReader reader;
        EXPECT_TRUE(reader.open(dialog->journal().path()));
        std::vector<CaptureRow> rows(std::size_t(reader.rowCount()));
        EXPECT_EQ(reader.read(rows), reader.rowCount());
        return rows;
    }
    // The journals in the user's data folder.
    static QStringList journals() { return CaptureJournal::journalsIn(UnsavedCapturesFolder()); }

    SimPlate& plate = openDefaultPlates();
    int samples = 0;
};

} // namespace kx::test
