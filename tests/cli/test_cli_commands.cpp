// kxplate's commands in-process on a manual clock: what a process cannot show from outside,
// the plate's state after a command and the course of a long run.

#include "CliBench.h"
#include "cli/CaptureCommand.h"
#include "cli/ListCommand.h"
#include "cli/NoiseCommand.h"
#include "cli/ZeroCommand.h"
#include "measure/CaptureJournal.h"
#include "measure/CaptureJournalReader.h"
#include "support/Folders.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <csignal>
#include <functional>
#include <memory>

namespace kx::test {
namespace {

using cli::CaptureCommand;
using cli::NoiseCommand;
using cli::ZeroCommand;

using CliCommands = CliBench;

QStringList unsavedCaptures() {
    return CaptureJournal::journalsIn(UnsavedCapturesFolder());
}

// Data rows of a capture file: all but the header and the "%NaN" separators.
qsizetype dataRows(const QList<QByteArray>& lines) {
    return std::count_if(lines.begin(), lines.end(),
                         [](const QByteArray& line) { return !line.startsWith('%'); });
}

TEST_F(CliCommands, CaptureRunsAtItsFrequencyAndGivesThePlateItsSettingsBack) {
    SimPlate& plate = this->plate("20418");
    const QString file = document(QStringLiteral("capture.txt"));
    CaptureCommand capture(console, clock, driver,
                           {.serial = QStringLiteral("20418"),
                            .seconds = 2,
                            .frequency = 250.0f,
                            .signalSet = {},
                            .output = file});
    EXPECT_EQ(run(capture, 1500), -1);
    // The signals display's resolution setting (20 bits by default) and the asked frequency.
    EXPECT_EQ(plate.Resolution(), 20);
    EXPECT_EQ(plate.SampleFrequency(Which::Current), 250.0f);
    ASSERT_EQ(advance(capture, 5000), 0);
    EXPECT_EQ(plate.Resolution(), 24);
    EXPECT_EQ(plate.SampleFrequency(Which::Current), 100.0f);
    const QList<QByteArray> rows = lines(file);
    EXPECT_NEAR(double(dataRows(rows)), 500.0, 1.0);
    EXPECT_TRUE(unsavedCaptures().isEmpty()) << "the journal goes once its file is saved";
    EXPECT_TRUE(rows[2].startsWith("0.004000, ")) << rows[2].toStdString();
    EXPECT_TRUE(errorLines().isEmpty());
}

TEST_F(CliCommands, AnInterruptedCaptureSavesWhatItHasAndRestoresThePlate) {
    const QString file = document(QStringLiteral("cut.txt"));
    CaptureCommand capture(console, clock, driver,
                           {.serial = QStringLiteral("20418"),
                            .seconds = 60,
                            .frequency = 200.0f,
                            .signalSet = {},
                            .output = file});
    EXPECT_EQ(run(capture, 1000 + 3000), -1);
    // Seconds in, the rows handed to the disk each second (a second's at least, half of them
    // more than enough) reach it, where the control panel would offer them back were the process
    // killed now.
    const QStringList journals = unsavedCaptures();
    ASSERT_EQ(journals.size(), 1);
    CaptureJournalReader journal;
    ASSERT_TRUE(eventsUntil([&] { return journal.open(journals[0]) && journal.rowCount() > 100; }))
        << journal.rowCount();
    EXPECT_EQ(journal.header().plateSerial, QStringLiteral("20418"));
    capture.interrupt(SIGINT);
    EXPECT_EQ(advance(capture, 5000), 128 + SIGINT);
    EXPECT_NEAR(double(dataRows(lines(file))), 600.0, 2.0);
    EXPECT_EQ(plate("20418").SampleFrequency(Which::Current), 100.0f);
}

// The file cannot be written where asked (its folder vanished meanwhile): the capture goes to
// the documents folder, and the status tells that the file asked for is not there.
TEST_F(CliCommands, ACaptureThatCannotBeWrittenIsRescued) {
    const QString folder = environment.path() + QStringLiteral("/usb-stick");
    ASSERT_TRUE(QDir().mkpath(folder));
    CaptureCommand capture(console, clock, driver,
                           {.serial = QStringLiteral("20418"),
                            .seconds = 1,
                            .frequency = {},
                            .signalSet = {},
                            .output = folder + QStringLiteral("/run.txt")});
    EXPECT_EQ(run(capture, 1500), -1);
    ASSERT_TRUE(QDir(folder).removeRecursively());
    EXPECT_EQ(advance(capture, 5000), 4);
    ASSERT_EQ(errorLines().size(), 1);
    EXPECT_TRUE(
        errorLines()[0].contains(document(QStringLiteral("run.txt")) + QStringLiteral(" instead")));
    EXPECT_NEAR(double(dataRows(lines(document(QStringLiteral("run.txt"))))), 100.0, 1.0);
}

TEST_F(CliCommands, ZeroWriteMakesTheAveragesThePlatesZeroValues) {
    SimPlate& plate = this->plate("11093");
    QList<double> averages;
    QObject::connect(&plate, &PlateDevice::ZeroDone,
                     [&](qint32, const ChannelValues& average, const ChannelValues&,
                         const ChannelValues&) { averages = average; });
    ZeroCommand zero(
        console, clock, driver,
        {.serial = QStringLiteral("11093"), .seconds = 1, .write = true, .json = true});
    EXPECT_EQ(run(zero, 1000), -1); // the plate found, its zero under way
    const qint32 before = plate.ZeroValue(0, Which::Current);
    ASSERT_EQ(advance(zero, 5000), 0);
    ASSERT_EQ(averages.size(), 4);
    for (int channel = 0; channel < 4; ++channel)
        EXPECT_EQ(plate.ZeroValue(channel, Which::Current), std::lround(averages[channel]))
            << channel;
    EXPECT_NE(plate.ZeroValue(0, Which::Current), before);
    const QJsonObject json = QJsonDocument::fromJson(output().toUtf8()).object();
    EXPECT_TRUE(json[QStringLiteral("written")].toBool());
    EXPECT_EQ(json[QStringLiteral("samples")].toInt(), 64);
}

// A fault ends a command where the dialog it stands for stops, and only there: the noise test
// carries on through an overrun, as its dialog does.
TEST_F(CliCommands, FaultsEndACommandWhereItsDialogStops) {
    const QString profile = environment.path() + QStringLiteral("/quick.ini");
    QFile ini(profile);
    ASSERT_TRUE(ini.open(QIODevice::WriteOnly));
    ini.write("[Noise]\nFrequencies=1\nExcitations=1\nTest Duration=3\nInitial Delay=0\n");
    ini.close();
    using Make = std::function<std::unique_ptr<cli::Command>()>;
    const struct {
        const char* name;
        Make make;
        PlateFault fault;
        int exitCode;
        const char* line;
    } cases[] = {
        {"capture",
         [&] {
             return std::make_unique<CaptureCommand>(
                 console, clock, driver,
                 CaptureCommand::Options{.serial = QStringLiteral("20418"),
                                         .seconds = 10,
                                         .frequency = {},
                                         .signalSet = {},
                                         .output = document(QStringLiteral("c.txt"))});
         },
         PlateFault::BufferOverRun, 3, "kxplate: plate 20418: Error: A/D Buffer Overrun!"},
        {"zero",
         [&] {
             return std::make_unique<ZeroCommand>(
                 console, clock, driver,
                 ZeroCommand::Options{.serial = QStringLiteral("20418"), .seconds = 10});
         },
         PlateFault::DataClipped, 3, "kxplate: plate 20418: Error: A/D Signals Clipped!"},
        {"noise",
         [&] {
             return std::make_unique<NoiseCommand>(
                 console, clock, driver,
                 NoiseCommand::Options{
                     .serial = QStringLiteral("20418"), .profile = profile, .output = {}});
         },
         PlateFault::BufferOverRun, 0, nullptr},
    };
    for (const auto& c : cases) {
        const std::unique_ptr<cli::Command> command = c.make();
        // Two seconds into the work: the plates are found after one.
        EXPECT_EQ(run(*command, 3000), -1) << c.name;
        const QStringList before = errorLines();
        driver.inject(QStringLiteral("20418"), c.fault);
        EXPECT_EQ(advance(*command, 60000), c.exitCode) << c.name;
        const QStringList after = errorLines().mid(before.size());
        EXPECT_EQ(after, c.line ? QStringList{QLatin1String(c.line)} : QStringList()) << c.name;
    }
}

// The plates are those the driver's events listed by the end of the 1000 ms wait.
class PlateListing : public CliBench {
protected:
    PlateListing()
        : CliBench(scenario()) {}
    static Scenario scenario() {
        Scenario s = Scenario::defaults();
        SimPlateConfig late = s.plates[0];
        late.serial = QStringLiteral("55555");
        late.plugged = false;
        SimPlateConfig later = late;
        later.serial = QStringLiteral("66666");
        s.plates << late << later;
        using Action = Scenario::Event::Action;
        const auto event = [](qint64 atMs, Action action, const char* serial) {
            Scenario::Event e;
            e.atMs = atMs;
            e.action = action;
            e.serial = QLatin1String(serial);
            return e;
        };
        s.events = {event(500, Action::Unplug, "11093"), event(900, Action::PlugIn, "55555"),
                    event(1100, Action::PlugIn, "66666")};
        return s;
    }
};

TEST_F(PlateListing, ListsWhatTheListEventsGaveWithinTheWait) {
    cli::ListCommand list(console, clock, driver, true);
    ASSERT_EQ(run(list), 0);
    QStringList serials;
    for (const QJsonValue& plate :
         QJsonDocument::fromJson(output().toUtf8()).object()[QStringLiteral("plates")].toArray())
        serials << plate.toObject()[QStringLiteral("serial")].toString();
    EXPECT_EQ(serials, (QStringList{QStringLiteral("20418"), QStringLiteral("55555")}));
}

} // namespace
} // namespace kx::test
