// kxplate run as a process on scenario files: each plate command's output and exit status.

#include "KxplateProcess.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <cmath>

namespace kx::test {
namespace {

using Kxplate = KxplateProcess;

QJsonObject jsonOf(const QString& text) {
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8(), &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << text.toStdString();
    return document.object();
}

constexpr char ThreePlates[] = R"(
[plate new]
serial = 30577
firmware = 1.4
seed = 30577
calibrated = no
gage voltage = 2.5
sampling frequency = 200
[plate calibrated]
serial = 20418
firmware = 2.3
seed = 20418
[plate silent]
serial = 40001
seed = 4
[events]
at 0 s: not responding on 40001
)";

TEST_F(Kxplate, ListShowsEachPlateAndNamesOneThatDoesNotAnswer) {
    const QString scenario = write(QStringLiteral("three.scenario"), ThreePlates);
    const Run text = run({QStringLiteral("--scenario"), scenario, QStringLiteral("list")});
    EXPECT_EQ(text.exitCode, 3);
    const QStringList lines = text.out.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 3) << text.out.toStdString();
    EXPECT_EQ(lines[1].simplified(), QStringLiteral("30577 1.4 no 200.000 2.500"));
    EXPECT_EQ(lines[2].simplified(), QStringLiteral("20418 2.3 yes 100.000 5.000"));
    ASSERT_EQ(text.errorLines().size(), 1) << text.err.toStdString();
    EXPECT_TRUE(text.errorLines()[0].contains(QLatin1String("does not respond")));

    const Run json = run(
        {QStringLiteral("list"), QStringLiteral("--json"), QStringLiteral("--scenario"), scenario});
    EXPECT_EQ(json.exitCode, 3);
    const QJsonObject listed = jsonOf(json.out);
    const QJsonArray plates = listed[QStringLiteral("plates")].toArray();
    ASSERT_EQ(plates.size(), 2);
    const QJsonObject first = plates[0].toObject();
    EXPECT_EQ(first[QStringLiteral("serial")].toString(), QStringLiteral("30577"));
    EXPECT_FALSE(first[QStringLiteral("calibrated")].toBool());
    EXPECT_EQ(first[QStringLiteral("samplingFrequency")].toDouble(), 200.0);
    EXPECT_EQ(first[QStringLiteral("excitation")].toDouble(), 2.5);
    EXPECT_TRUE(plates[1].toObject()[QStringLiteral("calibrated")].toBool());
    EXPECT_EQ(listed[QStringLiteral("notResponding")].toArray().size(), 1);
}

TEST_F(Kxplate, InfoTellsAPlateAndRefusesOneNotConnected) {
    const Run current =
        run({QStringLiteral("info"), QStringLiteral("20418"), QStringLiteral("--json")});
    ASSERT_EQ(current.exitCode, 0) << current.err.toStdString();
    const QJsonObject info = jsonOf(current.out);
    EXPECT_EQ(info[QStringLiteral("firmware")].toString(), QStringLiteral("2.3"));
    const QJsonObject converter = info[QStringLiteral("converter")].toObject();
    EXPECT_EQ(converter[QStringLiteral("current")]
                  .toObject()[QStringLiteral("samplingFrequency")]
                  .toDouble(),
              100.0);
    EXPECT_EQ(
        converter[QStringLiteral("default")].toObject()[QStringLiteral("gageVoltage")].toDouble(),
        5.0);
    EXPECT_EQ(info[QStringLiteral("matrix")].toArray().size(), 3);
    EXPECT_FALSE(info[QStringLiteral("serviceRecord")]
                     .toObject()[QStringLiteral("calibration")]
                     .toObject()[QStringLiteral("operator")]
                     .toString()
                     .isEmpty());

    // Firmware 1.x keeps no service record.
    const Run older = run({QStringLiteral("info"), QStringLiteral("11093")});
    EXPECT_EQ(older.exitCode, 0);
    EXPECT_TRUE(older.out.simplified().contains(QLatin1String("Firmware Version 1.7")));
    EXPECT_FALSE(older.out.contains(QLatin1String("Max Device Temperature")));

    const Run missing = run({QStringLiteral("info"), QStringLiteral("99999")});
    EXPECT_EQ(missing.exitCode, 3);
    EXPECT_TRUE(missing.out.isEmpty());
    ASSERT_EQ(missing.errorLines().size(), 1);
    EXPECT_TRUE(missing.errorLines()[0].startsWith(QLatin1String("kxplate: plate 99999: ")));
    EXPECT_TRUE(missing.errorLines()[0].contains(QLatin1String("20418, 11093")));
}

TEST_F(Kxplate, UsageErrorsAreOneLineAndStatusTwo) {
    const QString out = path(QStringLiteral("out.txt"));
    const struct {
        QStringList arguments;
        const char* named;
    } cases[] = {
        {{}, "no command"},
        {{QStringLiteral("weigh")}, "weigh"},
        {{QStringLiteral("capture"), QStringLiteral("20418"), QStringLiteral("-o"), out},
         "--seconds"},
        {{QStringLiteral("capture"), QStringLiteral("20418"), QStringLiteral("--seconds"),
          QStringLiteral("1"), QStringLiteral("-o"), out, QStringLiteral("--frequency"),
          QStringLiteral("5")},
         "--frequency"},
        {{QStringLiteral("zero"), QStringLiteral("20418"), QStringLiteral("--tare")}, "tare"},
        {{QStringLiteral("fit")}, "FILE.cal"},
    };
    for (const auto& c : cases) {
        const Run r = run(c.arguments);
        EXPECT_EQ(r.exitCode, 2) << c.named;
        EXPECT_TRUE(r.out.isEmpty()) << c.named;
        EXPECT_EQ(r.err.count(u'\n'), 1) << r.err.toStdString();
        EXPECT_TRUE(r.err.contains(QLatin1String(c.named))) << r.err.toStdString();
    }
    const Run help = run({QStringLiteral("capture"), QStringLiteral("--help")});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.out.startsWith(QLatin1String("Usage: kxplate capture SERIAL")));
}

// The capture file as the signals display writes it: the header, a "%NaN" line opening the
// segment, then one line per sample at k / f with six decimals, CR LF throughout, and the
// centre of pressure of the loaded plate where the weight stands.
TEST_F(Kxplate, CaptureWritesTheSignalsDisplaysFileFormat) {
    const QString scenario = write(QStringLiteral("weight.scenario"), R"(
[plate]
serial = 20418
seed = 20418
imperfections = none
[events]
at 0 s: load 20 kg at (0.1, 0.2) on 20418
)");
    const QString file = path(QStringLiteral("capture.txt"));
    const Run r =
        run({QStringLiteral("--scenario"), scenario, QStringLiteral("capture"),
             QStringLiteral("20418"), QStringLiteral("--seconds"), QStringLiteral("1"),
             QStringLiteral("--frequency"), QStringLiteral("200"), QStringLiteral("-o"), file});
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    EXPECT_TRUE(r.out.isEmpty());
    QFile captured(file);
    ASSERT_TRUE(captured.open(QIODevice::ReadOnly));
    const QByteArray bytes = captured.readAll();
    EXPECT_EQ(bytes.count('\n'), bytes.count("\r\n"));
    const QList<QByteArray> lines = bytes.split('\n');
    ASSERT_GT(lines.size(), 190);
    EXPECT_EQ(lines[0], "%Time(s), V1, V2, V3, Fz, Mx, My, CoPx, CoPy\r");
    EXPECT_EQ(lines[1], "%NaN, NaN, NaN, NaN, NaN, NaN, NaN, NaN, NaN\r");
    const qsizetype samples = lines.size() - 3; // header, separator, and the empty end
    EXPECT_NEAR(double(samples), 200.0, 10.0);
    const QRegularExpression value(QStringLiteral("^-?\\d+\\.\\d{6}$"));
    for (qsizetype k = 1; k <= samples; ++k) {
        const QStringList fields =
            QString::fromLatin1(lines[k + 1].chopped(1)).split(QStringLiteral(", "));
        ASSERT_EQ(fields.size(), 9) << k;
        EXPECT_EQ(fields[0], QString::number(double(k) / 200.0, 'f', 6)) << k;
        for (const QString& field : fields)
            EXPECT_TRUE(value.match(field).hasMatch()) << field.toStdString();
        const double fz = fields[4].toDouble();
        EXPECT_NEAR(fz, -20 * 9.796878, 2.0) << k;
        EXPECT_NEAR(fields[7].toDouble(), -fields[6].toDouble() / fz, 2e-6) << k;
        EXPECT_NEAR(fields[8].toDouble(), fields[5].toDouble() / fz, 2e-6) << k;
        EXPECT_NEAR(fields[7].toDouble(), 0.1, 0.005) << k;
        EXPECT_NEAR(fields[8].toDouble(), 0.2, 0.005) << k;
    }
}

TEST_F(Kxplate, ATimeOutMidCaptureIsADeviceErrorAndKeepsTheRowsSoFar) {
    const QString scenario = write(QStringLiteral("cable.scenario"), R"(
[plate]
serial = 20418
seed = 20418
[events]
at 0 s: read time-out on 20418 after 150 samples
)");
    const QString file = path(QStringLiteral("cut.txt"));
    const Run r = run({QStringLiteral("--scenario"), scenario, QStringLiteral("capture"),
                       QStringLiteral("20418"), QStringLiteral("--seconds"), QStringLiteral("10"),
                       QStringLiteral("-o"), file});
    EXPECT_EQ(r.exitCode, 3);
    EXPECT_EQ(r.errorLines(),
              QStringList{QStringLiteral(
                  "kxplate: plate 20418: Error: Time-out while reading from the platform!")});
    QFile captured(file);
    ASSERT_TRUE(captured.open(QIODevice::ReadOnly));
    EXPECT_EQ(captured.readAll().count('\n'), 2 + 150);
}

TEST_F(Kxplate, SigtermEndsACaptureAndSavesIt) {
    const QString file = path(QStringLiteral("stopped.txt"));
    QProcess process;
    start(process, {QStringLiteral("capture"), QStringLiteral("20418"), QStringLiteral("--seconds"),
                    QStringLiteral("60"), QStringLiteral("-o"), file});
    process.setReadChannel(QProcess::StandardError);
    QByteArray progress;
    while (!progress.contains("capturing") && process.waitForReadyRead(10000))
        progress += process.readAllStandardError();
    ASSERT_TRUE(progress.contains("capturing")) << "no progress before the time limit";
    process.terminate();
    const Run r = finish(process);
    EXPECT_EQ(r.exitCode, 128 + 15);
    EXPECT_TRUE(r.errorLines().isEmpty()) << r.err.toStdString();
    QFile captured(file);
    ASSERT_TRUE(captured.open(QIODevice::ReadOnly));
    // The first progress report comes after a second at 100 Hz.
    EXPECT_GE(captured.readAll().count('\n'), 2 + 100);
}

// The read-outs of the zero dialog: volts = codes × 10 / 2^24 whatever the converter, and the
// SNR against 2^24 codes from firmware 2 on, 2^23 before.
TEST_F(Kxplate, ZeroGivesTheZeroDialogsReadouts) {
    const struct {
        const char* serial;
        double range;
        double hertz;
    } plates[] = {{"20418", 16777216.0, 100}, {"11093", 8388608.0, 64}};
    for (const auto& plate : plates) {
        const Run r =
            run({QStringLiteral("zero"), QLatin1String(plate.serial), QStringLiteral("--seconds"),
                 QStringLiteral("0.5"), QStringLiteral("--json")});
        ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
        const QJsonObject zero = jsonOf(r.out);
        EXPECT_EQ(zero[QStringLiteral("samples")].toInt(), std::lround(0.5 * plate.hertz));
        EXPECT_FALSE(zero[QStringLiteral("written")].toBool());
        const QJsonArray channels = zero[QStringLiteral("channels")].toArray();
        ASSERT_EQ(channels.size(), 4);
        for (const QJsonValue& value : channels) {
            const QJsonObject c = value.toObject();
            const double codes = c[QStringLiteral("averageCodes")].toDouble();
            const double noise = c[QStringLiteral("rmsNoiseCodes")].toDouble();
            ASSERT_GT(noise, 0);
            EXPECT_DOUBLE_EQ(c[QStringLiteral("averageVolts")].toDouble(), codes * 10 / 16777216.0);
            EXPECT_NEAR(c[QStringLiteral("snrDb")].toDouble(), 20 * std::log10(plate.range / noise),
                        1e-9);
        }
    }
}

TEST_F(Kxplate, NoiseRunsTheProfilesPlanIntoTheResultFile) {
    const QString profile = write(QStringLiteral("short.ini"), "[Noise]\r\n"
                                                               "Frequencies=2\r\n"
                                                               "Excitations=1\r\n"
                                                               "Excitation 0=2.5\r\n"
                                                               "Test Duration=0.2\r\n"
                                                               "Initial Delay=0\r\n"
                                                               "Frequency Settling Time=0\r\n");
    const Run r = run(
        {QStringLiteral("noise"), QStringLiteral("20418"), QStringLiteral("--profile"), profile});
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    EXPECT_EQ(r.out.count(u'\n'), 2); // a line per test
    QFile results(environment.documentsFolder() + QStringLiteral("/20418_Noise_1.TXT"));
    ASSERT_TRUE(results.open(QIODevice::ReadOnly));
    const QByteArray line = results.readAll();
    ASSERT_TRUE(line.endsWith("\r\n"));
    EXPECT_EQ(line.count('\n'), 1); // a line per excitation
    // The excitation, then each frequency with its channels, in print zones of 14 columns.
    EXPECT_TRUE(line.startsWith("2.500 "));
    EXPECT_EQ(line.mid(14, 7), "032.000");
    EXPECT_EQ(line.mid(14 * 11, 7), "064.000");

    const Run missing = run({QStringLiteral("noise"), QStringLiteral("20418"),
                             QStringLiteral("--profile"), path(QStringLiteral("none.ini"))});
    EXPECT_EQ(missing.exitCode, 4);
    ASSERT_EQ(missing.errorLines().size(), 1);
    EXPECT_TRUE(missing.errorLines()[0].contains(QLatin1String("none.ini")));
}

// At --speed 1000 a plan of ten and a half minutes runs through within the process's time limit
// (at real time it could not), and its log shows every wait of the plan went by on the
// run's own calendar.
TEST_F(Kxplate, NoiseAtSpeedRunsThePlanThroughInItsOwnTime) {
    const QString profile = write(QStringLiteral("slow.ini"), "[Noise]\r\n"
                                                              "Frequencies=2\r\n"
                                                              "Excitations=1\r\n"
                                                              "Excitation 0=2.5\r\n"
                                                              "Test Duration=10\r\n"
                                                              "Initial Delay=600\r\n"
                                                              "Frequency Settling Time=10\r\n");
    const QString results = path(QStringLiteral("fast.TXT"));
    const Run r = run({QStringLiteral("--speed"), QStringLiteral("1000"), QStringLiteral("noise"),
                       QStringLiteral("20418"), QStringLiteral("--profile"), profile,
                       QStringLiteral("-o"), results});
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    EXPECT_EQ(r.out.count(u'\n'), 2);
    QFile log(path(QStringLiteral("fast.log")));
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    const QStringList entries =
        QString::fromUtf8(log.readAll()).split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
    ASSERT_EQ(entries.size(), 2) << "the start and the end";
    const auto at = [](const QString& entry) {
        return QDateTime::fromString(entry.left(19), QStringLiteral("yyyy-MM-dd hh:mm:ss"));
    };
    // 600 s, a 10 s test, 10 s settling, a 10 s test; whole seconds on the calendar.
    EXPECT_GE(at(entries.front()).secsTo(at(entries.back())), 629);
}

} // namespace
} // namespace kx::test
