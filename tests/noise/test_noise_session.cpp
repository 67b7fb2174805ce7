#include "FileBytes.h"
#include "FileSizeLimit.h"
#include "NoisePlanValues.h"
#include "PrintQString.h"
#include "RecordingPrompt.h"
#include "SimBench.h"
#include "TempEnvironment.h"
#include "noise/NoiseSession.h"
#include "resources/StringTable.h"
#include "support/IniFile.h"
#include "support/Prompt.h"

#include <QDir>
#include <QRegularExpression>
#include <QSignalSpy>
#include <gtest/gtest.h>

namespace kx {
namespace {

using test::fileBytes;
using O = NoiseSession::Ending;

// A session on plate 20418 with a plan that runs in seconds: two frequencies, two
// excitations, 2 s tests after 1 s waits. The watchdog gives such a test 2 x 2 s + 30 s.
class NoiseSessionTest : public ::testing::Test {
protected:
    NoiseSessionTest() { test::writeSmallNoisePlan(); }
    bool open(const QString& folder) {
        return session.open(&plate, IniFile::sharedProfile(), folder);
    }
    bool open() { return open(environment.documentsFolder()); }
    // Moves the clock 100 ms at a time until `done` holds, at most `limitMs`.
    bool until(const std::function<bool()>& done, int limitMs = 60000) {
        for (int ms = 0; ms < limitMs && !done(); ms += 100)
            bench.clock.advance(100);
        return done();
    }
    bool testsDone(qsizetype count) {
        return until([&] { return session.results().measuredCount() == count; });
    }
    QString logText() const { return QString::fromUtf8(fileBytes(session.logPath())); }

    test::TempEnvironment environment;
    test::SimBench bench;
    test::RecordingPrompt prompt;
    SimPlate& plate = bench.plate("20418");
    NoiseSession session{bench.clock, prompt};
};

// A zero's end, its progress or a fault of the plate that reaches the session while it is not
// measuring is someone else's or stale: no result, no mark, no file.
TEST_F(NoiseSessionTest, EventsAtTheWrongMomentChangeNothing) {
    ASSERT_TRUE(open());
    QSignalSpy stored(&session, &NoiseSession::testStored);
    const auto strayEvents = [&] {
        Q_EMIT plate.ZeroDone(100, {1, 2, 3}, {4, 5, 6}, {7, 8, 9});
        Q_EMIT plate.ZeroProgress(50);
        Q_EMIT plate.BufferOverRun();
        Q_EMIT plate.DataClipped();
    };
    strayEvents(); // idle
    ASSERT_TRUE(session.start());
    strayEvents(); // waiting for the first test
    EXPECT_EQ(session.state(), NoiseSession::State::Waiting);
    EXPECT_EQ(session.progress(), 0);
    EXPECT_EQ(stored.size(), 0);
    EXPECT_TRUE(session.results().empty());
    EXPECT_FALSE(QFileInfo::exists(session.resultPath()));

    ASSERT_TRUE(testsDone(1));
    strayEvents(); // waiting between tests
    ASSERT_TRUE(testsDone(2));
    EXPECT_EQ(stored.size(), 2);
    EXPECT_EQ(session.results().suspectCount(), 0) << "the faults came before the tests";
    EXPECT_NE(session.results().value(NoiseResults::R1, 0, 0, 0), 1);
    session.stop(O::Stopped);
    strayEvents(); // after the run
    EXPECT_EQ(session.results().measuredCount(), 2);
    EXPECT_TRUE(prompt.events.isEmpty());
}

// An overrun during the second test and a weight put down during the third, at the first
// frequency as the first test: each test is marked for what happened during it, in the list and
// the log; the result file keeps its layout.
TEST_F(NoiseSessionTest, TestsDisturbedByAnOverrunOrALoadAreMarkedInTheListAndTheLog) {
    ASSERT_TRUE(open());
    QSignalSpy marked(&session, &NoiseSession::testMarked);
    ASSERT_TRUE(session.start());
    ASSERT_TRUE(testsDone(1));
    ASSERT_TRUE(until([&] { return session.measuring(); }));
    bench.driver.inject("20418", PlateFault::BufferOverRun);
    ASSERT_TRUE(testsDone(2));
    bench.driver.inject("20418", PlateFault::DataClipped); // while waiting: no test's fault
    ASSERT_TRUE(until([&] {
        return session.measuring() && session.progress() * 2 >= session.progressMaximum();
    }));
    plate.placeWeight(20, 0, 0.18);
    ASSERT_TRUE(testsDone(4));

    const NoiseResults& results = session.results();
    EXPECT_EQ(results.marks(0, 0), NoiseResults::NotSuspect);
    EXPECT_EQ(results.marks(1, 0), NoiseResults::Overrun);
    EXPECT_EQ(results.marks(0, 1), NoiseResults::LoadChange);
    EXPECT_EQ(results.marks(1, 1), NoiseResults::NotSuspect) << "the weight stood still";
    EXPECT_EQ(marked.size(), 1);
    EXPECT_TRUE(session.listLine(1).endsWith("   suspect: buffer overrun"));
    EXPECT_TRUE(session.listLine(2).endsWith("   suspect: load change"));
    EXPECT_FALSE(session.listLine(3).contains("suspect"));

    const QStringList log = logText().split("\r\n", Qt::SkipEmptyParts);
    ASSERT_EQ(log.size(), 4);
    EXPECT_TRUE(log[0].endsWith("Noise test of plate 20418, results in 20418_Noise_1.TXT: 2 "
                                "frequencies, 2 excitations, 3 channels, tests of 2 s."));
    EXPECT_TRUE(log[1].contains(QRegularExpression(
        R"(^2024-03-14 09:30:\d\d  Test 2 of 4 \(0\.249 V, 64\.000 Hz\) suspect: buffer overrun$)")))
        << log[1].toStdString();
    EXPECT_TRUE(log[2].endsWith("Test 3 of 4 (0.498 V, 32.000 Hz) suspect: load change on "
                                "channel 1"));
    EXPECT_TRUE(log[3].endsWith("Run finished: 4 of 4 tests done, 2 suspect."));
    EXPECT_EQ(session.logPath(), environment.documentsFolder() + "/20418_Noise_1.log");
    EXPECT_FALSE(fileBytes(session.resultPath()).contains("suspect"));
}

// The plate stops answering during a test. Its progress reports kept the watchdog quiet; from
// the last one it allows twice the test's 2 s and 30 s more, then the session says the plate
// is silent and its holder ends the test as a time-out.
TEST_F(NoiseSessionTest, APlateThatFallsSilentIsGivenTwiceItsTestAndHalfAMinute) {
    ASSERT_TRUE(open());
    QSignalSpy silent(&session, &NoiseSession::silent);
    QObject::connect(&session, &NoiseSession::silent, &session, [&] { session.stop(O::TimedOut); });
    ASSERT_TRUE(session.start());
    ASSERT_TRUE(testsDone(1));
    ASSERT_TRUE(until([&] { return session.measuring(); }));
    const quint32 started = bench.clock.tickCount();
    quint32 lastProgress = started;
    QObject::connect(&plate, &PlateDevice::ZeroProgress, &session,
                     [&] { lastProgress = bench.clock.tickCount(); });
    bench.clock.advance(1000);
    bench.driver.makeNotResponding("20418");
    ASSERT_GT(lastProgress, started);
    bench.clock.advance(lastProgress + 34000 - 1 - bench.clock.tickCount());
    EXPECT_EQ(silent.size(), 0);
    EXPECT_TRUE(session.measuring());
    bench.clock.advance(1);
    EXPECT_EQ(silent.size(), 1);
    EXPECT_FALSE(session.running());
    bench.clock.advance(600000);
    EXPECT_EQ(silent.size(), 1);
    EXPECT_TRUE(prompt.events.isEmpty())
        << "the holder reports it; restoring the plate fails quietly";
    EXPECT_EQ(session.results().measuredCount(), 1);
    EXPECT_TRUE(logText().contains("The plate sent nothing for 34 s; the test ends as a read "
                                   "time-out.\r\n"));
    EXPECT_TRUE(logText().contains("Run ended by an error of the plate: 1 of 4 tests done."));
    EXPECT_TRUE(logText().contains("could not be restored"));
}

TEST_F(NoiseSessionTest, LeavingARunAsksFirstAndEndsItOnlyWhenToldTo) {
    const float frequencyBefore = plate.SampleFrequency(Which::Current);
    ASSERT_TRUE(open());
    ASSERT_TRUE(session.start());
    EXPECT_FALSE(session.mayLeave(true, false)) << "an empty answer is Esc: keep running";
    ASSERT_EQ(prompt.questions.size(), 1u);
    const Question& asked = prompt.questions[0];
    EXPECT_EQ(asked.text, "Stop the noise test? 0 of 4 tests are done and saved.");
    EXPECT_EQ(asked.choices, (QStringList{"&Stop the Test", "&Keep Running"}));
    EXPECT_EQ(asked.defaultChoice, NoiseSession::KeepRunning);
    EXPECT_EQ(asked.escapeChoice, NoiseSession::KeepRunning);
    EXPECT_TRUE(session.running());

    ASSERT_TRUE(testsDone(1));
    prompt.answers = {NoiseSession::StopRun};
    EXPECT_TRUE(session.mayLeave(false, false));
    EXPECT_EQ(prompt.questions.back().text,
              "Stop the noise test? 1 of 4 tests are done and saved.");
    EXPECT_FALSE(session.running());
    EXPECT_EQ(plate.SampleFrequency(Which::Current), frequencyBefore);
    EXPECT_TRUE(logText().endsWith("Run stopped by the user: 1 of 4 tests done.\r\n"));

    ASSERT_TRUE(session.start());
    EXPECT_TRUE(session.mayLeave(false, true)) << "a plate gone is not asked about";
    EXPECT_EQ(prompt.questions.size(), 2u);
    EXPECT_TRUE(logText().endsWith("The plate was disconnected: 0 of 4 tests done.\r\n"));
}

// The last save of a run fails (a full disk). Leaving saves again; while that fails, OK asks
// for another place and the other ways out ask what to do, and nothing closes unsaved.
TEST_F(NoiseSessionTest, ResultsThatCannotBeSavedAreSavedAgainOrElsewhereBeforeLeaving) {
    ASSERT_TRUE(open());
    ASSERT_TRUE(session.start());
    ASSERT_TRUE(testsDone(3));
    QByteArray saved = fileBytes(session.resultPath());
    {
        const FileSizeLimit full(64);
        ASSERT_TRUE(testsDone(4));
        EXPECT_FALSE(session.running());
        EXPECT_EQ(fileBytes(session.resultPath()), saved) << "the last whole file stays";
        EXPECT_TRUE(session.fileStatus().startsWith("Results file not saved ("));
        EXPECT_TRUE(session.fileStatus().endsWith(") - OK saves it again or elsewhere"));

        EXPECT_FALSE(session.mayLeave(true, false)) << "the file dialog was cancelled";
        ASSERT_EQ(prompt.dialogs.size(), 1u);
        EXPECT_EQ(prompt.dialogs[0].fileName, "20418_Noise_1.TXT");
        EXPECT_EQ(prompt.dialogs[0].initialFolder, environment.documentsFolder());

        EXPECT_FALSE(session.mayLeave(false, false)) << "Esc: go back";
        ASSERT_EQ(prompt.questions.size(), 1u);
        EXPECT_EQ(prompt.questions[0].escapeChoice, NoiseSession::GoBack);
        EXPECT_TRUE(prompt.questions[0].text.startsWith(
            "The noise test results could not be saved in " + environment.documentsFolder() +
            "/20418_Noise_1.TXT:\n"));
    }
    EXPECT_TRUE(session.mayLeave(true, false)) << "saved again, so nothing more is asked";
    EXPECT_EQ(prompt.dialogs.size(), 1u);
    EXPECT_EQ(prompt.questions.size(), 1u);
    EXPECT_EQ(fileBytes(session.resultPath()).count("\r\n"), 2);
    EXPECT_NE(fileBytes(session.resultPath()), saved);
    EXPECT_EQ(session.fileStatus(), "");
}

// The documents folder turns into a file (or any place the user may not write): the results go
// where the user says, with the picture and the log beside them; or the user discards them.
TEST_F(NoiseSessionTest, WhereTheResultsCannotGoTheUserChoosesAnotherPlaceOrDiscardsThem) {
    ASSERT_TRUE(open());
    session.setPicture([] { return QByteArray("picture"); });
    ASSERT_TRUE(session.start());
    ASSERT_TRUE(testsDone(1));
    QDir(environment.documentsFolder()).removeRecursively();
    test::writeFileBytes(environment.documentsFolder(), "in the way");
    test::writeFileBytes(environment.path() + "/in the way", "a file");
    const QString elsewhere = environment.path() + "/elsewhere/results.TXT";
    prompt.answers = {NoiseSession::StopRun};
    prompt.fileAnswers = {environment.path() + "/in the way/results.TXT", elsewhere};
    EXPECT_FALSE(session.mayLeave(true, false)) << "the place chosen first fails too";
    EXPECT_EQ(prompt.messages.size(), 1);
    EXPECT_TRUE(prompt.messages[0].startsWith("The results could not be saved in "));
    EXPECT_TRUE(session.mayLeave(true, false));
    EXPECT_EQ(session.resultPath(), elsewhere);
    EXPECT_EQ(fileBytes(elsewhere).count("\r\n"), 2);
    EXPECT_EQ(fileBytes(environment.path() + "/elsewhere/results.png"), "picture");
    EXPECT_TRUE(QString::fromUtf8(fileBytes(environment.path() + "/elsewhere/results.log"))
                    .contains("Results saved in " + elsewhere + " instead."));

    NoiseSession second{bench.clock, prompt};
    ASSERT_TRUE(second.open(&plate, IniFile::sharedProfile(), environment.documentsFolder()));
    prompt.answers = {0}; // start anyway
    ASSERT_TRUE(second.start());
    ASSERT_TRUE(until([&] { return second.results().measuredCount() == 1; }));
    prompt.answers = {NoiseSession::StopRun, NoiseSession::Discard};
    EXPECT_TRUE(second.mayLeave(false, false));
}

// A documents folder that cannot be made is named, with the reason, before the warm-up, and the
// run starts only if the user says so.
TEST_F(NoiseSessionTest, AResultsFolderThatCannotBeMadeIsNamedBeforeTheWarmUp) {
    test::writeFileBytes(environment.path() + "/file", "");
    ASSERT_TRUE(open(environment.path() + "/file/docs"));
    EXPECT_FALSE(session.start()) << "an empty answer is Esc: do not start";
    ASSERT_EQ(prompt.questions.size(), 1u);
    EXPECT_EQ(prompt.questions[0].text,
              "The noise test results cannot be saved in " + environment.path() +
                  "/file/docs:\nThe folder cannot be created.\n\nStart the test anyway? When it "
                  "ends you will be asked for another place.");
    EXPECT_EQ(prompt.questions[0].defaultChoice, 1);
    EXPECT_FALSE(session.running());
    prompt.answers = {0};
    EXPECT_TRUE(session.start());
}

// A result file chosen by the holder takes the log beside it, and its folder is the one a run
// checks before the warm-up.
TEST_F(NoiseSessionTest, AChosenResultFileTakesTheLogAndItsFolderIsChecked) {
    test::writeFileBytes(environment.path() + "/file", "");
    ASSERT_TRUE(open());
    session.chooseResultFile(environment.path() + "/file/night.TXT");
    EXPECT_EQ(session.logPath(), environment.path() + "/file/night.log");
    EXPECT_FALSE(session.start());
    ASSERT_EQ(prompt.questions.size(), 1u);
    EXPECT_TRUE(prompt.questions[0].text.startsWith("The noise test results cannot be saved in " +
                                                    environment.path() + "/file:\n"));
}

// Whatever ends a run, its holder hears it once, after the plate has its settings back.
TEST_F(NoiseSessionTest, ARunEndsOnceWhateverEndsItAndSaysSo) {
    ASSERT_TRUE(open());
    const float frequency = plate.SampleFrequency(Which::Current);
    QSignalSpy ended(&session, &NoiseSession::runEnded);
    bool plateAnswers = true;
    QObject::connect(&session, &NoiseSession::runEnded, &session, [&] {
        EXPECT_FALSE(session.running());
        if (plateAnswers) {
            EXPECT_EQ(plate.SampleFrequency(Which::Current), frequency);
        }
    });
    ASSERT_TRUE(session.start());
    ASSERT_TRUE(until([&] { return !session.running(); }));
    EXPECT_EQ(session.results().measuredCount(), 4);
    EXPECT_EQ(ended.size(), 1) << "after the last test";
    session.stop(O::Stopped);
    EXPECT_EQ(ended.size(), 1) << "no run to stop";

    ASSERT_TRUE(session.start());
    ASSERT_TRUE(testsDone(1));
    session.stop(O::Stopped);
    EXPECT_EQ(ended.size(), 2) << "stopped by the holder";

    ASSERT_TRUE(session.start());
    plateAnswers = false;
    bench.driver.makeNotResponding("20418");
    ASSERT_TRUE(until([&] { return !session.running(); }));
    EXPECT_EQ(ended.size(), 3) << "stopped by the call that would start the first test";
}

} // namespace
} // namespace kx
