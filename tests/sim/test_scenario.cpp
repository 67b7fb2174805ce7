#include "SimBench.h"
#include "sim/ScenarioReader.h"

#include <QBuffer>
#include <QDir>
#include <gtest/gtest.h>

namespace kx::test {
namespace {

using Action = Scenario::Event::Action;

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

TEST(ScenarioReader, ShippedScenariosParse) {
    const QDir dir(QStringLiteral(KX_SCENARIO_DIR));
    const QStringList files = dir.entryList({QStringLiteral("*.scenario")}, QDir::Files);
    EXPECT_GE(files.size(), 4);
    for (const QString& file : files) {
        ScenarioReader reader;
        const auto scenario = reader.readFile(dir.filePath(file));
        ASSERT_TRUE(scenario) << reader.errorString().toStdString();
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
    const SimPlateConfig& p = scenario->plates[0];
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
    EXPECT_EQ(e[1].stance, PlateLoads::Stance::Swaying);
    EXPECT_EQ(e[1].y, 0.178); // the middle of the top
    EXPECT_EQ(std::pair(e[3].fault, e[3].afterSamples),
              std::pair(PlateFault::BufferOverRun, qint64(500)));
    EXPECT_EQ(e[4].operation, "SetGageVoltage");
    EXPECT_EQ(e[4].message, "bridge supply fault");
}

// Malformed files and values the simulator could not make sense of later are refused where
// they stand.
TEST(ScenarioReader, MalformedFilesAndValuesBeyondPhysicalSenseAreRejectedNamingTheLine) {
    const QString plate = QStringLiteral("[plate a]\nserial = 1\n");
    const struct {
        QString text;
        int line;
        const char* says;
    } cases[] = {
        {"serial = 1\n", 1, "before any section"},
        {"[plates]\n", 1, "Unknown section"},
        {plate + "colour = red\n", 3, "Unknown key \"colour\""},
        {"\n\n[plate a]\nseed = 3\n[events]\n", 3, "has no serial"},
        {plate + "matrix = 1 2 3; 2 4 6; 0 0 1\n", 3, "singular"},
        {plate + "[events]\nat 5 s: dance on 1\n", 4, "Cannot understand"},
        {plate + "[events]\n# ok\nat 5 s: unplug 2\n", 5, "No plate with serial 2"},
        {plate + "modulator rate = 999\n", 3, "between 1000 and 200000"},
        {plate + "sampling frequency = 2000\nmodulator rate = 1600\n", 4, "1600 Hz modulator"},
        {plate + "modulator rate = 3200\nsampling frequency = 0.3\n", 4, "0.4 to 2560 Hz"},
        {plate + "sampling frequency = 60000\n", 3, "not at 60000 Hz"},
        {plate + "gage voltage = 10.5\n", 3, "between -10 and 10"},
        {plate + "noise = 2e6\n", 3, "Noise (codes)"},
        {plate + "matrix = 1e7 0 0; 0 1 0; 0 0 1\n", 3, "beyond"},
        {plate + "nonlinearity = 6\n", 3, "between 0 and 5"},
        {plate + "placement scatter = -1\n", 3, "placement scatter"},
        {plate + "channel noise = 1 1 1\n", 3, "four levels"},
        {plate + "imperfections = some\n", 3, "none"},
        {plate + "[site]\ngravity = 0.5\n", 4, "Gravity"},
        {plate + "[site]\nambient = 400\n", 4, "ambient temperature"},
        {plate + "[events]\nat 1 s: load 6000 kg at (0, 0) on 1\n", 4, "A load (kg)"},
        {plate + "[events]\nat 1 s: load 25 kg at (0.5, 0) on 1\n", 4, "off the plate's top"},
        {plate + "[events]\nat 1 s: person 70 kg at (0, -0.3) on 1\n", 4, "off the plate's top"},
        {plate + "[events]\nat 1 s: person 0.5 kg on 1\n", 4, "A person (kg)"},
        {plate + "[events]\nat 1 s: clipping on 1 after 99999999999999999999 samples\n", 4,
         "more than a count holds"},
    };
    for (const auto& c : cases) {
        QString error;
        EXPECT_FALSE(parse(c.text, &error)) << c.text.toStdString();
        EXPECT_TRUE(error.startsWith(QStringLiteral("Line %1: ").arg(c.line)))
            << c.text.toStdString() << " -> " << error.toStdString();
        EXPECT_TRUE(error.contains(QLatin1String(c.says))) << error.toStdString();
    }
    // The edges themselves are fine: the slowest and fastest rates, the corners of the top.
    EXPECT_TRUE(parse(plate + QStringLiteral("modulator rate = 3200\nsampling frequency = 0.4\n"
                                             "[events]\nat 1 s: load 5000 kg at (0.4064, "
                                             "-0.2032) on 1\nat 2 s: clipping on 1 after "
                                             "9223372036854775807 samples\n")));
    ScenarioReader reader;
    EXPECT_FALSE(reader.readFile(QStringLiteral("/nonexistent/bench.scenario")));
    EXPECT_TRUE(reader.errorString().startsWith("/nonexistent/bench.scenario: "));
}

TEST(ScenarioReader, ImperfectionsAreReadInTheUnitsATechnicianUses) {
    const struct {
        const char* line;
        double SimImperfections::*field;
        double value;
    } keys[] = {{"placement scatter = 2.5", &SimImperfections::placementScatter, 0.0025},
                {"nonlinearity = 0.05", &SimImperfections::nonlinearity, 0.0005},
                {"hysteresis = 0.01", &SimImperfections::hysteresis, 0.0001},
                {"creep = 0.1", &SimImperfections::creep, 0.001},
                {"top error = 1.2", &SimImperfections::topError, 0.0012},
                {"flicker corner = 4", &SimImperfections::flickerCorner, 4},
                {"thermal zero = 20", &SimImperfections::thermalZero, 2e-5},
                {"self-heating = 0.1", &SimImperfections::selfHeating, 0.1},
                {"excitation settling = 60", &SimImperfections::excitationSettling, 60},
                {"frequency transient = 250", &SimImperfections::frequencyTransientCodes, 250},
                {"frequency settling = 3", &SimImperfections::frequencySettling, 3},
                {"gage dac step = 2.5", &SimImperfections::gageDacStep, 0.0025}};
    QString text = QStringLiteral("[plate ideal]\nserial = 1\nimperfections = none\nhum = 12\n"
                                  "[plate real]\nserial = 2\nchannel noise = 1, 2, 3, 0.5\n");
    for (const auto& key : keys)
        text += QLatin1String(key.line) + QLatin1Char('\n');
    const auto scenario = parse(text);
    ASSERT_TRUE(scenario);
    ASSERT_EQ(scenario->plates.size(), 2);
    const SimImperfections& ideal = scenario->plates[0].imperfections;
    EXPECT_EQ(ideal.placementScatter, 0.0);
    EXPECT_EQ(ideal.flickerCorner, 0.0);
    EXPECT_EQ(ideal.humCodes, 12.0); // a key after "none" switches one back on
    const SimImperfections& real = scenario->plates[1].imperfections;
    for (const auto& key : keys)
        EXPECT_DOUBLE_EQ(real.*key.field, key.value) << key.line;
    EXPECT_EQ(real.channelNoise[2], 3.0);
    EXPECT_EQ(real.humCodes, SimImperfections{}.humCodes);
}

// Without a seed line each plate draws its own hidden matrix: from its serial number, the
// same on every run.
TEST(ScenarioReader, APlateWithoutASeedTakesOneFromItsSerialNumber) {
    const QString text = QStringLiteral("[plate a]\nserial = 30577\n[plate b]\nserial = 30578\n"
                                        "[plate c]\nserial = QC-7\n[plate d]\nserial = QC-8\n"
                                        "[plate e]\nserial = QC-9\nseed = 30577\n");
    const auto scenario = parse(text);
    ASSERT_TRUE(scenario);
    QList<quint64> seeds;
    for (const SimPlateConfig& plate : scenario->plates)
        seeds << plate.seed;
    EXPECT_EQ(seeds[0], 30577u);
    EXPECT_EQ(seeds[1], 30578u);
    EXPECT_NE(seeds[2], seeds[3]);
    EXPECT_EQ(seeds[4], 30577u) << "a seed line wins";
    EXPECT_EQ(parse(text)->plates[2].seed, seeds[2]);

    SimBench bench(*scenario);
    EXPECT_NE(bench.plate("QC-7").truth().trueMatrix, bench.plate("QC-8").truth().trueMatrix);
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
    SimPlate& plate = bench.plate("20418");
    ForcesRecorder recorder(plate, bench.clock);
    EventLog log(bench.driver, bench.clock, &plate);

    plate.StartAcquisition(true, false, true, false, true); // 100 Hz from 0 s
    bench.clock.advance(6000);
    ASSERT_EQ(recorder.samples.size(), 600u);
    const auto fzAt = [&](size_t i) { return recorder.samples[i].forces[0]; };
    EXPECT_NEAR(fzAt(90), 0.0f, 2.0f);
    EXPECT_NEAR(fzAt(150), -50 * 9.796878f, 5.0f);
    EXPECT_NEAR(fzAt(290), 0.0f, 2.0f);
    // The time-out, armed at 3 s past 150 samples, is left to the next acquisition; the unplug
    // lists the remaining plate again, the replug lists both.
    plate.StartAcquisition(true, false, true, false, true);
    bench.clock.advance(2000);
    EXPECT_EQ(log.events,
              (QStringList{"removed 11093", "begin", "arrived 20418", "done", "begin",
                           "arrived 20418", "arrived 11093", "done", "ReadTimeout at 7500"}));
}

} // namespace
} // namespace kx::test
