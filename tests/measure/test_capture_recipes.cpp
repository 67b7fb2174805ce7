// The README's one-line loaders of a capture file, run as written on a capture taken from a
// simulated plate: a person standing on it, then the plate empty.

#include "JournalBytes.h"
#include "TempEnvironment.h"
#include "measure/CaptureFileWriter.h"
#include "sim/Scenario.h"
#include "sim/SimDriver.h"
#include "sim/SimPlate.h"
#include "support/ManualClock.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTextStream>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

using namespace kx;

namespace {

constexpr float MinFz = -2.5f;
const QString CaptureName = QStringLiteral("capture.txt");

// The first indented (code) line of the README that contains `marker`, or an empty string.
QString readmeCodeLine(const QString& marker) {
    QFile readme(QStringLiteral(KX_README));
    if (!readme.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    QTextStream in(&readme);
    while (!in.atEnd()) {
        const QString line = in.readLine();
        if (line.startsWith(QLatin1String("    ")) && line.contains(marker))
            return line.trimmed();
    }
    return {};
}

// What a numerical package should find in the file: its shape, the NaNs of the unloaded
// rows' centre of pressure, and each column's sum over its numbers, within `slack`: a value
// is written with six decimals from the single it is, so it may be off by half a millionth
// and by the single's own precision.
struct Loaded {
    int rows = 0;
    int nans = 0;
    std::array<double, 9> sums{};
    std::array<double, 9> slack{};

    void add(std::size_t column, double value) {
        sums[column] += value;
        slack[column] += 0.5e-6 + std::abs(value) * std::numeric_limits<float>::epsilon();
    }
};

Loaded expectedFrom(const std::vector<CaptureRow>& table, double sampleFrequency) {
    Loaded expected;
    qint64 k = 0;
    for (const CaptureRow& row : table) {
        if (row.isSeparator()) {
            k = 0;
            continue;
        }
        ++k;
        ++expected.rows;
        const std::array<double, 7> values{double(k) / sampleFrequency,
                                           row.volts[0],
                                           row.volts[1],
                                           row.volts[2],
                                           row.forces[0],
                                           row.forces[1],
                                           row.forces[2]};
        for (std::size_t column = 0; column < values.size(); ++column)
            expected.add(column, values[column]);
        if (row.postural[0] < MinFz) {
            expected.add(7, row.postural[1]);
            expected.add(8, row.postural[2]);
        } else {
            expected.nans += 2;
        }
    }
    return expected;
}

class CaptureRecipes : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        environment = new test::TempEnvironment;
        ManualClock clock;
        SimDriver driver(clock);
        Scenario::defaults().applyTo(driver);
        driver.OpenDevices(PlateVendorId, PlateProductId1, PlateProductId2);
        clock.settle();
        SimPlate& plate = *driver.plate(QStringLiteral("20418"));
        std::vector<CaptureRow> table;
        QObject::connect(&plate, &PlateDevice::TestDone,
                         [&](qint32, const QList<Float3>& forces, const QList<Float3>& volts) {
                             table.push_back(CaptureRow{});
                             for (qsizetype i = 0; i < std::min(forces.size(), volts.size()); ++i)
                                 table.push_back(captureRowOf(forces[i], volts[i], MinFz));
                         });
        plate.FlushData();
        plate.CalibrateSelf();
        plate.StartAcquisition(true, false, true, false, true);
        const auto capture = [&](int ms) {
            plate.StartCapture(true);
            clock.advance(ms);
            plate.StopCapture();
            clock.settle();
        };
        plate.loads().placePerson(72.5, 0.03, -0.02, PlateLoads::Stance::Swaying, plate.now());
        clock.advance(1000);
        capture(500);
        plate.loads().removeAll(plate.now());
        clock.advance(1000);
        capture(300);
        plate.StopAcquisition();

        const float frequency = plate.SampleFrequency(Which::Current);
        test::JournalInMemory journal(test::JournalBytes().rows(table).bytes);
        ASSERT_TRUE(journal.opened);
        CaptureFileWriter writer(journal.reader, frequency, MinFz);
        ASSERT_TRUE(writer.save(environment->path() + u'/' + CaptureName));
        expected = expectedFrom(table, frequency);
        ASSERT_GT(expected.rows, 60);
        ASSERT_GT(expected.nans, 0);
    }
    static void TearDownTestSuite() {
        delete environment;
        environment = nullptr;
    }

    // Runs `program` in the capture's folder and reads what it printed: rows, columns and
    // NaNs on the first line, then each column's sum over its numbers.
    static void expectLoaded(const QString& interpreter, const QStringList& arguments) {
        QProcess process;
        process.setWorkingDirectory(environment->path());
        process.start(interpreter, arguments);
        ASSERT_TRUE(process.waitForFinished(60'000));
        ASSERT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
        const QStringList printed =
            QString::fromUtf8(process.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
        ASSERT_EQ(printed.size(), 1 + 9) << printed.join(u'|').toStdString();
        EXPECT_EQ(printed[0].simplified(),
                  QStringLiteral("%1 9 %2").arg(expected.rows).arg(expected.nans));
        for (std::size_t column = 0; column < 9; ++column) {
            EXPECT_NEAR(printed[1 + qsizetype(column)].toDouble(), expected.sums[column],
                        expected.slack[column])
                << "column " << column + 1;
        }
    }

    static inline test::TempEnvironment* environment = nullptr;
    static inline Loaded expected;
};

TEST_F(CaptureRecipes, NumpyLoaderReadsEverySampleAndColumn) {
    // The system's interpreter first: that is the one Debian's python3-numpy serves.
    QString python = QStandardPaths::findExecutable(QStringLiteral("python3"), {"/usr/bin"});
    if (python.isEmpty())
        python = QStandardPaths::findExecutable(QStringLiteral("python3"));
    if (python.isEmpty())
        GTEST_SKIP() << "python3 is not installed";
    const QString loader = readmeCodeLine(QStringLiteral("numpy.loadtxt("));
    ASSERT_TRUE(loader.contains(CaptureName)) << "README: " << loader.toStdString();
    expectLoaded(python,
                 {QStringLiteral("-c"),
                  QStringLiteral("import numpy\n") + loader +
                      QStringLiteral("\nprint(a.shape[0], a.shape[1], "
                                     "int(numpy.isnan(a).sum()))\n"
                                     "for s in numpy.nansum(a, axis=0): print('%.17g' % s)\n")});
}

TEST_F(CaptureRecipes, OctaveLoaderReadsEverySampleAndColumn) {
    const QString octave = QStandardPaths::findExecutable(QStringLiteral("octave-cli"));
    if (octave.isEmpty())
        GTEST_SKIP() << "octave-cli is not installed";
    const QString loader = readmeCodeLine(QStringLiteral("= load("));
    ASSERT_TRUE(loader.contains(CaptureName)) << "README: " << loader.toStdString();
    expectLoaded(octave,
                 {QStringLiteral("--no-gui"), QStringLiteral("--no-init-file"),
                  QStringLiteral("--quiet"), QStringLiteral("--eval"),
                  loader + QStringLiteral("\nprintf(\"%d %d %d\\n\", rows(a), columns(a), "
                                          "sum(isnan(a(:))));\n"
                                          "for j = 1:columns(a) v = a(:, j); "
                                          "printf(\"%.17g\\n\", sum(v(!isnan(v)))); end\n")});
}

} // namespace
