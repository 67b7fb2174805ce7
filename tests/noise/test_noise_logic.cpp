#include "FileBytes.h"
#include "FileSaves.h"
#include "FileSizeLimit.h"
#include "PrintQString.h"
#include "TempEnvironment.h"
#include "noise/NoisePlan.h"
#include "noise/NoiseResultFile.h"
#include "noise/NoiseResultText.h"
#include "noise/NoiseResults.h"
#include "noise/NoiseSequence.h"
#include "noise/NoiseTimeline.h"
#include "noise/LoadChanges.h"
#include "support/IniFile.h"

#include <QDir>
#include <QFile>
#include <QLocale>
#include <gtest/gtest.h>
#include <tuple>

namespace kx {
namespace {

using test::fileBytes;

class NoisePlanTest : public ::testing::Test {
protected:
    IniFile ini() const { return IniFile(environment.path() + "/profile/KXPlateCpl.ini"); }
    void put(std::initializer_list<std::pair<const char*, const char*>> values) {
        QDir().mkpath(environment.path() + "/profile");
        for (const auto& [key, value] : values)
            ini().setValue("Noise", key, value);
    }
    test::TempEnvironment environment;
};

TEST_F(NoisePlanTest, DefaultsWithoutAFileAndTwoFrequenciesWithoutTheirKeysAre32And64Hz) {
    NoisePlan plan = NoisePlan::read(ini());
    EXPECT_EQ(plan.frequencies, (QList<float>{32, 64, 128, 256, 512}));
    QList<float> excitations;
    for (int i = 1; i <= 20; ++i)
        excitations << 0.25f * static_cast<float>(i);
    EXPECT_EQ(plan.excitations, excitations);
    EXPECT_EQ(std::tuple(plan.channels, plan.testDuration, plan.frequencySettling,
                         plan.excitationSettling, plan.initialDelay),
              std::tuple(3, 60.0f, 10.0f, 300.0f, 3600.0f));

    put({{"Frequencies", "2"}, {"Excitations", "1"}, {"Excitation 0", "2.5"}});
    plan = NoisePlan::read(ini());
    EXPECT_EQ(plan.frequencies, (QList<float>{32, 64}));
    EXPECT_EQ(plan.excitations, QList<float>{2.5f});
}

// A damaged file never crashes the dialog nor asks for an absurd run: the value's default,
// or the count clamped.
TEST_F(NoisePlanTest, MalformedOrAbsurdValuesFallBackOrAreClamped) {
    put({{"Frequencies", "1000"},
         {"Excitations", "zero"},
         {"Channels", "9"},
         {"Test Duration", "0"},
         {"Initial Delay", "-5"},
         {"Frequency Settling Time", "0"},
         {"Excitation Settling Time", "nan"},
         {"Frequency 1", "fast"},
         {"Frequency 2", "-64"},
         {"Excitation 3", "-5"}});
    const NoisePlan plan = NoisePlan::read(ini());
    EXPECT_EQ(plan.frequencies.size(), NoisePlan::MaxFrequencies);
    EXPECT_EQ(plan.frequencies[1], 64.0f);
    EXPECT_EQ(plan.frequencies[2], 128.0f);
    EXPECT_EQ(plan.excitations.size(), 20);
    EXPECT_EQ(plan.excitations[3], -5.0f) << "a reversed excitation is a real setting";
    EXPECT_EQ(plan.channels, 4);
    // No wait (a settling time of 0) is allowed, a test of no length is not.
    EXPECT_EQ(std::tuple(plan.testDuration, plan.initialDelay, plan.frequencySettling,
                         plan.excitationSettling),
              std::tuple(60.0f, 3600.0f, 0.0f, 300.0f));
}

TEST_F(NoisePlanTest, WritingMakesTheFolderAndPutsEveryValueAsText) {
    NoisePlan plan = NoisePlan::defaults();
    plan.frequencies = {31.25f, 1000};
    plan.excitations = {0.25f, 4.75f, 5};
    plan.initialDelay = 1.5f;
    const IniFile deep(environment.path() + "/a/b/KXPlateCpl.ini");
    plan.write(deep);
    const QByteArray text = fileBytes(deep.path());
    for (const char* line :
         {"Frequencies=2", "Excitations=3", "Frequency 0=31.25", "Frequency 1=1000",
          "Excitation 1=4.75", "Excitation 2=5", "Initial Delay=1.5", "Test Duration=60"})
        EXPECT_TRUE(text.contains(line)) << line;
}

// The plan goes back into the profile when the dialog closes: in one save, giving the file
// each value written back on its own gave (the golden file was made so), and in none when the
// profile holds that plan already.
TEST_F(NoisePlanTest, ThePlanIsWrittenBackInOneSaveAndNoneWhenTheProfileHoldsIt) {
    QDir().mkpath(environment.path() + "/profile");
    test::writeFileBytes(ini().path(), "[Calibration]\r\nPoints=10\r\n"
                                       "[noise]\r\nfrequencies = 2\r\nFrequency 1=64\r\n"
                                       "Extra=kept\r\n\r\n[Linearity]\r\nLoads=8");
    FileSaves saves(ini().path());
    ASSERT_TRUE(saves.watching());
    NoisePlan plan = NoisePlan::read(ini());
    EXPECT_EQ(saves.take(), 0) << "reading writes nothing";
    plan.excitations = {0.5f, 1.25f};
    plan.write(ini());
    EXPECT_EQ(saves.take(), 1);
    EXPECT_EQ(fileBytes(ini().path()),
              fileBytes(QStringLiteral(KX_NOISE_GOLDEN_DIR "/plan-written-back.ini")));
    NoisePlan::read(ini()).write(ini());
    EXPECT_EQ(saves.take(), 0);
}

TEST(NoiseSequence, FrequenciesAreTheInnerLoopAndEachTestHasItsWait) {
    const NoisePlan plan; // waits: 3600 s initial, 300 s excitation, 10 s frequency
    NoiseSequence sequence(3, 2);
    sequence.restart();
    const std::tuple<qsizetype, qsizetype, float> expected[] = {
        {0, 0, 3600}, {1, 0, 10}, {2, 0, 10}, {0, 1, 300}, {1, 1, 10}, {2, 1, 10}};
    for (qsizetype i = 0; i < std::ssize(expected); ++i) {
        EXPECT_EQ(std::tuple(sequence.frequencyIndex(), sequence.excitationIndex(),
                             sequence.waitSeconds(plan)),
                  expected[i])
            << "test " << i;
        EXPECT_EQ(sequence.advance(), i + 1 < std::ssize(expected));
    }
}

TEST(NoiseSequence, TheWaitEndsOnTheFirstTickPastItsWholeSeconds) {
    const std::tuple<quint32, float, bool> cases[] = {
        {3600000, 3600, false}, {3600001, 3600, true}, {10000, 10.5f, false}, {10001, 10.5f, true},
        {12000, 11.5f, false},  {12001, 11.5f, true},  {0, 0, false},         {1000, 0, true}};
    for (const auto& [elapsed, wait, over] : cases)
        EXPECT_EQ(NoiseSequence::waitIsOver(elapsed, wait), over) << elapsed << " of " << wait;
}

TEST(NoiseSequence, TheCountdownNamesTheSecondsLeftAndWhichTestFollows) {
    NoiseSequence sequence(5, 20);
    sequence.restart();
    EXPECT_EQ(sequence.countdownText(58000, 3600), "Waiting 3542 s to start tests");
    sequence.advance();
    EXPECT_EQ(sequence.countdownText(4000, 10), "Waiting 6 s to start test");
}

TEST(PrintZones, EveryItemIsFollowedByBlanksToTheNextZone) {
    const std::tuple<QString, QString, QString> cases[] = {
        {"", "0.250", "0.250" + QString(9, ' ')},
        {"", QString(13, 'x'), QString(13, 'x') + ' '},
        {"", QString(14, 'x'), QString(14, 'x') + QString(14, ' ')}, // a whole empty zone
        {"", QString(20, 'x'), QString(20, 'x') + QString(8, ' ')},
        {QString(14, 'a'), "bcd", QString(14, 'a') + "bcd" + QString(11, ' ')},
    };
    for (auto [line, item, expected] : cases) {
        printInZone(line, item);
        EXPECT_EQ(line, expected);
    }
}

TEST(NoiseResultText, AnItemWiderThanItsZoneStillLeavesTheLineReadable) {
    NoisePlan plan;
    plan.frequencies = {32, 64};
    plan.excitations = {0.25f, 5};
    plan.channels = 1;
    NoiseResults results(1, 2, 2);
    results.store(0, 0, {8.4e12}, {1e6}, {6e6});
    const QString line = QString::fromLatin1(noiseResultFile(plan, results)).split("\r\n")[0];
    const QStringList items = line.split(' ', Qt::SkipEmptyParts);
    ASSERT_EQ(items.size(), 9);
    EXPECT_EQ(items[2], "8400000000000.000");
    EXPECT_EQ(items[3], "1000000.000");
    EXPECT_EQ(line.indexOf("1000000.000") % PrintZoneWidth, 0) << "the next item keeps to a zone";
}

TEST(NoiseResults, ClearingForgetsEveryTestAndMissingChannelsStayZero) {
    NoiseResults three(3, 2, 2);
    three.store(0, 1, {1, 2}, {3, 4}, {5, 6});
    EXPECT_TRUE(three.measured(0, 1));
    EXPECT_FALSE(three.measured(1, 0));
    EXPECT_EQ(three.value(NoiseResults::R3, 1, 0, 1), 6);
    EXPECT_EQ(three.value(NoiseResults::R1, 2, 0, 1), 0) << "the plate reported two channels";
    three.clear();
    EXPECT_TRUE(three.empty());
    EXPECT_EQ(three.value(NoiseResults::R2, 0, 0, 1), 0);
}

TEST(NoiseResultFile, AFailedSaveIsReportedOnceKeepsTheLastWholeFileAndIsRetried) {
    test::TempEnvironment environment;
    NoiseResultFile file(environment.documentsFolder() + "/1_Noise_1.TXT");
    using O = NoiseResultFile::Outcome;
    EXPECT_EQ(file.save("first\r\n"), O::Saved);
    {
        const FileSizeLimit full(4); // a full disk
        EXPECT_EQ(file.save("second, longer\r\n"), O::Failed);
        EXPECT_EQ(file.save("third, longer\r\n"), O::StillFailing);
        EXPECT_TRUE(file.failing());
    }
    EXPECT_EQ(fileBytes(file.path()), "first\r\n");
    EXPECT_EQ(file.save("fourth\r\n"), O::Saved);
    EXPECT_FALSE(file.failing());
    EXPECT_EQ(fileBytes(file.path()), "fourth\r\n");
    const FileSizeLimit full(4);
    EXPECT_EQ(file.save("fifth, longer\r\n"), O::Failed) << "a new run of failures is told again";
}

// Writing over a whole file from a child process whose files may not grow past 4 KiB: a
// result file of four channels and six frequencies (over 16 KiB) would be cut short.
TEST(NoiseResultFile, AResultFileCutShortIsToldAndTheOldOneStaysByteForByte) {
    test::TempEnvironment environment;
    NoiseResultFile file(environment.documentsFolder() + "/1_Noise_1.TXT");
    const QByteArray old(3000, 'o');
    ASSERT_EQ(file.save(old), NoiseResultFile::Outcome::Saved);
    const int status = exitStatusUnderFileSizeLimit(4096, [&] {
        const bool told = file.save(QByteArray(20000, 'n')) == NoiseResultFile::Outcome::Failed;
        return told && file.failing() && !file.error().isEmpty() ? 0 : 1;
    });
    EXPECT_EQ(status, 0);
    EXPECT_EQ(fileBytes(file.path()), old);
    EXPECT_EQ(QDir(environment.documentsFolder()).entryList(QDir::Files),
              QStringList{"1_Noise_1.TXT"});
    EXPECT_EQ(besideResultFile(file.path(), ".png"),
              environment.documentsFolder() + "/1_Noise_1.png");
}

// Deviations of one channel at one frequency, test by test; the marks expected.
TEST(LoadChanges, ADeviationTenTimesTheOthersMedianAtItsFrequencyIsALoadChange) {
    struct Case {
        const char* what;
        std::vector<double> deviations; // 0: not measured
        std::vector<bool> marked;
    };
    const Case cases[] = {
        {"a hand on the plate", {62, 48468, 61, 64}, {false, true, false, false}},
        {"the noise growing with the excitation", {60, 75, 90, 100}, {false, false, false, false}},
        {"just over ten times", {60, 601, 60}, {false, true, false}},
        {"just under", {60, 599, 60}, {false, false, false}},
        {"alone at its frequency", {48468, 0, 0}, {false, false, false}},
        {"found by the next test", {48468, 62}, {true, false}},
        {"two disturbed of four", {62, 9000, 61, 48468}, {false, true, false, true}},
        {"two disturbed of three", {62, 9000, 48468}, {false, true, true}},
        {"a quiet converter", {0.3, 30, 0.2}, {false, false, false}},
    };
    for (const Case& test : cases) {
        const auto count = qsizetype(test.deviations.size());
        NoiseResults results(2, 2, count);
        for (qsizetype e = 0; e < count; ++e) {
            if (test.deviations[e] > 0) {
                results.store(1, e, {0, 0}, {50, test.deviations[e]}, {0, 0});
                results.store(0, e, {0, 0}, {5000, 5000}, {0, 0}); // another frequency
            }
        }
        const QList<LoadChange> found = markLoadChanges(results, 1);
        QList<LoadChange> expected;
        for (qsizetype e = 0; e < count; ++e) {
            EXPECT_EQ(results.marks(1, e) == NoiseResults::LoadChange, test.marked[e])
                << test.what << ", test " << e;
            if (test.marked[e])
                expected << LoadChange{1, e, 1};
        }
        EXPECT_EQ(found, expected) << test.what;
        EXPECT_TRUE(markLoadChanges(results, 1).isEmpty()) << test.what << ": marked once";
        EXPECT_EQ(results.suspectCount(), expected.size()) << test.what;
    }
}

TEST(NoiseResultText, TheHeadingStandsOverTheColumnsAndASuspectLineSaysWhy) {
    NoisePlan plan;
    plan.frequencies = {32};
    plan.excitations = {0.25f};
    NoiseResults results(2, 1, 1);
    results.store(0, 0, {4369.215, 20826.098}, {71.924, 80.023}, {451, 528});
    const QString line = noiseListLine(plan, results, 0, 0);
    const QStringList heading = noiseListHeading(2);
    ASSERT_EQ(heading.size(), 2);
    // Each heading item ends where its column's figure ends.
    const QStringList names = {"Exc.",  "Freq.",       "Ch1 average", "deviation",
                               "range", "Ch2 average", "deviation",   "range"};
    const QStringList units = {"(V)",     "(Hz)",    "(codes)", "(codes)",
                               "(codes)", "(codes)", "(codes)", "(codes)"};
    const QStringList figures = {"0.250",     "032.000",     "0004369.215", "00071.924",
                                 "00451.000", "0020826.098", "00080.023",   "00528.000"};
    qsizetype at = 0;
    for (qsizetype i = 0; i < figures.size(); ++i) {
        at = line.indexOf(figures[i], at) + figures[i].size();
        EXPECT_EQ(heading[0].mid(at - names[i].size(), names[i].size()), names[i]) << i;
        EXPECT_EQ(heading[1].mid(at - units[i].size(), units[i].size()), units[i]) << i;
    }
    EXPECT_EQ(heading[0].size(), line.size());
    results.mark(0, 0, NoiseResults::Overrun | NoiseResults::LoadChange);
    EXPECT_EQ(noiseListLine(plan, results, 0, 0), line + "   suspect: buffer overrun, load change");
    EXPECT_EQ(suspicionText(NoiseResults::Clipping), "suspect: clipping");
}

TEST(NoiseTimeline, TheRunsEndIsForeseenFromThePlanAndTheWaitsShowAsHoursMinutesSeconds) {
    const NoisePlan plan = NoisePlan::defaults();
    NoiseSequence sequence(5, 20);
    const QDateTime morning(QDate(2024, 3, 14), QTime(9, 30));
    NoiseTimeline timeline = NoiseTimeline::at(plan, sequence, false, 0);
    // 3601 s of warm-up, 100 tests of 60 s, 80 waits of 11 s and 19 of 301 s.
    EXPECT_EQ(timeline.remainingMs, (3601 + 100 * 60 + 80 * 11 + 19 * 301) * 1000LL);
    EXPECT_EQ(timeline.text(morning), "test 1 of 100, starts in 1:00:01, ends about 14:00");

    for (int i = 0; i < 5; ++i)
        sequence.advance();
    // Test 6 waits for its excitation, 100 s gone; after it 94 tests, 76 of them after a
    // frequency change and 18 after an excitation change.
    timeline = NoiseTimeline::at(plan, sequence, false, 100000);
    EXPECT_EQ(timeline.remainingMs, 201000 + 60000 + (94 * 60 + 76 * 11 + 18 * 301) * 1000LL);
    EXPECT_EQ(timeline.text(morning), "test 6 of 100, starts in 0:03:21, ends about 12:52");

    for (int i = 5; i < 99; ++i)
        sequence.advance();
    timeline = NoiseTimeline::at(plan, sequence, true, 30000);
    EXPECT_EQ(timeline.remainingMs, 30000);
    EXPECT_FALSE(timeline.startsInMs);
    EXPECT_EQ(timeline.text(QDateTime(QDate(2024, 3, 14), QTime(23, 59, 45))),
              "test 100 of 100, ends about " + QLocale().dayName(5, QLocale::ShortFormat) +
                  " 00:00");

    const std::pair<qint64, const char*> durations[] = {
        {0, "0:00:00"}, {59999, "0:00:59"}, {3601000, "1:00:01"}, {36000000, "10:00:00"}};
    for (const auto& [ms, text] : durations)
        EXPECT_EQ(formatDuration(ms), text);
}

} // namespace
} // namespace kx
