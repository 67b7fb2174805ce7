#include "../support/PrintQString.h"
#include "calibration/CalFileReader.h"
#include "calibration/CalFileWriter.h"
#include "calibration/CalibrationSettings.h"
#include "resources/StringTable.h"

#include <QBuffer>
#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>
#include <gtest/gtest.h>

namespace kx {
namespace {

namespace s = strings::calibrate;

// Sizes of the record in bytes for P points and T linearity steps, added up field by field
// from the layout: an array header is 2 bytes plus 8 per dimension.
qsizetype bytesThrough17(qsizetype p) {
    return 4 + 5 * 4 + 2 * (10 + 8 * p) + 2 * (10 + 2 * p) + 2 * (10 + 8 * p) + 2 * (18 + 32 * p) +
           3 * (18 + 24 * p);
}
qsizetype bytesThrough28(qsizetype p, qsizetype t) {
    return bytesThrough17(p) + 4 + 2 + 8 + (10 + 2 * t) + (10 + 8 * t) + 2 * (10 + 32) +
           2 * (18 + 24 * t) + (10 + 8 * t) + 4;
}
qsizetype bytesThrough34(qsizetype p, qsizetype t) {
    return bytesThrough28(p, t) + 2 * (10 + 4 * p) + 8 + (10 + 4 * t) + 2 * 6;
}
qsizetype bytesFull(qsizetype p, qsizetype t) {
    return bytesThrough34(p, t) + 8 + 4 + 4 + 8 + 8;
}

const CalEnvironment SettingsEnvironment{9.81, 0, 0, 0, 4.5};
const std::vector<float> SettingsLoads{10, 20, 20, 10};

// A record with every field set, none to its default.
CalibrationRecord sampleRecord(std::size_t pointCount) {
    CalibrationRecord r;
    r.pointRadius = 0.025f;
    r.plateXLeft = -0.406f;
    r.plateXRight = 0.406f;
    r.plateYTop = 0.559f;
    r.plateYBottom = -0.203f;
    const auto defaults = CalibrationSettings::defaultPoints();
    for (std::size_t i = 0; i < pointCount; ++i) {
        CalPoint p;
        const double k = static_cast<double>(i);
        p.x = defaults[i % defaults.size()].x;
        p.y = defaults[i % defaults.size()].y;
        p.zeroDone = i % 3 != 2;
        p.zeroDate = {46083.375 + k};
        p.zeroTemperature = 22.5f + static_cast<float>(i);
        p.zeroAverage = {1000 + k, -2000 - k, 3000.5, 12};
        p.zeroStdDev = {110.25, 120.5, 130.75, 140};
        p.dataDone = i % 3 == 0;
        p.dataDate = {46083.5 + k};
        p.dataTemperature = 23.25f;
        p.dataMean = {0.08 + k / 1000, 0.07, 0.09};
        p.dataStdDev = {1.5e-5, 1.25e-5, 1.75e-5};
        p.expectedLoad = {-244.922, -244.922 * p.y, 244.922 * p.x};
        r.points.push_back(p);
    }
    r.scalingZero = {true, {46084.25}, 0, {11, 22, 33, 44}, {1, 2, 3, 4}};
    const float loads[] = {244.922f, 489.844f, 734.766f, 979.688f};
    for (std::size_t i = 0; i < 8; ++i) {
        LinearityStep step;
        step.done = i < 5;
        step.date = {46084.5 + static_cast<double>(i) / 24};
        step.temperature = 24.0f + static_cast<float>(i) / 4;
        step.mean = {0.1 * static_cast<double>(i + 1), 0.2, 0.3};
        step.stdDev = {1e-5, 2e-5, 3e-5};
        step.appliedLoad = loads[i < 4 ? i : 7 - i];
        r.steps.push_back(step);
    }
    r.scaleValue = 1.0309f;
    r.environment = {9.796878, 21.5f, 45.0f, 1013.25, 5.210406};
    return r;
}

std::optional<CalibrationRecord> readBytes(const QByteArray& bytes, CalFileReader& reader) {
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    return reader.read(buffer);
}

QString errorOf(const QByteArray& bytes) {
    CalFileReader reader(SettingsEnvironment, SettingsLoads);
    EXPECT_FALSE(readBytes(bytes, reader));
    return reader.errorString();
}

QByteArray golden(const char* name) {
    QFile file(QStringLiteral(KX_CAL_GOLDEN_DIR "/%1").arg(QLatin1String(name)));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return file.readAll();
}

TEST(CalFile, RoundTripIsByteForByte) {
    for (const std::size_t points : {1u, 3u, 10u}) {
        const CalibrationRecord record = sampleRecord(points);
        const QByteArray bytes = writeCalFile(record);
        EXPECT_EQ(bytes.size(), bytesFull(static_cast<qsizetype>(points), 8));
        CalFileReader reader(SettingsEnvironment, SettingsLoads);
        const auto back = readBytes(bytes, reader);
        ASSERT_TRUE(back) << reader.errorString().toStdString();
        EXPECT_EQ(reader.layout(), CalFileReader::Layout::Full);
        EXPECT_EQ(*back, record);
        EXPECT_EQ(writeCalFile(*back), bytes);
    }
}

// The golden files, the full record and the three shorter layouts of earlier versions, with
// how the reader should take each.
struct Golden {
    const char* name;
    qsizetype size;
    CalFileReader::Layout layout;
};
const Golden Goldens[] = {
    {"through17.cal", bytesThrough17(10), CalFileReader::Layout::ThroughField17},
    {"through28.cal", bytesThrough28(10, 8), CalFileReader::Layout::ThroughField28},
    {"through34.cal", bytesThrough34(10, 8), CalFileReader::Layout::ThroughField34},
    {"full.cal", bytesFull(10, 8), CalFileReader::Layout::Full},
};

// KX_WRITE_GOLDEN=1 writes the golden files again from the writer; check them by hand after.
TEST(CalFile, WriterMatchesTheGoldenFiles) {
    // Checked by hand: P = 10 (0a 00 00 00), the radius 0.025f (cd cc cc 3c), field 7's header
    // 01 00 | 0a 00 00 00 | 00 00 00 00, and the two Variants 0a 00 04 00 02 80.
    const QByteArray full = writeCalFile(sampleRecord(10));
    for (const Golden& g : Goldens) {
        if (!qEnvironmentVariableIsEmpty("KX_WRITE_GOLDEN")) {
            QFile file(QStringLiteral(KX_CAL_GOLDEN_DIR "/%1").arg(QLatin1String(g.name)));
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(full.left(g.size));
        }
        EXPECT_EQ(golden(g.name), full.left(g.size)) << g.name;
    }
    EXPECT_EQ(full.left(8), QByteArray::fromHex("0a000000cdcccc3c"));
    EXPECT_EQ(full.mid(24, 10), QByteArray::fromHex("01000a00000000000000"));
    EXPECT_EQ(full.mid(bytesThrough34(10, 8) - 12, 12),
              QByteArray::fromHex("0a00040002800a0004000280"));
}

// one-point-by-hand.cal was put together field by field from the layout with Python's struct,
// not by our writer.
TEST(CalFile, WriterMatchesAFileMadeByHandFromTheLayout) {
    CalibrationRecord r;
    r.pointRadius = 0.025f;
    r.plateXLeft = -0.406f;
    r.plateXRight = 0.406f;
    r.plateYTop = 0.559f;
    r.plateYBottom = -0.203f;
    CalPoint p;
    p.x = 0.0;
    p.y = 0.18;
    p.zeroDone = p.dataDone = true;
    p.zeroDate = {46083.25};
    p.dataDate = {46083.26};
    p.zeroAverage = {1200, -800, 300, 5};
    p.zeroStdDev = {110, 120, 130, 140};
    p.dataMean = {0.08, 0.08, 0.08};
    p.dataStdDev = {1.5e-5, 1.5e-5, 1.5e-5};
    p.expectedLoad = {-244.922, -44.086, 0.0};
    p.zeroTemperature = 22.5f;
    p.dataTemperature = 22.6f;
    r.points = {p};
    r.scalingZero = {true, {46083.3}, 0, {1, 2, 3, 4}, {5, 6, 7, 8}};
    LinearityStep taken;
    taken.done = true;
    taken.date = {46083.31};
    taken.temperature = 22.7f;
    taken.mean = {0.24, 0.25, 0.26};
    taken.stdDev = {1e-5, 1e-5, 1e-5};
    taken.appliedLoad = 244.922f;
    LinearityStep open;
    open.appliedLoad = 244.922f;
    r.steps = {taken, open};
    r.scaleValue = 1.0f;
    r.environment = {9.796878, 21.5f, 45.0f, 1013.25, 5.210406};
    EXPECT_EQ(writeCalFile(r), golden("one-point-by-hand.cal"));
}

TEST(CalFile, ShorterRecordsOfEarlierVersionsAreCompleted) {
    const CalibrationRecord full = sampleRecord(10);
    for (const Golden& g : Goldens) {
        if (g.layout == CalFileReader::Layout::Full)
            continue;
        CalFileReader reader(SettingsEnvironment, SettingsLoads);
        const auto r = readBytes(golden(g.name), reader);
        ASSERT_TRUE(r) << g.name << ": " << reader.errorString().toStdString();
        EXPECT_EQ(reader.layout(), g.layout);
        // The environment is the settings' in every short record.
        EXPECT_EQ(r->environment, SettingsEnvironment) << g.name;
        EXPECT_EQ(r->points.size(), 10u);
        EXPECT_EQ(r->points[4].dataMean, full.points[4].dataMean);
        const bool temperatures = g.layout == CalFileReader::Layout::ThroughField34;
        EXPECT_EQ(r->points[1].zeroTemperature, temperatures ? 23.5f : 0.0f) << g.name;
        if (g.layout == CalFileReader::Layout::ThroughField17) {
            // No scaling block: the settings' steps, none taken.
            ASSERT_EQ(r->steps.size(), SettingsLoads.size());
            EXPECT_FALSE(r->steps[0].done);
            EXPECT_EQ(r->steps[1].appliedLoad, 20.0f);
            EXPECT_FALSE(r->scalingZero.done);
        } else {
            ASSERT_EQ(r->steps.size(), 8u);
            EXPECT_TRUE(r->steps[4].done);
            EXPECT_EQ(r->steps[5].temperature, temperatures ? 25.25f : 0.0f);
            EXPECT_EQ(r->scaleValue, 1.0309f);
        }
    }
}

TEST(CalFile, EveryCutIsRefusedExceptAtTheThreeOldEnds) {
    const QByteArray bytes = writeCalFile(sampleRecord(3));
    const qsizetype ends[] = {bytesThrough17(3), bytesThrough28(3, 8), bytesThrough34(3, 8),
                              bytes.size()};
    for (qsizetype length = 0; length <= bytes.size(); ++length) {
        CalFileReader reader(SettingsEnvironment, SettingsLoads);
        const bool read = readBytes(bytes.left(length), reader).has_value();
        const bool atEnd = std::find(std::begin(ends), std::end(ends), length) != std::end(ends);
        EXPECT_EQ(read, atEnd) << length << ": " << reader.errorString().toStdString();
        if (!read) {
            EXPECT_FALSE(reader.errorString().isEmpty());
        }
    }
}

TEST(CalFile, DamagedFilesGiveAMessageNamingTheFault) {
    const QByteArray good = writeCalFile(sampleRecord(3));
    const auto patched = [&](qsizetype at, qint32 value) {
        QByteArray b = good;
        qToLittleEndian(value, b.data() + at);
        return b;
    };
    const qsizetype field7 = 24; // header: dimension count, then count, lower bound
    const qsizetype field13 = field7 + 2 * (10 + 24) + 2 * (10 + 6) + 2 * (10 + 24);
    const qsizetype field18 = bytesThrough17(3);
    QByteArray badVariant = good;
    qToLittleEndian<quint16>(99, badVariant.data() + bytesThrough34(3, 8) - 12);

    struct Case {
        const char* name;
        QByteArray bytes;
        QString error;
    } cases[] = {
        {"empty", {}, strings::text(s::FileEmpty)},
        {"negative point count", patched(0, -1), strings::text(s::FileBadPointCount).arg(-1)},
        {"no points", patched(0, 0), strings::text(s::FileBadPointCount).arg(0)},
        {"huge point count", patched(0, 0x7fffffff),
         strings::text(s::FileBadPointCount).arg(0x7fffffff)},
        {"array longer than the points", patched(field7 + 2, 4),
         strings::text(s::FileBadArray).arg("field 7 (point X)", "4", "3")},
        {"array with a lower bound", patched(field7 + 6, 1),
         strings::text(s::FileBadArray).arg("field 7 (point X)", "3", "3")},
        {"table of the wrong shape", patched(field13 + 2, 3),
         strings::text(s::FileBadArray).arg("field 13 (zero averages)", "3 x 3", "4 x 3")},
        {"negative step count", patched(field18, -2), strings::text(s::FileBadStepCount).arg(-2)},
        {"huge step count", patched(field18, 1 << 30),
         strings::text(s::FileBadStepCount).arg(1 << 30)},
        {"cut inside a field", good.left(bytesThrough34(3, 8) + 8 + 2),
         strings::text(s::FileTruncated).arg("field 36 (temperature)")},
        // Cut where its points should be: the count is what cannot be right.
        {"cut among the points", good.left(field13), strings::text(s::FileBadPointCount).arg(3)},
        {"unknown Variant", badVariant,
         strings::text(s::FileBadVariant).arg("field 33 (reserved)").arg(99)},
        {"bytes after the record", good + QByteArray(2, '\0'),
         strings::text(s::FileTrailingBytes).arg(2)},
    };
    for (const Case& k : cases)
        EXPECT_EQ(errorOf(k.bytes), k.error) << k.name;
}

TEST(CalFile, SavedFilesReadBackNamedByTheFirstFreeNumberAndFoldersAreRefused) {
    QTemporaryDir dir;
    const QString first = nextCalFileName(dir.path(), QStringLiteral("20418"));
    EXPECT_EQ(first, dir.filePath(QStringLiteral("20418_1.cal")));
    ASSERT_TRUE(saveCalFile(first, sampleRecord(2)));
    QFile(dir.filePath(QStringLiteral("20418_3.cal"))).open(QIODevice::WriteOnly);
    EXPECT_EQ(nextCalFileName(dir.path(), QStringLiteral("20418")),
              dir.filePath(QStringLiteral("20418_2.cal")));
    EXPECT_EQ(nextCalFileName(dir.path(), QStringLiteral("11093")),
              dir.filePath(QStringLiteral("11093_1.cal")));
    CalFileReader reader(SettingsEnvironment, SettingsLoads);
    const auto back = reader.readFile(first);
    ASSERT_TRUE(back);
    EXPECT_EQ(*back, sampleRecord(2));

    EXPECT_FALSE(reader.readFile(dir.path()));
    EXPECT_EQ(reader.errorString(), strings::text(s::FileIsFolder).arg(dir.path()));
    const QString none = dir.filePath(QStringLiteral("none.cal"));
    EXPECT_FALSE(reader.readFile(none));
    EXPECT_TRUE(reader.errorString().startsWith(strings::text(s::FileCannotOpen).arg(none, "")));
}

TEST(OleDate, DaysSinceTheLastDaysOf1899) {
    struct Case {
        QDateTime when;
        double days;
    } cases[] = {
        {QDateTime(QDate(1899, 12, 30), QTime(0, 0)), 0},
        {QDateTime(QDate(1900, 1, 1), QTime(18, 0)), 2.75},
        {QDateTime(QDate(2024, 1, 31), QTime(12, 0)), 45322.5},
        {QDateTime(QDate(1899, 12, 29), QTime(6, 0)), -1.25},
    };
    for (const Case& k : cases) {
        EXPECT_DOUBLE_EQ(OleDate::fromDateTime(k.when).days, k.days) << k.days;
        EXPECT_EQ(OleDate{k.days}.toDateTime(), k.when) << k.days;
    }
    EXPECT_EQ(OleDate::fromDateTime({}).days, 0);
    EXPECT_FALSE(OleDate{1e300}.toDateTime().isValid());
}

} // namespace
} // namespace kx
