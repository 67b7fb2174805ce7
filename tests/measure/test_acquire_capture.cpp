#include "AcquireFixture.h"
#include "FileSizeLimit.h"
#include "PrintQString.h"
#include "resources/StringTable.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <functional>

namespace kx::test {
namespace {

class AcquireCapture : public AcquireFixture {
protected:
    QString folder() const { return environment.documentsFolder(); }
    QString path(const char* name) const { return QDir(folder()).filePath(QLatin1String(name)); }

    // One capture segment of `ms` milliseconds while the display runs, red while it records.
    void capture(qint64 ms) {
        dialog->cmdCapture->click();
        EXPECT_EQ(dialog->cmdCapture->text(), strings::text(4031));
        EXPECT_EQ(chart(1).TraceColor(), QColor(255, 0, 0));
        clock.advance(ms);
        dialog->cmdCapture->click();
        EXPECT_EQ(dialog->cmdCapture->text(), strings::text(4030));
        EXPECT_EQ(chart(1).TraceColor(), QColor(0, 255, 0));
        clock.settle(); // the plate hands its block over after StopCapture returns
    }

    void saveAs(const QString& file) {
        prompt.fileAnswers.push_back(file);
        dialog->cmdOK->click();
        waitForSave();
    }

    static QStringList lines(const QString& file) {
        QFile f(file);
        EXPECT_TRUE(f.open(QIODevice::ReadOnly));
        QStringList result = QString::fromLatin1(f.readAll()).split(QStringLiteral("\r\n"));
        result.removeLast();
        return result;
    }
};

TEST_F(AcquireCapture, SegmentsReachTheFileAndStatusTextsWaitMoreThanATextPeriod) {
    setText("Last File Path", QStringLiteral("/nowhere/in/particular"));
    open();
    placeWeight(60, 0.1, 0.05);
    clock.advance(500);
    dialog->cmdDisplay->click();
    dialog->cmdCapture->click();
    // The status texts are rewritten only once more than the text period (200 ms) has passed.
    clock.advance(1);
    EXPECT_EQ(dialog->lblSample->text(), QStringLiteral("1"));
    EXPECT_EQ(dialog->lblTime->text(), QStringLiteral("0.00 s"));
    clock.advance(200);
    EXPECT_EQ(dialog->lblSample->text(), QStringLiteral("1")) << "exactly one period later";
    clock.advance(1);
    EXPECT_EQ(dialog->lblSample->text(), QStringLiteral("202"));
    EXPECT_EQ(dialog->lblTime->text(), QStringLiteral("0.20 s"));
    // 202 samples over 202 + 1 ms since the capture began.
    EXPECT_EQ(dialog->lblFreq->text(), QStringLiteral("995.07 Hz"));
    clock.advance(98);
    dialog->cmdCapture->click(); // 300 loaded samples
    unload();
    clock.advance(1000);
    capture(200); // unloads
    ASSERT_EQ(dialog->journal().rowCount(), 1 + 300 + 1 + 200);

    const QString file = path("run.txt");
    saveAs(QStringLiteral("  ") + file + QStringLiteral(" "));
    ASSERT_EQ(prompt.dialogs.size(), 1u);
    const FileDialogRequest& request = prompt.dialogs[0];
    EXPECT_EQ(request.title, strings::text(4500));
    EXPECT_EQ(request.initialFolder, QStringLiteral("/nowhere/in/particular"));
    EXPECT_TRUE(request.overwritePrompt && request.pathMustExist);
    EXPECT_EQ(text("Last File Path"), folder());

    const QStringList got = lines(file);
    ASSERT_EQ(got.size(), 1 + 1 + 300 + 1 + 200);
    EXPECT_EQ(got[0], QStringLiteral("%Time(s), V1, V2, V3, Fz, Mx, My, CoPx, CoPy"));
    for (const int separator : {1, 302})
        EXPECT_TRUE(got[separator].startsWith(QStringLiteral("%NaN, "))) << separator;
    // Time restarts at 1/f in each segment; an unloaded row has no centre of pressure.
    for (const auto& [line, time] : {std::pair{2, "0.001000, "}, std::pair{301, "0.300000, "},
                                     std::pair{303, "0.001000, "}, std::pair{502, "0.200000, "}})
        EXPECT_TRUE(got[line].startsWith(QLatin1String(time))) << got[line].toStdString();
    for (const int unloaded : {303, 502})
        EXPECT_TRUE(got[unloaded].endsWith(QStringLiteral(", NaN, NaN"))) << unloaded;
    const QStringList loaded = got[150].split(QStringLiteral(", "));
    EXPECT_NEAR(loaded[4].toDouble(), -60 * 9.80665, 6.0);
    EXPECT_NEAR(loaded[7].toDouble(), 0.1, 0.01);
    EXPECT_NEAR(loaded[8].toDouble(), 0.05, 0.01);
}

// Every way out with rows in the table asks for a file first; a cancelled or failed save keeps
// the window with its table, and after a failure the file dialog comes again.
TEST_F(AcquireCapture, CancelledOrFailedSavesKeepTheDialogAndItsTable) {
    open();
    dialog->cmdDisplay->click();
    capture(250);
    dialog->close(); // the title-bar button; no answer queued: cancelled
    EXPECT_EQ(prompt.dialogs.size(), 1u);
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(unloads, 0);

    const QString gone = QDir(folder()).filePath(QStringLiteral("gone/run.txt"));
    prompt.fileAnswers.push_back(gone);
    prompt.fileAnswers.push_back(std::nullopt); // the user thinks twice
    dialog->cmdOK->click();
    waitForSave();
    ASSERT_EQ(prompt.messages.size(), 1);
    EXPECT_EQ(prompt.dialogs.size(), 3u) << "the file dialog is offered again after the failure";
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(dialog->journal().rowCount(), 251);
    EXPECT_TRUE(dialog->cmdOK->isEnabled());
    EXPECT_EQ(journals().size(), 1) << "a cancelled or failed save keeps the journal";

    const QString good = path("second try.txt");
    prompt.fileAnswers.push_back(good);
    dialog->close();
    waitForSave();
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_EQ(lines(good).size(), 1 + 251);
    EXPECT_EQ(QDir(folder()).entryList(QDir::Files), QStringList{QStringLiteral("second try.txt")})
        << "no temporary file left behind";
    EXPECT_TRUE(journals().isEmpty()) << "the journal goes once its capture is saved";
}

// However a capture is ended, by Display OFF or by leaving the dialog, it ends as Capture OFF
// would, and the segment it recorded reaches the file: leaving waits for the block the plate
// hands back after StopCapture returns.
TEST_F(AcquireCapture, EndingTheDisplayOrLeavingDuringACaptureKeepsItsSegment) {
    const std::pair<QString, std::function<void()>> ways[] = {
        {QStringLiteral("display off"), [this] { dialog->cmdDisplay->click(); }},
        {QStringLiteral("cancel"), [this] { dialog->cmdOK->click(); }},
        {QStringLiteral("escape"), [this] { QTest::keyClick(dialog.get(), Qt::Key_Escape); }},
        {QStringLiteral("title bar"), [this] { dialog->close(); }},
    };
    for (const auto& [way, end] : ways) {
        SCOPED_TRACE(way.toStdString());
        open();
        dialog->cmdDisplay->click();
        dialog->cmdCapture->click();
        clock.advance(300);
        const QString file = path(qPrintable(way + QStringLiteral(".txt")));
        prompt.fileAnswers.push_back(file);
        end();
        EXPECT_FALSE(dialog->capturing());
        EXPECT_EQ(dialog->cmdCapture->text(), strings::text(4030));
        EXPECT_EQ(dialog->lblCapture->text(), strings::text(4310));
        EXPECT_EQ(chart(0).TraceColor(), QColor(0, 255, 0));
        EXPECT_TRUE(dialog->isVisible()) << "the block is still on its way";
        clock.settle();
        EXPECT_EQ(dialog->journal().rowCount(), 1 + 300);
        if (!dialog->saving())
            dialog->cmdOK->click();
        waitForSave();
        EXPECT_FALSE(dialog->isVisible());
        EXPECT_EQ(lines(file).size(), 1 + 1 + 300);
    }
}

// A library that never hands the block back holds the dialog for two seconds, not for ever:
// then what the journal holds, the rows taken live of the last capture included, is saved.
TEST_F(AcquireCapture, ABlockThatNeverComesDelaysTheSaveTwoSeconds) {
    open();
    dialog->cmdDisplay->click();
    capture(100);
    QObject::disconnect(&plate, &PlateDevice::TestDone, dialog.get(), nullptr);
    dialog->cmdCapture->click();
    clock.advance(50);
    const QString file = path("late.txt");
    prompt.fileAnswers.push_back(file);
    dialog->cmdOK->click();
    EXPECT_FALSE(dialog->cmdOK->isEnabled());
    clock.advance(1999);
    EXPECT_TRUE(prompt.dialogs.empty());
    clock.advance(1);
    waitForSave();
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_EQ(lines(file).size(), 1 + 101 + 1 + 50);
}

// The status texts lag up to a text period behind the samples; when a capture ends they show
// what the file will hold: its rows, and the time of its last row.
TEST_F(AcquireCapture, TheCountAtCaptureOffIsTheFiles) {
    open(100);
    dialog->cmdDisplay->click();
    clock.advance(300);
    dialog->cmdCapture->click();
    clock.advance(4865);
    dialog->cmdCapture->click();
    EXPECT_NE(dialog->lblSample->text(), "486") << "until the plate hands its recording over";
    clock.settle();
    const QString file = path("count.txt");
    saveAs(file);
    const QStringList got = lines(file);
    ASSERT_EQ(got.size(), 1 + 1 + 486);
    EXPECT_EQ(dialog->lblSample->text(), "486");
    EXPECT_TRUE(got.last().startsWith("4.860000, ")) << got.last().toStdString();
    EXPECT_EQ(dialog->lblTime->text(), "4.86 s");
    // 486 samples over the 4865 ms (+ 1) the capture ran.
    EXPECT_EQ(dialog->lblFreq->text(), "99.88 Hz");
}

// Leaving with rows asks first: Save (Enter and Esc, as leaving always saved) or Discard,
// which is asked again; only a second Discard lets the rows go.
TEST_F(AcquireCapture, LeavingAsksToSaveOrToDiscardTwice) {
    open();
    dialog->cmdDisplay->click();
    capture(100);
    ASSERT_EQ(journals().size(), 1);

    prompt.answers = {1, 1}; // Discard, then Keep: the first question again, Esc: Save
    dialog->cmdOK->click();
    ASSERT_EQ(prompt.questions.size(), 3u);
    const Question& leave = prompt.questions[0];
    EXPECT_EQ(leave.text, "Save the 101 captured rows before the window closes?");
    EXPECT_EQ(leave.choices, (QStringList{"&Save", "&Discard"}));
    EXPECT_EQ(leave.defaultChoice, 0);
    EXPECT_EQ(leave.escapeChoice, 0);
    const Question& again = prompt.questions[1];
    EXPECT_EQ(again.text, "Discard the 101 captured rows? They cannot be brought back.");
    EXPECT_EQ(again.choices, (QStringList{"&Discard", "&Keep"}));
    EXPECT_EQ(again.defaultChoice, 1);
    EXPECT_EQ(again.escapeChoice, 1);
    EXPECT_EQ(prompt.questions[2].text, leave.text);
    EXPECT_EQ(prompt.dialogs.size(), 1u) << "Save opened the file dialog, cancelled";
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(journals().size(), 1);

    prompt.answers = {1, 0}; // Discard, Discard
    dialog->cmdOK->click();
    EXPECT_EQ(prompt.dialogs.size(), 1u);
    EXPECT_EQ(unloads, 1);
    EXPECT_TRUE(journals().isEmpty());
    EXPECT_TRUE(QDir(folder()).entryList(QDir::Files).isEmpty());
}

// A plate unplugged mid-capture closes the dialog; the rows taken until then wait on the disk
// for the next start.
TEST_F(AcquireCapture, AnUnpluggedPlateLeavesItsCaptureOnTheDisk) {
    open();
    dialog->cmdDisplay->click();
    dialog->cmdCapture->click();
    clock.advance(300);
    driver.unplug(QStringLiteral("20418"));
    clock.advance(500);
    EXPECT_EQ(unloads, 1);
    const QStringList left = journals();
    ASSERT_EQ(left.size(), 1);
    CaptureJournalReader reader;
    ASSERT_TRUE(reader.open(left[0]));
    EXPECT_EQ(reader.rowCount(), 1 + 300);
    EXPECT_EQ(reader.header().plateSerial, "20418");
    EXPECT_EQ(reader.header().started, clock.currentDateTime().addMSecs(-800));
}

// A disk that fills during a capture stops it with a message; the rows written before are
// saved as usual, once there is room again, and no new capture starts on that journal.
TEST_F(AcquireCapture, AFullDiskStopsTheCaptureAndKeepsItsRows) {
    open();
    dialog->cmdDisplay->click();
    dialog->cmdCapture->click();
    clock.advance(1500);
    // Every row so far on the disk, the writer idle again.
    const auto kept = qint64(journalRows().size());
    const QString journal = dialog->journal().path();
    {
        const FileSizeLimit limit(rlim_t(QFileInfo(journal).size() + 1000));
        clock.advance(1000);
        ASSERT_TRUE(eventsUntil([this] { return !dialog->capturing(); }));
    }
    ASSERT_EQ(prompt.messages.size(), 1);
    EXPECT_TRUE(prompt.messages[0].startsWith(
        "The capture was stopped: its rows cannot be written to the disk.\n\n"));
    EXPECT_TRUE(prompt.messages[0].endsWith(
        QString("\n\nThe %1 rows written until then are kept, and are saved as usual when the "
                "window closes.")
            .arg(kept)));
    EXPECT_EQ(dialog->cmdCapture->text(), strings::text(4030));
    clock.settle();

    dialog->cmdCapture->click();
    EXPECT_FALSE(dialog->capturing());
    ASSERT_EQ(prompt.messages.size(), 2);
    EXPECT_TRUE(prompt.messages[1].startsWith(
        "The capture cannot start: its rows cannot be written to the disk.\n\n"));

    const QString file = path("kept.txt");
    saveAs(file);
    EXPECT_EQ(lines(file).size(), 1 + kept);
    EXPECT_TRUE(journals().isEmpty());
}

// Drift averages a second of samples per point at 1000 Hz, from an empty accumulator even
// after the display has counted samples; points become rows only while capture is on.
TEST_F(AcquireCapture, DriftAveragesOneSecondPerPointAt1000Hz) {
    setNumber("Display Type", 0);
    open();
    placeWeight(70, 0.05, 0.1);
    dialog->cmdDisplay->click();
    clock.advance(1000);
    dialog->cmdDisplay->click();
    dialog->cmdDrift->click();
    EXPECT_EQ(dialog->cmdDrift->text(), strings::text(4041));
    EXPECT_FALSE(dialog->cmdDisplay->isEnabled());
    EXPECT_EQ(dialog->lblCapture->text(), strings::text(4311)) << "the label runs ahead";
    EXPECT_FALSE(dialog->capturing());
    EXPECT_FLOAT_EQ(chart(0).SampleRate(), 1.0f);

    dialog->cmdCapture->click();
    clock.advance(999);
    EXPECT_EQ(dialog->journal().rowCount(), 0);
    clock.advance(4001);
    dialog->cmdCapture->click();
    EXPECT_EQ(dialog->lblSample->text(), "6") << "the count at Capture OFF, separator included";
    clock.advance(2000);
    const std::vector<CaptureRow> rows = journalRows();
    ASSERT_EQ(rows.size(), 5u + 1);
    EXPECT_TRUE(rows[5].isSeparator());
    for (std::size_t r = 0; r < 5; ++r) {
        EXPECT_NEAR(rows[r].forces[0], -70 * 9.80665, 5.0);
        EXPECT_NEAR(rows[r].postural[1], 0.05, 0.005);
        EXPECT_NEAR(rows[r].postural[2], 0.1, 0.005);
    }

    dialog->cmdDrift->click();
    EXPECT_TRUE(dialog->cmdDisplay->isEnabled());
    EXPECT_EQ(dialog->lblCapture->text(), strings::text(4310));
}

// A converter with a slow modulator samples at 0.4 Hz: samplesPerPoint rounds to 0, so every
// sample is a point and a captured row of its own, timed k / f all the same. Only the display
// is switched off on leaving: the drift goes on.
TEST_F(AcquireCapture, DriftAt04HzMakesEverySampleAPoint) {
    SimPlateConfig slow;
    slow.serial = QStringLiteral("30001");
    slow.modulatorRate = 3200;
    slow.sampleFrequency = 0.4;
    SimPlate& slowPlate = *driver.addPlate(slow);
    openPlates();
    ASSERT_FLOAT_EQ(slowPlate.SampleFrequency(Which::Current), 0.4f);
    int slowSamples = 0;
    QObject::connect(&slowPlate, &PlateDevice::ForcesIn, [&] { ++slowSamples; });
    openDialog(&slowPlate);
    slowPlate.loads().placeWeight(70, 0.05, 0.1, slowPlate.now());

    dialog->cmdDrift->click();
    EXPECT_FLOAT_EQ(chart(0).SampleRate(), 0.4f);
    dialog->cmdCapture->click();
    clock.advance(10'000);
    dialog->cmdCapture->click();
    ASSERT_EQ(slowSamples, 4);
    EXPECT_EQ(dialog->journal().rowCount(), slowSamples + 1);
    EXPECT_NEAR(journalRows()[3].forces[0], -70 * 9.80665, 5.0);

    const QString file = path("slow drift.txt");
    saveAs(file);
    const QStringList text = lines(file);
    ASSERT_EQ(text.size(), 1 + 4 + 1);
    EXPECT_TRUE(text[1].startsWith(QStringLiteral("2.500000, "))) << text[1].toStdString();
    EXPECT_TRUE(text[4].startsWith(QStringLiteral("10.000000, "))) << text[4].toStdString();
    const int before = slowSamples;
    clock.advance(10'000);
    EXPECT_EQ(slowSamples - before, 4) << "closing leaves a drift streaming, as it always has";
}

} // namespace
} // namespace kx::test
