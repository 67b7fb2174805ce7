// kxplate noise in-process on a manual clock: the noise dialog's session run from the command
// line, its faults, its files and the plate's settings however it ends.

#include "CliBench.h"
#include "cli/NoiseCommand.h"
#include "support/ScaledClock.h"

#include <QDir>
#include <QFileInfo>
#include <csignal>
#include <functional>

namespace kx::test {
namespace {

using cli::NoiseCommand;

class NoiseRuns : public CliBench {
protected:
    NoiseRuns() {
        QFile ini(profile);
        EXPECT_TRUE(ini.open(QIODevice::WriteOnly));
        ini.write(Plan);
    }
    static constexpr char Plan[] = "[Noise]\n"
                                   "Frequencies=2\n"
                                   "Excitations=2\n"
                                   "Excitation 0=0.25\n"
                                   "Excitation 1=1\n"
                                   "Test Duration=2\n"
                                   "Initial Delay=30\n"
                                   "Frequency Settling Time=1\n"
                                   "Excitation Settling Time=5\n";
    const QString profile = environment.path() + QStringLiteral("/plan.ini");
    NoiseCommand::Options options(const QString& output = {}) const {
        return {.serial = QStringLiteral("20418"), .profile = profile, .output = output};
    }
    NoiseCommand noise{console, clock, driver, options()};

    // Runs `command` until its first test is in, then `event` happens; the exit status at the
    // end, or -1 while it still runs an hour later.
    int runAround(NoiseCommand& command, const std::function<void()>& event) {
        command.start();
        for (int i = 0; i < 2000 && output().isEmpty(); ++i)
            clock.advance(100);
        EXPECT_EQ(output().count(u'\n'), 1);
        event();
        return advance(command, 3600 * 1000);
    }
    QString logText(const NoiseCommand& command) const {
        QFile log(QFileInfo(command.resultPath())
                      .dir()
                      .filePath(QFileInfo(command.resultPath()).completeBaseName() +
                                QStringLiteral(".log")));
        EXPECT_TRUE(log.open(QIODevice::ReadOnly)) << log.fileName().toStdString();
        return QString::fromUtf8(log.readAll());
    }

    void expectPlateRestored() {
        EXPECT_EQ(plate("20418").SampleFrequency(Which::Current), 100.0f);
        EXPECT_EQ(plate("20418").GageVoltage(Which::Current), 5.0f);
    }
};

TEST_F(NoiseRuns, ARunWritesEveryTestAndLeavesThePlateAndTheProfileAsTheyWere) {
    ASSERT_EQ(run(noise), 0);
    EXPECT_EQ(output().count(u'\n'), 4);
    EXPECT_EQ(noise.resultPath(), document(QStringLiteral("20418_Noise_1.TXT")));
    EXPECT_EQ(lines(noise.resultPath()).size(), 2);
    expectPlateRestored();
    // The dialog writes the plan back with the excitations the plate took (0.249 V for 0.25 V);
    // a script's run leaves the profile alone.
    QFile ini(profile);
    ASSERT_TRUE(ini.open(QIODevice::ReadOnly));
    EXPECT_EQ(ini.readAll(), QByteArray(Plan));
}

TEST_F(NoiseRuns, AnInterruptedRunKeepsItsFirstTestAndZerosForTheRest) {
    noise.start();
    for (int i = 0; i < 2000 && output().isEmpty(); ++i)
        clock.advance(100);
    ASSERT_EQ(output().count(u'\n'), 1);
    noise.interrupt(SIGTERM);
    ASSERT_EQ(advance(noise, 1000), 128 + SIGTERM);
    expectPlateRestored();
    const QList<QByteArray> results = lines(noise.resultPath());
    ASSERT_EQ(results.size(), 2);
    const QList<QByteArray> first = results[0].simplified().split(' ');
    ASSERT_EQ(first.size(), 1 + 2 * 10);
    // The excitation, the first frequency and its channels measured; the second frequency's
    // channels still zero.
    EXPECT_NE(first[2].toDouble(), 0.0);
    for (qsizetype item = 12; item < first.size(); ++item)
        EXPECT_EQ(first[item].toDouble(), 0.0) << item;
}

TEST_F(NoiseRuns, ATimeOutEndsTheRunAsADeviceErrorAndRestoresThePlate) {
    EXPECT_EQ(run(noise, 1000 + 30000 + 1500), -1); // into the first test
    driver.inject(QStringLiteral("20418"), PlateFault::ReadTimeout);
    EXPECT_EQ(advance(noise, 1000), 3);
    EXPECT_EQ(errorLines(),
              QStringList{QStringLiteral(
                  "kxplate: plate 20418: Error: Time-out while reading from the platform!")});
    expectPlateRestored();
}

// The dialog reacts to a time-out only while a test is measured: one while waiting changes
// nothing, as there is no acquisition to end.
TEST_F(NoiseRuns, ATimeOutWhileWaitingIsIgnoredAsTheDialogIgnoresIt) {
    EXPECT_EQ(
        runAround(noise, [&] { driver.inject(QStringLiteral("20418"), PlateFault::ReadTimeout); }),
        0);
    EXPECT_EQ(errorLines(), QStringList());
    EXPECT_EQ(output().count(u'\n'), 4);
}

// A plate that stops answering mid-test ends the run as a read time-out, through the session's
// watchdog: the run's log says so, and the exit status is the device error's.
TEST_F(NoiseRuns, ASilentPlateEndsTheRunAsAReadTimeOut) {
    noise.start();
    for (int i = 0; i < 2000 && output().isEmpty(); ++i)
        clock.advance(100);
    // Into the second test's 2 s, after its 1 s wait (over at its first tick past 1 s).
    clock.advance(2500);
    driver.makeNotResponding(QStringLiteral("20418"));
    EXPECT_EQ(advance(noise, 2 * 2000 + 30000 - 1000), -1) << "the watchdog waits its time";
    EXPECT_EQ(advance(noise, 2000), 3);
    ASSERT_EQ(errorLines().size(), 1) << errorLines().join(u'\n').toStdString();
    EXPECT_EQ(errorLines().front(),
              QStringLiteral("kxplate: plate 20418: Error: Time-out while reading from the "
                             "platform!"));
    EXPECT_TRUE(logText(noise).contains(QLatin1String("the test ends as a read time-out")));
    EXPECT_TRUE(logText(noise).contains(QLatin1String("1 of 4 tests done")));
}

// A plate call that fails ends the run where it failed, told in the library's words, with the
// device error's status; the results so far stay in the file.
TEST_F(NoiseRuns, AFailingPlateCallEndsTheRunAsADeviceError) {
    EXPECT_EQ(runAround(noise, [&] { driver.makeNotResponding(QStringLiteral("20418")); }), 3);
    const QStringList told = errorLines();
    ASSERT_FALSE(told.isEmpty());
    EXPECT_EQ(told.front(),
              QStringLiteral("kxplate: plate 20418: The force platform 20418 does not respond."));
    EXPECT_EQ(output().count(u'\n'), 1);
    EXPECT_NE(lines(noise.resultPath())[0].simplified().split(' ')[2].toDouble(), 0.0);
}

// A results folder that cannot be made stops the run before the warm-up, where nobody would
// see the results lost hours later: the folder is named, the plate left alone.
TEST_F(NoiseRuns, AResultsFolderThatCannotBeMadeStopsTheRunBeforeItStarts) {
    const QString blocker = environment.path() + QStringLiteral("/file");
    QFile file(blocker);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    NoiseCommand command{console, clock, driver, options(blocker + QStringLiteral("/r.TXT"))};
    EXPECT_EQ(run(command, 5000), 4);
    EXPECT_EQ(errorLines(),
              QStringList{QStringLiteral("kxplate: plate 20418: The noise test results cannot be "
                                         "saved in %1: The folder cannot be created. (answered: "
                                         "Cancel)")
                              .arg(blocker)});
    EXPECT_TRUE(output().isEmpty());
    expectPlateRestored();
}

// Results whose folder goes away mid-run are told once, tried again after every test, and at
// the end saved in the documents folder: the exit status says so, and nothing is lost.
TEST_F(NoiseRuns, ResultsThatCannotBeSavedGoToARescuePlace) {
    const QString folder = environment.path() + QStringLiteral("/results");
    NoiseCommand command{console, clock, driver, options(folder + QStringLiteral("/night.TXT"))};
    EXPECT_EQ(runAround(command,
                        [&] {
                            ASSERT_TRUE(QDir(folder).removeRecursively());
                            QFile blocker(folder); // a file where the folder was
                            ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
                        }),
              4);
    const QString rescued = document(QStringLiteral("night.TXT"));
    EXPECT_EQ(command.resultPath(), rescued);
    const QStringList told = errorLines();
    ASSERT_EQ(told.size(), 2) << told.join(u'\n').toStdString();
    EXPECT_TRUE(told[0].startsWith(QLatin1String("kxplate: plate 20418: Results file not saved")));
    EXPECT_TRUE(told[1].endsWith(QStringLiteral("saved in %1 instead").arg(rescued)));
    const QList<QByteArray> results = lines(rescued);
    ASSERT_EQ(results.size(), 2);
    for (const QByteArray& line : results)
        for (const QByteArray& item : line.simplified().split(' '))
            EXPECT_NE(item.toDouble(), 0.0) << "every test is in the rescued file";
    EXPECT_TRUE(logText(command).contains(QLatin1String("Results saved in")));
    expectPlateRestored();
}

// At 1000 times real time a plan of ten and a half minutes takes as many wakes of the real
// clock as 0.63 s of it holds, no more, and none of its waits is cut short.
TEST_F(NoiseRuns, AtSpeedThePlanTakesAThousandthOfItsTime) {
    QFile ini(profile);
    ASSERT_TRUE(ini.open(QIODevice::WriteOnly | QIODevice::Truncate));
    ini.write("[Noise]\nFrequencies=2\nExcitations=1\nTest Duration=10\nInitial Delay=600\n"
              "Frequency Settling Time=10\n");
    ini.close();
    ManualClock wall{1000};
    ScaledClock fast(wall, 1000);
    SimDriver plates(fast);
    Scenario::defaults().applyTo(plates);
    NoiseCommand command{console, fast, plates, options()};
    command.start();
    // The plates found after 1 s, 600 s to the first test, 10 s, 10 s settling, 10 s: 631 s
    // and the ticks that end each wait, in wakes of 20 ms.
    constexpr int WakeMs = 20;
    int wakes = 0;
    for (; wakes < 1000 && !command.isFinished(); ++wakes)
        wall.advance(WakeMs);
    EXPECT_EQ(command.exitCode(), 0);
    EXPECT_GE(wakes, 631 / WakeMs);
    EXPECT_LE(wakes, 640 / WakeMs);
    EXPECT_EQ(output().count(u'\n'), 2);
}

} // namespace
} // namespace kx::test
