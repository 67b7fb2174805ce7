#pragma once

#include "measure/CaptureJournalFormat.h"

#include <QByteArray>
#include <QString>
#include <memory>
#include <span>
#include <vector>

class QIODevice;

namespace kx {

// Reads a capture journal back (see CaptureJournalFormat.h): its header, then its rows in
// order, as the capture file is to hold them. A damaged record is left out and the rows on
// either side kept; so are the bytes of a last record that a crash cut short, and a
// replacement that did not reach the disk whole, whose rows taken live then stay.
//
// Opening reads the whole journal once to find its rows, so that rowCount() is known before
// the first row is read: on the window's thread only for small journals.
class CaptureJournalReader {
public:
    CaptureJournalReader();
    ~CaptureJournalReader();

    // False when the journal cannot be read or is none; errorString() then says why.
    bool open(const QString& path);
    // The device must be open for reading and stay so while rows are read.
    bool open(QIODevice& device);

    const CaptureJournalHeader& header() const { return m_header; }
    qint64 rowCount() const { return m_rowCount; }
    // Records left out: damaged, cut short or belonging to an incomplete replacement.
    qint64 droppedRecords() const { return m_dropped; }

    // Copies the next rows into `rows`, as many as fit; returns how many, 0 after the last,
    // -1 when the journal can no longer be read.
    qint64 read(std::span<CaptureRow> rows);

    QString errorString() const { return m_error; }

private:
    // Rows of record numbers [begin, end), placed where record number `anchor` stood: a
    // replacement's rows stand where the rows they replace stood.
    struct Piece {
        qint64 anchor;
        qint64 begin;
        qint64 end;
        bool replacement;
    };
    // Record numbers [first, end) a replacement has used or replaced.
    struct Span {
        qint64 first;
        qint64 end;
    };

    bool fail(const QString& error);
    bool scan(qint64 records);
    bool readRecords(qint64 first, qint64 count);
    void addRow(qint64 record);
    bool replace(qint64 at, const journal::Replacement& replacement);

    std::unique_ptr<QIODevice> m_file;
    QIODevice* m_device = nullptr;
    qint64 m_headerSize = 0;
    CaptureJournalHeader m_header;
    qint64 m_rowCount = 0;
    qint64 m_dropped = 0;
    std::vector<Piece> m_pieces;
    std::vector<Span> m_claimed;
    QByteArray m_chunk;
    // Where read() goes on: the piece and the record in it.
    std::size_t m_piece = 0;
    qint64 m_next = 0;
    QString m_error;
};

} // namespace kx
