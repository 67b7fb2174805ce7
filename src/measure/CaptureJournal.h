#pragma once

#include "measure/CaptureJournalFormat.h"

#include <QList>
#include <QObject>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace kx {

class Clock;
class JournalFileWriter;
class Timer;

// The rows of a capture in progress, kept in an append-only journal file instead of memory,
// so that a capture of any length takes no more memory than its first second, and survives
// a crash: rows reach the disk (written and synced) at least once a second, on the clock.
// Saving writes the capture file from the journal (CaptureJournalReader); the journal is
// removed once that file is safely on the disk, and a journal left behind is offered back at
// the next start (UnsavedCaptures).
//
// A capture through the plate's own recording is journalled as its samples come in
// (beginSegment, appendSample, endSegment); the recording the plate hands over afterwards
// (takeBlock) is what the capture file must hold, so where it differs from the rows taken live
// it replaces them in the journal.
//
// A row that cannot be written (a full disk) fails the journal: failed() says so, the rows
// already on the disk stay, and the journal takes no more rows.
class CaptureJournal : public QObject {
    Q_OBJECT
public:
    explicit CaptureJournal(Clock& clock, QObject* parent = nullptr);
    // Writes what it holds and closes the file, which stays for the next start.
    ~CaptureJournal() override;

    // The journals in `folder`, oldest first.
    static QStringList journalsIn(const QString& folder);
    // Deletes a journal that is saved or not wanted. An hour's journal is large enough for its
    // deletion to hold up the window: it is set aside under another name at once, so that it is
    // never offered again, and deleted on a thread of the pool. What a killed program leaves
    // set aside goes at the next start (removeSetAside).
    static void removeFile(const QString& path);
    static void removeSetAside(const QString& folder);

    // Starts a new journal file in `folder`. False, with errorString(), when it cannot.
    bool create(const QString& folder, const CaptureJournalHeader& header);
    bool isOpen() const { return m_writer != nullptr; }
    bool hasFailed() const { return m_failed; }
    const QString& path() const { return m_path; }
    const CaptureJournalHeader& header() const { return m_header; }
    QString errorString() const { return m_error; }

    // Rows the capture file will hold, on the disk or on their way to it.
    qint64 rowCount() const { return m_rows; }

    void append(const CaptureRow& row);
    void appendSeparator() { append(CaptureRow{}); }
    // One sample as a row (captureRowOf with the header's minFz).
    void appendSample(const Float3& forces, const Float3& volts);

    // A segment recorded by the plate: a separator row now, then each sample appended until
    // endSegment() is taken live. The segment then waits for its block.
    void beginSegment();
    void endSegment();
    // The plate's recording of the oldest segment waiting: left as journalled when it holds
    // the same samples, else replacing them. A block no segment waits for is appended as a
    // segment of its own (a separator, then its rows).
    void takeBlock(const QList<Float3>& forces, const QList<Float3>& volts);

    // Hands the rows gathered since the last time to the disk; the clock does this every
    // second.
    void flush();
    // Runs `then` on this object's thread once every row appended so far is on the disk, or
    // the journal has failed.
    void whenWritten(std::function<void()> then);

    // Closes the journal, keeping its file. Those waiting in whenWritten() are forgotten.
    void close();
    // Closes the journal and deletes its file: its capture is saved, or not wanted.
    void remove();

Q_SIGNALS:
    // The disk refused rows: `rowsKept` rows are in the file, and no more will be taken.
    void failed(const QString& error, qint64 rowsKept);

private:
    // Rows taken live for a segment: from record number `first`, `count` of them, and a hash
    // of their samples to compare the plate's recording with.
    struct LiveSegment {
        qint64 first = 0;
        qint64 count = 0;
        quint64 hash = 0;
    };

    // Rows and records of one batch handed to the writer.
    struct Batch {
        qint64 records = 0;
        qint64 rows = 0;
    };
    struct Block {
        QList<Float3> forces;
        QList<Float3> volts;
    };

    char* reserveRecord();
    void appendRecord(const CaptureRow& row);
    void compareBlock(const Block& block);
    void batchWritten(const QString& error);
    void fail(const QString& error);
    void runWaiters();

    Timer* m_flushTimer;
    std::unique_ptr<JournalFileWriter> m_writer;
    quint64 m_fileNumber = 0; // counts the files created, to know their writers' reports apart
    QString m_path;
    CaptureJournalHeader m_header;
    QString m_error;
    bool m_failed = false;

    // Records and rows in the journal: all of them, those on the disk, those handed to the
    // writer and not yet reported, those in m_buffer. A replacement's record is no row.
    qint64 m_records = 0;
    qint64 m_rows = 0;
    Batch m_written;
    std::deque<Batch> m_inFlight;
    Batch m_buffered;
    std::vector<char> m_buffer;
    std::size_t m_bufferCapacity = 0;

    std::optional<LiveSegment> m_live;
    std::deque<LiveSegment> m_waitingForBlock;
    // Blocks that came while a segment was being taken live: they are compared once it ends,
    // so that the live segment's records stay in one piece.
    std::vector<Block> m_deferredBlocks;
    std::vector<std::function<void()>> m_waiters;
};

} // namespace kx
