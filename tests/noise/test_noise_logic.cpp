#include "FileSizeLimit.h"
#include "PrintQString.h"
#include "TempEnvironment.h"
#include "noise/NoisePlan.h"
#include "noise/NoiseResultFile.h"
#include "noise/NoiseResultText.h"
#include "noise/NoiseResults.h"
#include "noise/NoiseSequence.h"
#include "support/IniFile.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>
#include <tuple>

namespace kx {
namespace {

QByteArray fileBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

class NoisePlanTest : public ::testing::Test {
protected:
    IniFile ini() const { return IniFile(environment.path() + "/profile/KXPlateCpl.ini"); }
    void put(const QString& key, const QString& value) {
        QDir().mkpath(environment.path() + "/profile");
        ini().setValue("Noise", key, value);
    }
    test::TempEnvironment environment;
};

TEST_F(NoisePlanTest, WithoutAFileEveryValueIsItsDefault) {
    const NoisePlan plan = NoisePlan::read(ini());
    EXPECT_EQ(plan.frequencies, (QList<float>{32, 64, 128, 256, 512}));
    ASSERT_EQ(plan.excitations.size(), 20);
    EXPECT_EQ(plan.excitations.front(), 0.25f);
    EXPECT_EQ(plan.excitations[1], 0.5f);
    EXPECT_EQ(plan.excitations.back(), 5.0f);
    EXPECT_EQ(plan.channels, 3);
    EXPECT_EQ(std::tuple(plan.testDuration, plan.frequencySettling, plan.excitationSettling,
                         plan.initialDelay),
              std::tuple(60.0f, 10.0f, 300.0f, 3600.0f));
}

TEST_F(NoisePlanTest, TwoFrequenciesWithoutTheirKeysAre32And64Hz) {
    put("Frequencies", "2");
    put("Excitations", "1");
    put("Excitation 0", "2.5");
    const NoisePlan plan = NoisePlan::read(ini());
    EXPECT_EQ(plan.frequencies, (QList<float>{32, 64}));
    EXPECT_EQ(plan.excitations, QList<float>{2.5f});
}

// A damaged file never crashes the dialog nor asks for an absurd run: the value's default,
// or the count clamped.
TEST_F(NoisePlanTest, MalformedOrAbsurdValuesFallBackOrAreClamped) {
    put("Frequencies", "1000");
    put("Excitations", "zero");
    put("Channels", "9");
    put("Test Duration", "0");
    put("Initial Delay", "-5");
    put("Frequency Settling Time", "0");
    put("Excitation Settling Time", "nan");
    put("Frequency 1", "fast");
    put("Frequency 2", "-64");
    put("Excitation 3", "-5");
    const NoisePlan plan = NoisePlan::read(ini());
    EXPECT_EQ(plan.frequencies.size(), NoisePlan::MaxFrequencies);
    EXPECT_EQ(plan.frequencies[1], 64.0f);
    EXPECT_EQ(plan.frequencies[2], 128.0f);
    EXPECT_EQ(plan.excitations.size(), 20);
    EXPECT_EQ(plan.excitations[3], -5.0f) << "a reversed excitation is a real setting";
    EXPECT_EQ(plan.channels, 4);
    EXPECT_EQ(plan.testDuration, 60.0f);
    EXPECT_EQ(plan.initialDelay, 3600.0f);
    EXPECT_EQ(plan.frequencySettling, 0.0f) << "no wait is allowed";
    EXPECT_EQ(plan.excitationSettling, 300.0f);
}

TEST_F(NoisePlanTest, WritingMakesTheFolderAndReadsBackTheSamePlan) {
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
    const NoisePlan back = NoisePlan::read(deep);
    EXPECT_EQ(back.frequencies, plan.frequencies);
    EXPECT_EQ(back.excitations, plan.excitations);
    EXPECT_EQ(back.initialDelay, 1.5f);
}

TEST(NoiseSequence, FrequenciesAreTheInnerLoopAndEachTestHasItsWait) {
    using W = NoiseSequence::Wait;
    NoiseSequence sequence(3, 2);
    sequence.restart();
    const std::tuple<qsizetype, qsizetype, W> expected[] = {
        {0, 0, W::Initial},    {1, 0, W::Frequency}, {2, 0, W::Frequency},
        {0, 1, W::Excitation}, {1, 1, W::Frequency}, {2, 1, W::Frequency}};
    for (qsizetype i = 0; i < std::ssize(expected); ++i) {
        EXPECT_EQ(std::tuple(sequence.frequencyIndex(), sequence.excitationIndex(),
                             sequence.waitInForce()),
                  expected[i])
            << "test " << i;
        EXPECT_EQ(sequence.advance(), i + 1 < std::ssize(expected));
    }
    NoisePlan plan;
    sequence.restart();
    EXPECT_EQ(sequence.waitSeconds(plan), 3600.0f);
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

class NoiseText : public ::testing::Test {
protected:
    NoiseText() {
        plan.frequencies = {32, 64};
        plan.excitations = {0.25f, 5};
        plan.channels = 1;
    }
    NoisePlan plan;
    NoiseResults results{1, 2, 2};
};

TEST_F(NoiseText, TheFileHasOneLinePerExcitationWithZerosForTestsNotRun) {
    results.store(1, 0, {-1234.5678}, {12.3456}, {78.9}); // 64 Hz at 0.25 V
    const QByteArray expected = "0.250         032.000       000000.000    000.000       000.000"
                                "       064.000       -001234.568   012.346       078.900       "
                                "\r\n"
                                "5.000         032.000       000000.000    000.000       000.000"
                                "       064.000       000000.000    000.000       000.000       "
                                "\r\n";
    EXPECT_EQ(noiseResultFile(plan, results), expected);
}

TEST_F(NoiseText, AnItemWiderThanItsZoneStillLeavesTheLineReadable) {
    results.store(0, 0, {8.4e12}, {1e6}, {6e6});
    const QString line = QString::fromLatin1(noiseResultFile(plan, results)).split("\r\n")[0];
    const QStringList items = line.split(' ', Qt::SkipEmptyParts);
    ASSERT_EQ(items.size(), 9);
    EXPECT_EQ(items[2], "8400000000000.000");
    EXPECT_EQ(items[3], "1000000.000");
    EXPECT_EQ(line.indexOf("1000000.000") % PrintZoneWidth, 0) << "the next item keeps to a zone";
}

TEST_F(NoiseText, TheListLineShowsOneTestWithItsOwnPatterns) {
    plan.channels = 2;
    NoiseResults two(2, 2, 2);
    two.store(1, 1, {8388608.25, -3}, {17.5, 0.25}, {105, 1.5});
    EXPECT_EQ(noiseListLine(plan, two, 1, 1), "5.000   064.000      8388608.250   00017.500   "
                                              "00105.000      -0000003.000   00000.250   "
                                              "00001.500");
}

TEST_F(NoiseText, ClearingForgetsEveryTestAndMissingChannelsStayZero) {
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

TEST(NoiseResultFile, TheNameTakesTheFirstFreeNumber) {
    test::TempEnvironment environment;
    const QString folder = environment.documentsFolder();
    EXPECT_EQ(firstFreeNoiseFile(folder, "1234"), folder + "/1234_Noise_1.TXT");
    for (const char* name : {"/1234_Noise_1.TXT", "/1234_Noise_3.TXT", "/999_Noise_2.TXT"}) {
        QFile file(folder + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    EXPECT_EQ(firstFreeNoiseFile(folder, "1234"), folder + "/1234_Noise_2.TXT");
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

} // namespace
} // namespace kx
