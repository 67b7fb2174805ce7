#include "SimBench.h"
#include "sim/ScenarioReader.h"

#include <QBuffer>
#include <QDir>
#include <gtest/gtest.h>

using kx::PlateDevice;
using kx::PlateFault;
using kx::Scenario;
using kx::ScenarioReader;
using Action = kx::Scenario::Event::Action;
using kx::test::ForcesRecorder;
using kx::test::SimBench;

namespace {

std::optional<Scenario> parse(const QString& text, QString* error = nullptr) {
    QByteArray bytes = text.toUtf8();
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    ScenarioReader reader;
    std::optional<Scenario> scenario = reader.read(buffer);
    if (error)
        *error = reader.errorString();
    return scenario;
}

} // namespace

TEST(ScenarioReader, ShippedScenariosParse) {
    const QDir dir(QStringLiteral(KX_SCENARIO_DIR));
    const QStringList files = dir.entryList({QStringLiteral("*.scenario")}, QDir::Files);
    EXPECT_GE(files.size(), 4);
    for (const QString& file : files) {
        ScenarioReader reader;
        const auto scenario = reader.readFile(dir.filePath(file));
        EXPECT_TRUE(scenario) << reader.errorString().toStdString();
        EXPECT_FALSE(scenario->plates.isEmpty()) << file.toStdString();
    }
}

TEST(ScenarioReader, ReadsPlatesSiteAndEvents) {
    const auto scenario = parse(QStringLiteral(R"(# a bench
[site]
gravity = 9.81
ambient = 19.5

[plate one]
serial = P-1         # inline comment
firmware = 1.12
seed = 99
noise = 80.5
matrix = -1000 -1000 -1000; 300, 300, -700; -500 500 0
gage voltage = -5
sampling frequency = 250
calibrated = no
plugged = no

[events]
at 1.5 s: load 25 kg at (0.1, -0.2) on P-1
at 2 min 3 s: person 70 kg swaying on p-1
At 250 MS: unplug P-1
at 6 s: buffer overrun on P-1 after 500 samples
at 9 s: fail SetGageVoltage on P-1 with "bridge supply fault"
at 1 h: recover P-1
)"));
    ASSERT_TRUE(scenario);
    EXPECT_EQ(scenario->gravity, 9.81);
    ASSERT_EQ(scenario->plates.size(), 1);
    const kx::SimPlateConfig& p = scenario->plates[0];
    EXPECT_EQ(p.serial, "P-1");
    EXPECT_EQ(p.firmwareMajor * 100 + p.firmwareMinor, 112);
    EXPECT_EQ(p.seed, 99u);
    EXPECT_EQ(p.noiseCodes, 80.5);
    ASSERT_TRUE(p.trueMatrix);
    EXPECT_EQ((*p.trueMatrix)[1][2], -700.0);
    EXPECT_EQ(p.gageVoltage, -5.0);
    EXPECT_EQ(p.ambientTemperature, 19.5);
    EXPECT_FALSE(p.calibrated || p.plugged);

    const QList<Scenario::Event>& e = scenario->events;
    const std::pair<qint64, Action> expected[] = {
        {1500, Action::PlaceWeight}, {123000, Action::PlacePerson}, {250, Action::Unplug},
        {6000, Action::Fault},       {9000, Action::FailOperation}, {3600000, Action::Recover}};
    ASSERT_EQ(e.size(), 6);
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(std::pair(e[i].atMs, e[i].action), expected[i]) << i;
        EXPECT_EQ(e[i].line, 18 + i) << i;
        EXPECT_EQ(e[i].serial, "P-1") << i;
    }
    EXPECT_EQ(std::tuple(e[0].kilograms, e[0].x, e[0].y), std::tuple(25.0, 0.1, -0.2));
    EXPECT_EQ(e[1].stance, kx::PlateLoads::Stance::Swaying);
    EXPECT_EQ(e[1].y, 0.178); // the middle of the top
    EXPECT_EQ(std::pair(e[3].fault, e[3].afterSamples),
              std::pair(PlateFault::BufferOverRun, qint64(500)));
    EXPECT_EQ(e[4].operation, "SetGageVoltage");
    EXPECT_EQ(e[4].message, "bridge supply fault");
}

TEST(ScenarioReader, MalformedFilesAreRejectedNamingTheLine) {
    const struct {
        const char* text;
        int line;
        const char* says;
    } cases[] = {
        {"serial = 1\n", 1, "before any section"},
        {"[plates]\n", 1, "Unknown section"},
        {"[plate a]\nserial = 1\ncolour = red\n", 3, "Unknown key \"colour\""},
        {"\n\n[plate a]\nseed = 3\n[events]\n", 3, "has no serial"},
        {"[plate a]\nserial = 1\nmatrix = 1 2 3; 2 4 6; 0 0 1\n", 3, "singular"},
        {"[plate a]\nserial = 1\n[events]\nat 5 s: dance on 1\n", 4, "Cannot understand"},
        {"[plate a]\nserial = 1\n[events]\n# ok\nat 5 s: unplug 2\n", 5, "No plate with serial 2"},
    };
    for (const auto& c : cases) {
        QString error;
        EXPECT_FALSE(parse(QString::fromLatin1(c.text), &error)) << c.text;
        EXPECT_TRUE(error.startsWith(QStringLiteral("Line %1: ").arg(c.line)))
            << c.text << " -> " << error.toStdString();
        EXPECT_TRUE(error.contains(QLatin1String(c.says))) << error.toStdString();
    }
    ScenarioReader reader;
    EXPECT_FALSE(reader.readFile(QStringLiteral("/nonexistent/bench.scenario")));
    EXPECT_TRUE(reader.errorString().startsWith("/nonexistent/bench.scenario: "));
}

TEST(Scenario, EventsHappenAtTheirTimes) {
    auto scenario = parse(QStringLiteral(R"([plate a]
serial = 20418
[plate b]
serial = 11093
[events]
at 1 s: load 50 kg at (0, 0.2) on 20418
at 2 s: unload 20418
at 3 s: read time-out on 20418 after 150 samples
at 4 s: unplug 11093
at 5 s: plug in 11093
)"));
    ASSERT_TRUE(scenario);
    SimBench bench(*scenario);
    kx::SimPlate& plate = bench.plate("20418");
    ForcesRecorder recorder(plate, bench.clock);
    int timeouts = 0;
    QObject::connect(&plate, &PlateDevice::ReadTimeout, &recorder.context, [&] { ++timeouts; });
    QStringList list;
    QObject::connect(&bench.driver, &kx::PlateDriver::PlateRemoved, &recorder.context,
                     [&](const QString&, const QString& serial) { list << "removed " + serial; });
    QObject::connect(&bench.driver, &kx::PlateDriver::PlateArrived, &recorder.context,
                     [&](const QString&, const QString& serial) { list << "arrived " + serial; });

    plate.StartAcquisition(true, false, true, false, true); // 100 Hz from 0 s
    bench.clock.advance(6000);
    ASSERT_EQ(recorder.samples.size(), 600u);
    const auto fzAt = [&](size_t i) { return recorder.samples[i].forces[0]; };
    EXPECT_NEAR(fzAt(90), 0.0f, 2.0f);
    EXPECT_NEAR(fzAt(150), -50 * 9.80665f, 5.0f);
    EXPECT_NEAR(fzAt(290), 0.0f, 2.0f);
    EXPECT_EQ(timeouts, 0); // armed at 3 s, past 150 samples: left to the next acquisition
    plate.StartAcquisition(true, false, true, false, true);
    bench.clock.advance(2000);
    EXPECT_EQ(timeouts, 1);
    // The unplug lists the remaining plate again; the replug lists both.
    EXPECT_EQ(list,
              (QStringList{"removed 11093", "arrived 20418", "arrived 20418", "arrived 11093"}));
}
