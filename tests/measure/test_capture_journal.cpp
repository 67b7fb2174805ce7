#include "EventsUntil.h"
#include "FileBytes.h"
#include "FileSizeLimit.h"
#include "JournalBytes.h"
#include "PrintQString.h"
#include "TempEnvironment.h"
#include "measure/CaptureJournal.h"
#include "support/ManualClock.h"

#include <QDir>
#include <QSignalSpy>
#include <QtEndian>
#include <functional>
#include <gtest/gtest.h>

namespace kx::test {
namespace {

using Rows = std::vector<CaptureRow>;

Rows numberedRows(std::initializer_list<int> numbers) {
    Rows rows;
    for (const int n : numbers)
        rows.push_back(numbered(n));
    return rows;
}

// ---- Reading journals back

TEST(CaptureJournalReader, TheHeaderReadsBackAsWritten) {
    CaptureJournalHeader header{QStringLiteral("Plätte 7/2"),
                                DisplayType::Postural,
                                true,
                                0.4f,
                                -1.25f,
                                QDateTime(QDate(2031, 12, 31), QTime(23, 59, 59, 999))};
    JournalInMemory journal(JournalBytes(header).bytes);
    ASSERT_TRUE(journal.opened) << journal.reader.errorString().toStdString();
    EXPECT_EQ(journal.reader.header(), header);
    EXPECT_EQ(journal.reader.rowCount(), 0);
}

struct Unreadable {
    const char* name;
    std::function<QByteArray(QByteArray)> damage;
    const char* error;
};

// What a journal's first bytes must hold before any row is believed.
TEST(CaptureJournalReader, RefusesForeignCutAndDamagedHeadersSayingWhy) {
    const qsizetype header = JournalBytes().headerSize();
    const Unreadable cases[] = {
        {"empty", [](QByteArray) { return QByteArray(); }, "it is not a capture journal"},
        {"a capture file",
         [](QByteArray) { return QByteArray("%Time(s), V1, V2, V3, Fz, Mx, My, CoPx, CoPy\r\n"); },
         "it is not a capture journal"},
        {"another version",
         [](QByteArray b) {
             b[8] = 2;
             return b;
         },
         "it was written by another version of the program"},
        {"cut in the header", [header](QByteArray b) { return b.left(header - 1); },
         "its header is cut short"},
        {"a changed serial number",
         [header](QByteArray b) {
             b[header - 40] = 'X';
             return b;
         },
         "its header is damaged"},
        {"an absurd header size",
         [](QByteArray b) {
             qToLittleEndian<quint16>(4000, b.data() + 10);
             return b;
         },
         "its header is damaged"},
    };
    for (const Unreadable& c : cases) {
        SCOPED_TRACE(c.name);
        JournalInMemory journal(c.damage(JournalBytes().rows(numberedRows({1, 2})).bytes));
        EXPECT_FALSE(journal.opened);
        EXPECT_EQ(journal.reader.errorString(), c.error);
    }
}

struct Salvage {
    const char* name;
    std::function<void(JournalBytes&)> build;
    std::initializer_list<int> rows; // numbered rows expected, in order
    qint64 dropped;
};

// Whatever a crash or a bad sector did to the records, every whole record before and after
// the damage is kept, in order, and a plate's recording stands in for the rows taken live
// only when it reached the disk whole.
TEST(CaptureJournalReader, KeepsEveryRowThatReachedTheDiskWhole) {
    const auto flip = [](JournalBytes& j, qint64 record) { j.bytes[j.recordAt(record) + 7] ^= 4; };
    const Salvage cases[] = {
        {"whole",
         [](JournalBytes& j) {
             j.rows(numberedRows({1, 2, 3}));
         },
         {1, 2, 3},
         0},
        {"the last record cut short",
         [](JournalBytes& j) {
             j.rows(numberedRows({1, 2, 3}));
             j.bytes.chop(5);
         },
         {1, 2},
         1},
        {"a damaged record",
         [&](JournalBytes& j) {
             j.rows(numberedRows({1, 2, 3, 4}));
             flip(j, 1);
         },
         {1, 3, 4},
         1},
        {"zeros where the last rows should be",
         [](JournalBytes& j) {
             j.rows(numberedRows({1, 2}));
             j.bytes.append(QByteArray(2 * journal::RecordSize, '\0'));
         },
         {1, 2},
         2},
        {"a recording replacing the live rows",
         [](JournalBytes& j) {
             j.rows(numberedRows({1, 2, 3, 4})).replacement(1, 3, 2).rows(numberedRows({7, 8, 9}));
         },
         {1, 7, 8, 9},
         0},
        {"a recording replacing rows before others",
         [](JournalBytes& j) {
             j.rows(numberedRows({1, 2, 3, 4})).replacement(1, 2, 1).rows(numberedRows({7, 9}));
         },
         {1, 7, 4, 9},
         0},
        {"an empty recording",
         [](JournalBytes& j) {
             j.rows(numberedRows({1, 2, 3})).replacement(1, 2, 0).rows(numberedRows({9}));
         },
         {1, 9},
         0},
        {"a recording cut short",
         [](JournalBytes& j) {
             j.rows(numberedRows({1, 2, 3})).replacement(1, 2, 3).rows(numberedRows({7, 8}));
         },
         {1, 2, 3},
         3},
        {"a recording with a damaged row",
         [&](JournalBytes& j) {
             j.rows(numberedRows({1, 2, 3})).replacement(1, 2, 2).rows(numberedRows({7, 8, 9}));
             flip(j, 4);
         },
         {1, 2, 3, 9},
         3},
        {"a recording claiming rows after it",
         [](JournalBytes& j) {
             j.rows(numberedRows({1, 2})).replacement(1, 5, 1).rows(numberedRows({7, 3}));
         },
         {1, 2, 3},
         2},
        {"rows replaced twice",
         [](JournalBytes& j) {
             j.rows(numberedRows({1, 2, 3})).replacement(1, 2, 1).rows(numberedRows({7}));
             j.replacement(2, 1, 1).rows(numberedRows({8}));
         },
         {1, 7},
         2},
    };
    for (const Salvage& c : cases) {
        SCOPED_TRACE(c.name);
        JournalBytes bytes;
        c.build(bytes);
        JournalInMemory journal(bytes.bytes);
        ASSERT_TRUE(journal.opened) << journal.reader.errorString().toStdString();
        EXPECT_EQ(journal.reader.rowCount(), qint64(c.rows.size()));
        EXPECT_EQ(journal.rows(), numberedRows(c.rows));
        EXPECT_EQ(journal.reader.droppedRecords(), c.dropped);
    }
}

TEST(CaptureJournalReader, RowsComeTheSameInPiecesOfAnySize) {
    JournalBytes bytes;
    bytes.rows(numberedRows({1, 2, 3, 4, 5})).replacement(2, 2, 3).rows(numberedRows({7, 8, 9, 6}));
    const Rows whole = numberedRows({1, 2, 7, 8, 9, 5, 6});
    for (const std::size_t piece : {1u, 2u, 3u, 7u, 100u}) {
        SCOPED_TRACE(piece);
        JournalInMemory journal(bytes.bytes);
        Rows rows;
        Rows buffer(piece);
        for (qint64 got; (got = journal.reader.read(buffer)) > 0;)
            rows.insert(rows.end(), buffer.begin(), buffer.begin() + got);
        EXPECT_EQ(rows, whole);
    }
}

// ---- Writing journals

class CaptureJournalTest : public ::testing::Test {
protected:
    // Waits until what was appended is on the disk.
    void written() {
        bool done = false;
        journal.whenWritten([&done] { done = true; });
        ASSERT_TRUE(eventsUntil([&done] { return done; }));
    }
    // The journal as a reader finds it on the disk now.
    Rows onDisk() const {
        JournalInMemory read(fileBytes(journal.path()));
        EXPECT_TRUE(read.opened) << read.reader.errorString().toStdString();
        return read.rows();
    }
    void create() { ASSERT_TRUE(journal.create(folder(), JournalBytes::header())); }
    QString folder() const { return environment.userDataFolder() + "/journals"; }

    TempEnvironment environment;
    ManualClock clock;
    CaptureJournal journal{clock};
};

TEST_F(CaptureJournalTest, RowsReachTheDiskEverySecondAndTheFileStaysWhenClosed) {
    create();
    const QString path = journal.path();
    EXPECT_EQ(CaptureJournal::journalsIn(folder()), QStringList{path});
    EXPECT_EQ(QFileInfo(path).fileName(), "2024-03-14 09.30.05.250 20418.kxcj");
    for (const int n : {1, 2, 3})
        journal.append(numbered(n));
    clock.advance(999);
    EXPECT_EQ(fileBytes(path), journal::encodeHeader(JournalBytes::header()))
        << "rows wait for the second to end";
    clock.advance(1);
    ASSERT_TRUE(eventsUntil([&] { return onDisk().size() == 3; }));
    EXPECT_EQ(onDisk(), numberedRows({1, 2, 3}));

    journal.append(numbered(4));
    journal.close();
    EXPECT_EQ(onDisk(), numberedRows({1, 2, 3, 4})) << "closing writes what was held";
    EXPECT_TRUE(QFile::exists(path));
    CaptureJournal second(clock);
    ASSERT_TRUE(second.create(folder(), JournalBytes::header()));
    EXPECT_EQ(QFileInfo(second.path()).fileName(), "2024-03-14 09.30.05.250 20418 (1).kxcj")
        << "a journal begun in the same millisecond never replaces the first";
    second.remove();
    EXPECT_EQ(CaptureJournal::journalsIn(folder()), QStringList{path});
}

struct Recording {
    const char* name;
    QList<Float3> forces; // the plate's recording of the samples (1, 2, 3)
    bool replaces;
};

// The plate's own recording of a segment is what the file holds; it is written a second time
// only when it differs from the samples taken live.
TEST_F(CaptureJournalTest, APlateRecordingReplacesTheLiveRowsOnlyWhereItDiffers) {
    const QList<Float3> live{{-1, 0, 0}, {-2, 0, 0}, {-3, 0, 0}};
    const Recording cases[] = {
        {"the same", live, false},
        {"a sample changed", {{-1, 0, 0}, {-2, 0, 1}, {-3, 0, 0}}, true},
        {"one more", {{-1, 0, 0}, {-2, 0, 0}, {-3, 0, 0}, {-4, 0, 0}}, true},
        {"one fewer", {{-2, 0, 0}, {-3, 0, 0}}, true},
    };
    const auto rowsOf = [](const QList<Float3>& forces) {
        Rows rows{CaptureRow{}};
        for (const Float3& f : forces)
            rows.push_back(captureRowOf(f, {0.5f, 0, 0}, JournalBytes::header().minFz));
        return rows;
    };
    for (const Recording& c : cases) {
        SCOPED_TRACE(c.name);
        create();
        journal.beginSegment();
        for (const Float3& f : live)
            journal.appendSample(f, {0.5f, 0, 0});
        journal.endSegment();
        journal.takeBlock(c.forces, QList<Float3>(c.forces.size(), {0.5f, 0, 0}));
        EXPECT_EQ(journal.rowCount(), 1 + c.forces.size());
        written();
        EXPECT_EQ(onDisk(), rowsOf(c.forces));
        const qint64 records =
            (fileBytes(journal.path()).size() - JournalBytes().headerSize()) / journal::RecordSize;
        EXPECT_EQ(records, c.replaces ? 1 + 3 + 1 + c.forces.size() : 1 + 3);
        journal.remove();
    }
}

// A recording that comes while the next segment is being taken waits for that one to end, so
// that each segment's live rows stay in one piece; one nobody waits for stands on its own.
TEST_F(CaptureJournalTest, RecordingsComingLateOrUnaskedKeepTheirPlace) {
    create();
    const Float3 volts{0.5f, 0, 0};
    const auto row = [&](float fz) {
        return captureRowOf({fz, 0, 0}, volts, JournalBytes::header().minFz);
    };
    journal.beginSegment();
    journal.appendSample({-1, 0, 0}, volts);
    journal.endSegment();
    journal.beginSegment();
    journal.appendSample({-5, 0, 0}, volts);
    journal.takeBlock({{-1, 0, 0}, {-2, 0, 0}}, {volts, volts}); // the first, late and longer
    journal.appendSample({-6, 0, 0}, volts);
    journal.endSegment();
    journal.takeBlock({{-5, 0, 0}, {-6, 0, 0}, {-7, 0, 0}}, {volts, volts, volts});
    journal.takeBlock({{-9, 0, 0}}, {volts});
    written();
    EXPECT_EQ(onDisk(), (Rows{CaptureRow{}, row(-1), row(-2), CaptureRow{}, row(-5), row(-6),
                              row(-7), CaptureRow{}, row(-9)}));
    EXPECT_EQ(journal.rowCount(), 9);
}

// A disk that refuses rows fails the journal once: the rows written before stay, readable,
// and nothing more is taken, so the file never holds rows after a gap.
TEST_F(CaptureJournalTest, AFullDiskKeepsTheRowsWrittenBeforeAndTakesNoMore) {
    create();
    QSignalSpy failed(&journal, &CaptureJournal::failed);
    for (int n = 1; n <= 60; ++n)
        journal.append(numbered(n));
    written();
    const qint64 size = fileBytes(journal.path()).size();
    {
        const FileSizeLimit limit(rlim_t(size + 10 * journal::RecordSize + 5));
        for (int n = 61; n <= 120; ++n)
            journal.append(numbered(n));
        written();
    }
    ASSERT_EQ(failed.size(), 1);
    EXPECT_EQ(failed.at(0).at(1).toLongLong(), 60);
    EXPECT_FALSE(failed.at(0).at(0).toString().isEmpty());
    EXPECT_TRUE(journal.hasFailed());
    EXPECT_EQ(fileBytes(journal.path()).size(), size) << "a part of the refused rows is cut off";
    journal.append(numbered(121));
    journal.beginSegment();
    EXPECT_EQ(journal.rowCount(), 60);
    written();
    EXPECT_EQ(onDisk().size(), 60u);
    EXPECT_EQ(onDisk().back(), numbered(60));
    EXPECT_EQ(failed.size(), 1) << "said once";
}

TEST_F(CaptureJournalTest, AFolderThatCannotBeMadeIsSaidAndNothingIsTaken) {
    writeFileBytes(environment.path() + "/file", "not a folder");
    EXPECT_FALSE(journal.create(environment.path() + "/file/journals", JournalBytes::header()));
    EXPECT_FALSE(journal.isOpen());
    EXPECT_TRUE(journal.errorString().contains("cannot be created"))
        << journal.errorString().toStdString();
    journal.append(numbered(1));
    EXPECT_EQ(journal.rowCount(), 0);
}

} // namespace
} // namespace kx::test
