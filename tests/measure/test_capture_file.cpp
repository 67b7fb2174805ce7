#include "FileBytes.h"
#include "FileSizeLimit.h"
#include "JournalBytes.h"
#include "TempEnvironment.h"
#include "measure/CaptureFileWriter.h"
#include "measure/CaptureSaver.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <gtest/gtest.h>

using namespace kx;
using kx::test::JournalBytes;
using kx::test::JournalInMemory;
using Rows = std::vector<CaptureRow>;

namespace {

constexpr float kRate = 1000.0f;
constexpr float kMinFz = -2.5f;
const QByteArray kSeparator = "%NaN, NaN, NaN, NaN, NaN, NaN, NaN, NaN, NaN";

QByteArray fileText(const Rows& rows) {
    JournalInMemory journal(JournalBytes().rows(rows).bytes);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    CaptureFileWriter writer(journal.reader, kRate, kMinFz);
    EXPECT_TRUE(writer.write(buffer));
    return buffer.data();
}

// A journal of `rows` at `path`, as a capture leaves it.
void writeJournal(const QString& path, const Rows& rows) {
    test::writeFileBytes(path, JournalBytes().rows(rows).bytes);
}

// A block as the plate library delivers it: a separator, then a row per sample.
void appendBlock(Rows& rows, const QList<Float3>& forces, const QList<Float3>& volts) {
    rows.push_back(CaptureRow{});
    for (qsizetype i = 0; i < forces.size(); ++i)
        rows.push_back(captureRowOf(forces[i], volts[i], kMinFz));
}

QByteArray linesOf(std::initializer_list<QByteArray> lines) {
    QByteArray text;
    for (const QByteArray& line : lines)
        text += line + "\r\n";
    return text;
}

// Two blocks as the plate library delivers them, then rows added by hand.
Rows twoSegments() {
    Rows rows;
    appendBlock(rows, {{-500, 12.5f, -25}, {-1, 0.5f, 0.25f}},
                {{0.0012341f, -0.0005f, 0.25f}, {0.0001f, 0.0002f, 0.0003f}});
    appendBlock(rows, {{-800, 0, 40}}, {{1, 2, 3}});
    // Voltages of exactly 0 make a separator whatever the forces.
    rows.push_back(CaptureRow{{0, 0, 0}, {-500, 1, 1}, {-500, 0, 0}});
    rows.push_back(captureRowOf({-600, -6, 6}, {-1.5f, 0, 0}, kMinFz));
    // Exactly at the threshold counts as unloaded: "below" is strict.
    rows.push_back(CaptureRow{{1, 1, 1}, {kMinFz, 0, 0}, {kMinFz, 0.5f, 0.5f}});
    return rows;
}

TEST(CaptureFile, SegmentsSeparatorsTimesAndUnloadedCentreOfPressure) {
    EXPECT_EQ(fileText(twoSegments()),
              linesOf({"%Time(s), V1, V2, V3, Fz, Mx, My, CoPx, CoPy", kSeparator,
                       "0.001000, 0.001234, -0.000500, 0.250000, -500.000000, 12.500000, "
                       "-25.000000, -0.050000, -0.025000",
                       "0.002000, 0.000100, 0.000200, 0.000300, -1.000000, 0.500000, 0.250000, "
                       "NaN, NaN",
                       kSeparator,
                       "0.001000, 1.000000, 2.000000, 3.000000, -800.000000, 0.000000, "
                       "40.000000, 0.050000, 0.000000",
                       kSeparator,
                       "0.001000, -1.500000, 0.000000, 0.000000, -600.000000, -6.000000, "
                       "6.000000, 0.010000, 0.010000",
                       "0.002000, 1.000000, 1.000000, 1.000000, -2.500000, 0.000000, "
                       "0.000000, NaN, NaN"}));
}

enum class Failure { MissingFolder, ReadOnlyFolder, DiskFull };

class FailedSave : public testing::TestWithParam<Failure> {};

TEST_P(FailedSave, ReportsWhyAndLeavesNoFile) {
    test::TempEnvironment environment;
    QString folder = environment.path() + "/captures";
    ASSERT_TRUE(QDir().mkpath(folder));
    Rows rows = twoSegments();
    for (int i = 0; i < 2000; ++i)
        rows.push_back(CaptureRow{{1, 2, 3}, {-100, 1, 1}, {-100, -0.01f, 0.01f}});
    JournalInMemory journal(JournalBytes().rows(rows).bytes);

    std::optional<FileSizeLimit> limit;
    switch (GetParam()) {
    case Failure::MissingFolder:
        folder += "/gone";
        break;
    case Failure::ReadOnlyFolder:
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner);
        if (QFile probe(folder + "/probe"); probe.open(QIODevice::WriteOnly)) {
            probe.remove();
            GTEST_SKIP() << "permissions are not enforced for this user";
        }
        break;
    case Failure::DiskFull:
        limit.emplace(64 * 1024); // the file needs about 170 KB
        break;
    }
    const QString path = folder + "/capture.txt";
    CaptureFileWriter writer(journal.reader, kRate, kMinFz);
    EXPECT_FALSE(writer.save(path));
    limit.reset();
    QFile::setPermissions(environment.path() + "/captures",
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

    EXPECT_TRUE(writer.errorString().contains(QDir::toNativeSeparators(path)))
        << writer.errorString().toStdString();
    EXPECT_FALSE(QFile::exists(path));
    EXPECT_TRUE(QDir(environment.path() + "/captures").isEmpty()); // no temporary file left
}

INSTANTIATE_TEST_SUITE_P(Causes, FailedSave,
                         testing::Values(Failure::MissingFolder, Failure::ReadOnlyFolder,
                                         Failure::DiskFull));

TEST(CaptureFile, LoadsUnchangedWithNumpy) {
    // The system's interpreter first: that is the one Debian's python3-numpy serves, while
    // PATH may lead to another installation without it.
    QString python = QStandardPaths::findExecutable("python3", {"/usr/bin"});
    if (python.isEmpty())
        python = QStandardPaths::findExecutable("python3");
    if (python.isEmpty())
        GTEST_SKIP() << "python3 is not installed";
    test::TempEnvironment environment;
    const QString path = environment.path() + "/capture.txt";
    JournalInMemory journal(JournalBytes().rows(twoSegments()).bytes);
    CaptureFileWriter writer(journal.reader, kRate, kMinFz);
    ASSERT_TRUE(writer.save(path));

    QProcess process;
    process.start(python, {"-c",
                           "import sys, numpy\n"
                           "a = numpy.loadtxt(sys.argv[1], delimiter=',', comments='%')\n"
                           "print(a.shape[0], a.shape[1], int(numpy.isnan(a).sum()), a[2][4])",
                           path});
    ASSERT_TRUE(process.waitForFinished(60'000));
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    EXPECT_EQ(process.readAllStandardOutput().trimmed(), "5 9 4 -800.0");
}

Rows manyRows(int count) {
    Rows rows{CaptureRow{}};
    rows.resize(std::size_t(count) + 1,
                CaptureRow{{0.001f, 0.002f, 0.003f}, {-700, 1, 2}, {-700, 0.001f, 0.002f}});
    return rows;
}

TEST(CaptureSaver, ReplacesAnOlderFileInTheBackgroundReportingProgress) {
    test::TempEnvironment environment;
    const QString path = environment.path() + "/capture.txt";
    QFile old(path);
    ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    old.write(QByteArray(100'000, 'x'));
    old.close();
    const Rows rows = manyRows(100'000); // about 10 blocks of text
    const QString journal = environment.path() + "/capture.kxcj";
    writeJournal(journal, rows);
    CaptureSaver saver;
    QSignalSpy progress(&saver, &CaptureSaver::progress);
    QSignalSpy finished(&saver, &CaptureSaver::finished);
    saver.start(journal, path, kRate, kMinFz);
    EXPECT_TRUE(saver.isRunning());
    ASSERT_TRUE(finished.wait(60'000));
    EXPECT_FALSE(saver.isRunning());
    EXPECT_EQ(finished.at(0).at(0).toBool(), true);

    ASSERT_GE(progress.size(), 5);
    for (qsizetype i = 1; i < progress.size(); ++i)
        EXPECT_GT(progress.at(i).at(0).toInt(), progress.at(i - 1).at(0).toInt());
    EXPECT_EQ(progress.last().at(0).toInt(), 100);
    QFile written(path);
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    EXPECT_EQ(written.readAll(), fileText(rows));
}

// Stopped by its owner going or by a cancel, a save leaves no file; a cancelled one says so.
TEST(CaptureSaver, DestroyedOrCancelledWhileSavingWritesNoFile) {
    test::TempEnvironment environment;
    const QString journal = environment.path() + "/journal.kxcj";
    writeJournal(journal, manyRows(1'000'000)); // about 100 MB of text
    {
        CaptureSaver saver;
        saver.start(journal, environment.path() + "/capture.txt", kRate, kMinFz);
    }
    CaptureSaver saver;
    QSignalSpy finished(&saver, &CaptureSaver::finished);
    saver.start(journal, environment.path() + "/capture.txt", kRate, kMinFz);
    saver.cancel();
    ASSERT_TRUE(finished.wait(60'000));
    EXPECT_FALSE(finished.at(0).at(0).toBool());
    EXPECT_TRUE(finished.at(0).at(1).toString().endsWith(": The save was stopped."))
        << finished.at(0).at(1).toString().toStdString();
    EXPECT_TRUE(QDir(environment.path()).entryList({"capture*"}, QDir::Files).isEmpty());
    EXPECT_TRUE(QFile::exists(journal)) << "the journal is only read";
}

TEST(CaptureSaver, AJournalThatCannotBeReadIsReportedWithItsName) {
    test::TempEnvironment environment;
    const QString journal = environment.path() + "/foreign.kxcj";
    test::writeFileBytes(journal, "%Time(s), V1, V2, V3, Fz, Mx, My, CoPx, CoPy\r\n");
    CaptureSaver saver;
    QSignalSpy finished(&saver, &CaptureSaver::finished);
    saver.start(journal, environment.path() + "/capture.txt", kRate, kMinFz);
    ASSERT_TRUE(finished.wait(60'000));
    EXPECT_FALSE(finished.at(0).at(0).toBool());
    EXPECT_EQ(finished.at(0).at(1).toString(), "The capture journal " +
                                                   QDir::toNativeSeparators(journal) +
                                                   " cannot be read: it is not a capture journal.");
    EXPECT_FALSE(QFile::exists(environment.path() + "/capture.txt"));
}

} // namespace
