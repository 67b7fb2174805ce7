#include "../support/PrintQString.h"
#include "DialogFixture.h"
#include "FileBytes.h"
#include "FileSizeLimit.h"
#include "NoisePlanValues.h"
#include "noise/NoiseChart.h"
#include "noise/NoiseSession.h"
#include "noise/frmNoise.h"
#include "resources/StringTable.h"
#include "support/IniFile.h"
#include "support/NumberFormat.h"

#include <QDir>
#include <QFile>
#include <QGroupBox>
#include <QImage>
#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>

namespace kx {
namespace {

using test::fileBytes;

// The lines of a result file, each split into its items.
QList<QStringList> fileItems(const QString& path) {
    QList<QStringList> lines;
    const QString text = QString::fromLatin1(fileBytes(path));
    for (const QString& line : text.split("\r\n", Qt::SkipEmptyParts))
        lines << line.split(' ', Qt::SkipEmptyParts);
    return lines;
}

// The ticks at which tests begin (the progress bar appears) and end (the plate's zero is
// done), seen from outside the dialog.
class TestTimes : public QObject {
public:
    TestTimes(QProgressBar* bar, PlateDevice& plate, const Clock& clock)
        : m_clock(clock) {
        bar->installEventFilter(this);
        connect(&plate, &PlateDevice::ZeroDone, this, [this] { ends << m_clock.tickCount(); });
    }
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Show)
            starts << m_clock.tickCount();
        return false;
    }
    QList<quint32> starts;
    QList<quint32> ends;

private:
    const Clock& m_clock;
};

class NoiseTest : public test::DialogFixture<frmNoise> {
protected:
    IniFile ini() const { return IniFile::sharedProfile(); }
    static void plan(std::initializer_list<std::pair<const char*, const char*>> values) {
        test::writeNoisePlan(values);
    }
    static void smallPlan() { test::writeSmallNoisePlan(); }
    frmNoise& open() {
        openDialog(&plate);
        times = std::make_unique<TestTimes>(dialog->ProgressBar1, plate, clock);
        return *dialog;
    }
    // Moves the clock in whole seconds until `done` holds, at most `limitS` seconds.
    bool secondsUntil(const std::function<bool()>& done, int limitS) {
        return advanceUntil(done, limitS * 1000, 1000);
    }
    bool measuring() const { return dialog->ProgressBar1->isVisible(); }

    SimPlate& plate = openDefaultPlates();
    std::unique_ptr<TestTimes> times;
};

TEST_F(NoiseTest, OpensWithItsCaptionsNamesAndTheFirstFreeFile) {
    // The first free number, not one past the highest, and only this plate's files count.
    for (const char* name : {"/20418_Noise_1.TXT", "/20418_Noise_3.TXT", "/11093_Noise_2.TXT"}) {
        QFile taken(environment.documentsFolder() + name);
        ASSERT_TRUE(taken.open(QIODevice::WriteOnly));
    }
    QDir(environment.commonAppDataFolder()).removeRecursively();
    open();
    EXPECT_EQ(dialog->windowTitle(), "KX Force Platforms Control Panel - Noise Test");
    const std::pair<const char*, const char*> captions[] = {{"cmdAcquire", "&Acquire"},
                                                            {"cmdOK", "&OK"},
                                                            {"cmdCancel", "&Cancel"},
                                                            {"frmTestParam", "Test Parameters:"},
                                                            {"lblTitleF", "Frequency:"},
                                                            {"lblTitleV", "Excitation:"},
                                                            {"lblSampFreq", "Sampling Freq (Hz):"},
                                                            {"lblDuration", "Duration (s):"},
                                                            {"lblExcTitke", "Excitation (V):"},
                                                            {"frmResults", "Results:"},
                                                            {"StatusBar1Panel1", "Ready"}};
    for (const auto& [name, caption] : captions) {
        QObject* control = test::child<QObject>(dialog.get(), name);
        ASSERT_NE(control, nullptr);
        const QVariant text =
            control->property(qobject_cast<QGroupBox*>(control) ? "title" : "text");
        EXPECT_EQ(text.toString(), caption) << name;
    }
    for (const char* name : {"lblF", "lblFreqTxt", "lblV", "lblExcitationTxt", "lblDurationTxt",
                             "lstResults", "picNoise"})
        EXPECT_FALSE(test::child<QWidget>(dialog.get(), name)->accessibleName().isEmpty()) << name;
    EXPECT_EQ(dialog->lblFreqTxt->accessibleName(), "Sampling Freq (Hz)");
    EXPECT_EQ(dialog->resultPath(), environment.documentsFolder() + "/20418_Noise_2.TXT");
    EXPECT_TRUE(QFileInfo(ini().path()).dir().exists()) << "the INI file's folder is made";
    EXPECT_TRUE(dialog->cmdAcquire->isEnabled());
}

TEST_F(NoiseTest, WithoutAPlateNothingCanStart) {
    openDialog(nullptr);
    EXPECT_EQ(dialog->StatusBar1Panel1->text(), "No Platform");
    EXPECT_FALSE(dialog->cmdAcquire->isEnabled());
    dialog->close();
    EXPECT_EQ(unloads, 1);
}

TEST_F(NoiseTest, ADialogClosedBeforeItLoadedLeavesThePlanAlone) {
    plan({{"Frequencies", "2"}, {"Frequency 1", "100"}});
    const QByteArray before = fileBytes(ini().path());
    frmNoise unshown(ToolContext{clock, prompt});
    unshown.setDevice(&plate);
    unshown.reject();
    EXPECT_EQ(fileBytes(ini().path()), before);
}

// 5.5 hours of plate time in one advance of the manual clock.
TEST_F(NoiseTest, AFullDefaultRunKeepsItsWaitsAndLeavesAWholeFileAndPicture) {
    const float frequencyBefore = plate.SampleFrequency(Which::Current);
    const float excitationBefore = plate.GageVoltage(Which::Current);
    open();
    const quint32 acquired = clock.tickCount();
    dialog->cmdAcquire->click();
    EXPECT_FALSE(dialog->cmdAcquire->isEnabled());
    EXPECT_EQ(dialog->lblF->text(), "1 of 5");
    EXPECT_EQ(dialog->lblV->text(), "1 of 20");
    EXPECT_EQ(dialog->lblDurationTxt->text(), "60");
    // An hour of warm-up, 100 tests of a minute, 80 waits of 10 s and 19 of 300 s, each wait
    // ending on the next one-second tick: 4.5 hours from 09:30.
    EXPECT_EQ(dialog->lblRunTxt->text(), "test 1 of 100, starts in 1:00:01, ends about 14:00");
    clock.advance(58000);
    EXPECT_EQ(dialog->StatusBar1Panel1->text(), "Waiting 3542 s to start tests");

    clock.advance(3 * 3600 * 1000 - 58000);
    ASSERT_TRUE(measuring() || dialog->Timer1->isEnabled());
    test::keepScreenshot(*dialog, "frmNoise-mid-run");
    clock.advance(3 * 3600 * 1000);

    ASSERT_EQ(times->starts.size(), 100);
    ASSERT_EQ(times->ends.size(), 100);
    // A test begins on the first tick of the one-second timer after its wait has passed.
    EXPECT_EQ(times->starts[0] - acquired, 3601000u);
    EXPECT_EQ(times->starts[1] - times->ends[0], 11000u);
    EXPECT_EQ(times->starts[5] - times->ends[4], 301000u);
    EXPECT_EQ(times->starts[6] - times->ends[5], 11000u);
    EXPECT_NEAR(times->ends.last() - acquired, 16200000.0, 1000.0);
    EXPECT_EQ(dialog->lblRunTxt->text(), "");
    EXPECT_EQ(dialog->StatusBar1Panel1->text(), "Tests Done - press OK ot save and exit");
    EXPECT_TRUE(dialog->cmdAcquire->isEnabled());
    EXPECT_TRUE(dialog->cmdOK->isEnabled());
    EXPECT_EQ(dialog->lstResults->count(), 100);
    EXPECT_EQ(plate.SampleFrequency(Which::Current), frequencyBefore);
    EXPECT_EQ(plate.GageVoltage(Which::Current), excitationBefore);

    const QList<QStringList> lines = fileItems(dialog->resultPath());
    ASSERT_EQ(lines.size(), 20);
    for (const QStringList& items : lines) {
        ASSERT_EQ(items.size(), 1 + 5 * (1 + 3 * 3));
        for (int f = 0; f < 5; ++f)
            EXPECT_GT(items[1 + f * 10 + 2].toDouble(), 0) << "every test measured a deviation";
    }
    EXPECT_EQ(lines[19][0], "5.000");
    const QString picturePath = dialog->resultPath().replace(".TXT", ".png");
    const QImage picture(picturePath);
    EXPECT_FALSE(picture.isNull());
    if (const QString folder = qEnvironmentVariable("KX_SCREENSHOT_DIR"); !folder.isEmpty())
        QFile::copy(picturePath, QDir(folder).filePath("frmNoise-picture.png"));
}

// The frequencies read back from the plate, the figures from a zero-done event of our own. The
// first save fails (a full disk): that is told, the run goes on and the next save writes it all.
TEST_F(NoiseTest, TheFileOfASmallPlanIsExactlyTheGoldenOneEvenAfterAFailedSave) {
    smallPlan();
    plan({{"Channels", "2"},
          {"Frequency 0", "100"},
          {"Frequency 1", "200"},
          {"Excitation 0", "2.5"},
          {"Excitation 1", "5"}});
    open();
    dialog->cmdAcquire->click();
    for (int test = 0; test < 4; ++test) {
        ASSERT_TRUE(secondsUntil([&] { return measuring(); }, 10)) << test;
        EXPECT_EQ(dialog->ProgressBar1->maximum(), test % 2 ? 400 : 200) << "2 s of samples";
        EXPECT_FALSE(dialog->cmdOK->isEnabled() || dialog->cmdCancel->isEnabled());
        plate.StopAcquisition();
        const double n = test + 1;
        std::optional<FileSizeLimit> full;
        if (test == 0)
            full.emplace(64); // smaller than the file
        Q_EMIT plate.ZeroDone(200, {-1000.5 * n, 2e6 * n, 7, 8}, {1.25 * n, 0.5, 0, 0},
                              {7.5 * n, 3, 0, 0});
        EXPECT_EQ(dialog->StatusBar1Panel2->text().startsWith("Results file not saved ("),
                  test == 0);
        EXPECT_EQ(dialog->StatusBar1Panel2->text().isEmpty(), test > 0);
        EXPECT_EQ(QFileInfo::exists(dialog->resultPath()), test > 0);
    }
    EXPECT_EQ(dialog->lstResults->item(3)->text(),
              "5.000   200.000      -0004002.000   00005.000   00030.000      "
              "8000000.000   00000.500   00003.000");
    QFile golden(QStringLiteral(KX_NOISE_GOLDEN_DIR) + "/small-plan.TXT");
    ASSERT_TRUE(golden.open(QIODevice::ReadOnly));
    EXPECT_EQ(fileBytes(dialog->resultPath()), golden.readAll());
}

TEST_F(NoiseTest, CancelledAfterThreeTestsTheFileHasZerosForTheRestAndThePlateIsRestored) {
    plan({{"Frequency 1", "333"}});
    plate.SetSampleFrequency(Which::Current, 333);
    const float takenHz = plate.SampleFrequency(Which::Current);
    const QString taken = formatNumber(takenHz, u"000.000");
    ASSERT_NE(taken, "333.000") << "the plate rounds to what its converter can do";
    plate.SetGageVoltage(Which::Current, 0.25f);
    const QString firstExcitation = formatNumber(plate.GageVoltage(Which::Current), u"0.000");
    ASSERT_NE(firstExcitation, "0.250") << "the plate sets its excitation in DAC steps";
    plate.SetSampleFrequency(Which::Current, 1000);
    plate.SetGageVoltage(Which::Current, 3.3f);
    const float before = plate.GageVoltage(Which::Current);
    open();
    dialog->cmdAcquire->click();
    ASSERT_TRUE(secondsUntil([&] { return times->ends.size() == 3; }, 4000));
    // The list, the file and the plan keep what the plate took, not what was asked.
    EXPECT_TRUE(dialog->lstResults->item(1)->text().startsWith(firstExcitation + "   " + taken));
    ASSERT_TRUE(dialog->cmdCancel->isEnabled());
    prompt.answers = {NoiseSession::StopRun};
    dialog->cmdCancel->click();
    EXPECT_EQ(prompt.events,
              QStringList{"ask:Stop the noise test? 3 of 100 tests are done and saved."});
    EXPECT_EQ(unloads, 1);
    EXPECT_EQ(plate.SampleFrequency(Which::Current), 1000.0f);
    EXPECT_EQ(plate.GageVoltage(Which::Current), before);

    const QList<QStringList> lines = fileItems(dialog->resultPath());
    ASSERT_EQ(lines.size(), 20);
    // Per frequency its value, then the three channels' statistics: zeros but for the first
    // three tests.
    for (qsizetype e = 0; e < lines.size(); ++e) {
        for (int item = 0; item < 5 * 10; ++item) {
            const bool statistic = item % 10 != 0;
            EXPECT_EQ(lines[e][1 + item].toDouble() == 0, statistic && (e > 0 || item >= 30))
                << e << ' ' << item;
        }
    }
    EXPECT_EQ(lines[0][0], firstExcitation);
    EXPECT_EQ(lines[0][11], taken);
    EXPECT_EQ(lines[0][21], "128.000");
    EXPECT_EQ(lines[1][0], "0.500");
    EXPECT_EQ(ini().value("Noise", "Frequency 1", {}), formatGeneral(takenHz));
    EXPECT_EQ(ini().value("Noise", "Excitation 19", {}), "5") << "the plan is written on close";
    EXPECT_TRUE(QFileInfo::exists(dialog->resultPath().replace(".TXT", ".png")));
}

// A read time-out during the second test, and a plate that stops answering then (only the
// hidden main window hears the driver): 2 x 2 s + 30 s after the test began, having sent no
// progress since, it ends the same way. Either leaves the message, Acquire and Cancel on, OK
// off, the plate as it was and the first test in the file.
TEST_F(NoiseTest, AReadTimeOutOrASilentPlateMidTestEndsTheRunAndKeepsWhatWasMeasured) {
    struct Failure {
        const char* what;
        std::function<void()> happen;
    };
    const Failure failures[] = {{"a read time-out",
                                 [&] {
                                     clock.advance(500);
                                     driver.inject("20418", PlateFault::ReadTimeout);
                                 }},
                                {"a silent plate", [&] {
                                     driver.makeNotResponding("20418");
                                     clock.advance(34000 - 1);
                                     EXPECT_TRUE(measuring()) << "not before its time";
                                     clock.advance(1);
                                 }}};
    smallPlan();
    const float frequencyBefore = plate.SampleFrequency(Which::Current);
    for (const Failure& failure : failures) {
        prompt.messages.clear();
        open();
        dialog->cmdAcquire->click();
        ASSERT_TRUE(secondsUntil([&] { return times->starts.size() == 2; }, 20)) << failure.what;
        failure.happen();
        EXPECT_EQ(prompt.messages, QStringList{strings::text(7930)}) << failure.what;
        EXPECT_TRUE(dialog->cmdAcquire->isEnabled()) << failure.what;
        EXPECT_TRUE(dialog->cmdCancel->isEnabled()) << failure.what;
        EXPECT_FALSE(dialog->cmdOK->isEnabled()) << failure.what;
        EXPECT_FALSE(measuring() || dialog->running()) << failure.what;
        EXPECT_EQ(dialog->StatusBar1Panel1->text(), "Ready") << failure.what;
        clock.advance(3600 * 1000);
        EXPECT_EQ(times->starts.size(), 2) << failure.what << ": nothing runs on after the fault";
        const QList<QStringList> lines = fileItems(dialog->resultPath());
        ASSERT_EQ(lines.size(), 2) << failure.what;
        EXPECT_NE(lines[0][3].toDouble(), 0) << failure.what << ": the first test stays";
        EXPECT_EQ(lines[0][13].toDouble(), 0) << failure.what;
        if (plate.isResponding()) {
            EXPECT_EQ(plate.SampleFrequency(Which::Current), frequencyBefore);
            dialog->cmdAcquire->click(); // the user starts again, into the same file
            ASSERT_TRUE(secondsUntil([&] { return !dialog->running(); }, 60));
            EXPECT_EQ(dialog->lstResults->count(), 4);
            EXPECT_EQ(fileItems(dialog->resultPath()).size(), 2);
        }
    }
}

TEST_F(NoiseTest, UnpluggedItClosesAtOnceAfterOneBoxAndTheFileKeepsTheFirstTest) {
    smallPlan();
    open();
    dialog->cmdAcquire->click();
    ASSERT_TRUE(secondsUntil([&] { return times->starts.size() == 2; }, 20));
    const QString path = dialog->resultPath();
    driver.unplug("20418");
    EXPECT_EQ(prompt.messages, QStringList{strings::text(7920)});
    EXPECT_EQ(unloads, 1);
    clock.advance(60000);
    EXPECT_EQ(prompt.messages.size(), 1);
    const QList<QStringList> lines = fileItems(path);
    ASSERT_EQ(lines.size(), 2);
    EXPECT_NE(lines[0][3].toDouble(), 0);
}

// Every way out of a run in progress asks first, in the warm-up and during a test (where OK
// and Cancel are disabled); Esc answers "keep running", and the run goes on untouched.
TEST_F(NoiseTest, EnterEscCloseAndCancelDuringTheWarmUpAndMidTestEachAskFirst) {
    smallPlan();
    plan({{"Initial Delay", "3600"}});
    open();
    ASSERT_TRUE(dialog->cmdOK->isDefault());
    dialog->cmdAcquire->click();
    EXPECT_FALSE(dialog->cmdOK->isDefault()) << "a stray Enter must not end the run";
    const std::pair<const char*, std::function<void()>> ways[] = {
        {"Enter", [&] { QTest::keyClick(dialog->lstResults, Qt::Key_Return); }},
        {"Esc", [&] { QTest::keyClick(dialog->lstResults, Qt::Key_Escape); }},
        {"close", [&] { dialog->close(); }},
        {"Cancel", [&] { dialog->cmdCancel->click(); }},
        {"OK", [&] { dialog->cmdOK->click(); }}};
    for (const bool midTest : {false, true}) {
        if (midTest) {
            ASSERT_TRUE(secondsUntil([&] { return measuring(); }, 3700));
        }
        for (const auto& [way, leave] : ways) {
            prompt.events.clear();
            leave();
            const bool disabled = midTest && (way == QString("Cancel") || way == QString("OK"));
            EXPECT_EQ(prompt.events.size(), disabled ? 0 : 1) << way << " mid-test " << midTest;
            EXPECT_TRUE(dialog->isVisible()) << way;
            EXPECT_TRUE(dialog->running()) << way;
        }
    }
    ASSERT_EQ(prompt.questions.size(), 5u + 3u);
    EXPECT_EQ(prompt.questions.back().text,
              "Stop the noise test? 0 of 4 tests are done and saved.");
    EXPECT_EQ(times->starts.size(), 1);
    prompt.answers = {NoiseSession::StopRun};
    QTest::keyClick(dialog->lstResults, Qt::Key_Escape);
    EXPECT_EQ(unloads, 1);
}

// A device error that comes when no test is measured, a zero that ends when none was started:
// neither has a message nor touches the run.
TEST_F(NoiseTest, DeviceEventsAtTheWrongMomentChangeNothing) {
    smallPlan();
    open();
    dialog->cmdAcquire->click();
    driver.inject("20418", PlateFault::ReadTimeout);
    Q_EMIT plate.WriteTimeout();
    Q_EMIT plate.ZeroDone(10, {1}, {2}, {3});
    EXPECT_TRUE(prompt.events.isEmpty());
    ASSERT_TRUE(secondsUntil([&] { return !dialog->running(); }, 60));
    EXPECT_EQ(times->ends.size(), 5) << "four tests and the stray zero";
    EXPECT_EQ(dialog->lstResults->count(), 4);
    EXPECT_TRUE(prompt.events.isEmpty());
    EXPECT_EQ(dialog->StatusBar1Panel1->text(), "Tests Done - press OK ot save and exit");
}

// Nobody watches the plate during the night: an overrun during the second test and a weight
// put down during the third are marked in red in the list and ringed in the picture.
TEST_F(NoiseTest, AnOverrunAndALoadPlacedMidTestAreMarkedInTheListAndThePicture) {
    smallPlan();
    open();
    const auto suspectRed = [](const QImage& image) {
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (image.pixelColor(x, y) == QColor(200, 0, 0))
                    return true;
            }
        }
        return false;
    };
    dialog->cmdAcquire->click();
    ASSERT_TRUE(secondsUntil([&] { return times->starts.size() == 2; }, 20));
    EXPECT_FALSE(suspectRed(dialog->picNoise->picture())) << "nothing suspect yet";
    driver.inject("20418", PlateFault::BufferOverRun);
    ASSERT_TRUE(secondsUntil([&] { return times->starts.size() == 3; }, 20));
    clock.advance(1000);
    plate.placeWeight(20, 0, 0.18);
    ASSERT_TRUE(secondsUntil([&] { return !dialog->running(); }, 20));

    QStringList marks;
    for (int i = 0; i < dialog->lstResults->count(); ++i) {
        const QListWidgetItem* item = dialog->lstResults->item(i);
        marks << item->text().section("   ", -1);
        EXPECT_EQ(item->foreground().color() == QColor(200, 0, 0), i == 1 || i == 2) << i;
    }
    EXPECT_EQ(marks[1], "suspect: buffer overrun");
    EXPECT_EQ(marks[2], "suspect: load change");
    EXPECT_TRUE(suspectRed(dialog->picNoise->picture()));
    test::keepScreenshot(*dialog, "frmNoise-suspect-tests");
    EXPECT_TRUE(QFileInfo::exists(dialog->session().logPath()));
    EXPECT_EQ(fileItems(dialog->resultPath())[0].size(), 1 + 2 * 10) << "the file keeps its layout";
}

// The last test's save fails; OK saves again once the disk has room, and closes. Before that,
// OK asks for another place instead of closing with the results unsaved.
TEST_F(NoiseTest, TheLastSaveFailsThenOkSavesAgainAndCloses) {
    smallPlan();
    open();
    dialog->cmdAcquire->click();
    ASSERT_TRUE(secondsUntil([&] { return times->ends.size() == 3; }, 60));
    {
        const FileSizeLimit full(64);
        ASSERT_TRUE(secondsUntil([&] { return !dialog->running(); }, 60));
        EXPECT_TRUE(dialog->StatusBar1Panel2->text().endsWith("OK saves it again or elsewhere"));
        EXPECT_LE(dialog->minimumSizeHint().width(), 1366 - 16) << "the long status fits too";
        dialog->cmdOK->click();
        EXPECT_EQ(prompt.events, QStringList{"save:Save the Noise Test Results"});
        EXPECT_EQ(unloads, 0);
    }
    dialog->cmdOK->click();
    EXPECT_EQ(unloads, 1);
    EXPECT_EQ(fileItems(dialog->resultPath()).size(), 2);
    EXPECT_NE(fileItems(dialog->resultPath())[1][13].toDouble(), 0) << "the last test is in";
}

TEST_F(NoiseTest, WithoutADocumentsFolderTheRunMakesItAndSavesThere) {
    smallPlan();
    QDir(environment.documentsFolder()).removeRecursively();
    open();
    dialog->cmdAcquire->click();
    ASSERT_TRUE(secondsUntil([&] { return !dialog->running(); }, 60));
    EXPECT_TRUE(prompt.events.isEmpty());
    EXPECT_EQ(fileItems(environment.documentsFolder() + "/20418_Noise_1.TXT").size(), 2);
    EXPECT_TRUE(QFileInfo::exists(environment.documentsFolder() + "/20418_Noise_1.png"));
}

// The picture is written over its previous version in a child process whose files may not grow
// past 4 KiB: the results and the log still fit, the picture does not.
TEST_F(NoiseTest, APictureCutShortIsToldAndTheOldOneStaysByteForByte) {
    smallPlan();
    open();
    dialog->cmdAcquire->click();
    ASSERT_TRUE(secondsUntil([&] { return !dialog->running(); }, 60));
    const QString picture = dialog->session().picturePath();
    const QByteArray before = fileBytes(picture);
    ASSERT_GT(before.size(), 4096);
    dialog->cmdAcquire->click();
    ASSERT_TRUE(secondsUntil([&] { return times->ends.size() == 5; }, 60));
    EXPECT_EQ(dialog->lstResults->count(), 1) << "the list holds the new run only";
    const int status = exitStatusUnderFileSizeLimit(4096, [&] {
        prompt.answers = {NoiseSession::StopRun};
        dialog->cmdCancel->click();
        return dialog->StatusBar1Panel2->text().startsWith("Picture not saved (") ? 0 : 1;
    });
    EXPECT_EQ(status, 0);
    EXPECT_EQ(fileBytes(picture), before);
}

// Fits a 1366 x 768 screen with its title bar: the results list scrolls sideways instead, its
// heading with it.
TEST_F(NoiseTest, ItFitsTheScreenAndItsHeadingScrollsWithTheResults) {
    smallPlan();
    plan({{"Channels", "4"}});
    open();
    EXPECT_LE(dialog->minimumSizeHint().width(), 1366 - 16);
    EXPECT_LE(dialog->minimumSizeHint().height(), 768 - 40);
    EXPECT_LE(dialog->sizeHint().width(), 1366 - 16);
    EXPECT_LE(dialog->sizeHint().height(), 768 - 40);
    const QStringList heading = dialog->lblHeading->text().split('\n');
    ASSERT_EQ(heading.size(), 2);
    EXPECT_TRUE(heading[0].endsWith("Ch4 average   deviation       range"));
    dialog->cmdAcquire->click();
    ASSERT_TRUE(secondsUntil([&] { return dialog->lstResults->count() > 0; }, 60));
    dialog->resize(dialog->minimumSizeHint());
    QCoreApplication::processEvents(); // the layout and the list's geometry follow
    QScrollBar* sideways = dialog->lstResults->horizontalScrollBar();
    ASSERT_GT(sideways->maximum(), 0);
    for (const int value : {sideways->maximum() / 2, sideways->maximum()}) {
        sideways->setValue(value);
        EXPECT_EQ(dialog->fraHeading->horizontalScrollBar()->value(), value);
    }
}

} // namespace
} // namespace kx
