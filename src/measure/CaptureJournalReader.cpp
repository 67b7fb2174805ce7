#include "measure/CaptureJournalReader.h"

#include <QFile>
#include <algorithm>

namespace kx {
namespace {

using journal::RecordSize;

// Records read at a time: about 700 KB.
constexpr qint64 ChunkRecords = 16 * 1024;

} // namespace

CaptureJournalReader::CaptureJournalReader() = default;
CaptureJournalReader::~CaptureJournalReader() = default;

bool CaptureJournalReader::fail(const QString& error) {
    m_error = error;
    return false;
}

bool CaptureJournalReader::open(const QString& path) {
    auto file = std::make_unique<QFile>(path);
    if (!file->open(QIODevice::ReadOnly))
        return fail(file->errorString());
    m_file = std::move(file);
    return open(*m_file);
}

bool CaptureJournalReader::open(QIODevice& device) {
    m_device = &device;
    m_header = {};
    m_rowCount = m_dropped = 0;
    m_pieces.clear();
    m_claimed.clear();
    m_error.clear();
    if (!device.seek(0))
        return fail(device.errorString());
    QString error;
    const QByteArray prefix = device.read(journal::PrefixSize);
    m_headerSize = journal::headerSize(prefix, error);
    if (m_headerSize == 0)
        return fail(error);
    const QByteArray header = prefix + device.read(m_headerSize - journal::PrefixSize);
    if (header.size() != m_headerSize)
        return fail(QStringLiteral("its header is cut short"));
    if (!journal::decodeHeader(header, m_header, error))
        return fail(error);
    const qint64 bytes = device.size() - m_headerSize;
    if (bytes % RecordSize != 0)
        ++m_dropped; // a record the crash cut short
    if (!scan(bytes / RecordSize))
        return false;
    for (const Piece& piece : m_pieces)
        m_rowCount += piece.end - piece.begin;
    m_piece = 0;
    m_next = m_pieces.empty() ? 0 : m_pieces.front().begin;
    return true;
}

bool CaptureJournalReader::readRecords(qint64 first, qint64 count) {
    m_chunk.resize(count * RecordSize);
    if (!m_device->seek(m_headerSize + first * RecordSize))
        return fail(m_device->errorString());
    const qint64 got = m_device->read(m_chunk.data(), m_chunk.size());
    if (got < 0)
        return fail(m_device->errorString());
    if (got != m_chunk.size())
        return fail(QStringLiteral("it became shorter while it was read"));
    return true;
}

bool CaptureJournalReader::scan(qint64 records) {
    // A replacement and the record number after its rows; `whole` while every row so far
    // reached the disk undamaged.
    struct Pending {
        qint64 at;
        journal::Replacement replacement;
        qint64 end;
        bool whole;
    };
    std::optional<Pending> pending;
    const auto settle = [&] {
        if (!(pending->whole && replace(pending->at, pending->replacement)))
            m_dropped += pending->end - pending->at;
        pending.reset();
    };
    for (qint64 first = 0; first < records; first += ChunkRecords) {
        const qint64 count = std::min(ChunkRecords, records - first);
        if (!readRecords(first, count))
            return false;
        for (qint64 i = 0; i < count; ++i) {
            const qint64 record = first + i;
            const journal::Record decoded =
                journal::decodeRecord(m_chunk.constData() + i * RecordSize);
            const bool isRow = std::holds_alternative<CaptureRow>(decoded);
            if (pending) {
                pending->whole = pending->whole && isRow;
                if (record + 1 == pending->end)
                    settle();
            } else if (isRow) {
                addRow(record);
            } else if (const auto* replacement = std::get_if<journal::Replacement>(&decoded)) {
                // Its rows follow it; those the disk did not get leave it incomplete.
                const qint64 rows =
                    std::clamp<qint64>(replacement->blockCount, 0, records - record - 1);
                pending = Pending{record, *replacement, record + 1 + rows,
                                  rows == replacement->blockCount};
                if (rows == 0)
                    settle();
            } else {
                ++m_dropped;
            }
        }
    }
    return true;
}

void CaptureJournalReader::addRow(qint64 record) {
    // Rows taken in order extend the last piece; replacements stand before them.
    if (!m_pieces.empty() && !m_pieces.back().replacement && m_pieces.back().end == record) {
        ++m_pieces.back().end;
        return;
    }
    m_pieces.push_back({record, record, record + 1, false});
}

bool CaptureJournalReader::replace(qint64 at, const journal::Replacement& replacement) {
    const qint64 first = replacement.first;
    if (first < 0 || first > at || replacement.liveCount < 0 || replacement.liveCount > at - first)
        return false;
    const qint64 end = first + replacement.liveCount;
    // Rows are replaced once, and never by another replacement's rows.
    for (const Span& claimed : m_claimed) {
        if (first < claimed.end && claimed.first < end)
            return false;
    }
    std::vector<Piece> kept;
    kept.reserve(m_pieces.size() + 2);
    for (const Piece& piece : m_pieces) {
        if (piece.replacement || piece.end <= first || piece.begin >= end) {
            kept.push_back(piece);
            continue;
        }
        if (piece.begin < first)
            kept.push_back({piece.begin, piece.begin, first, false});
        if (piece.end > end)
            kept.push_back({end, end, piece.end, false});
    }
    kept.push_back({first, at + 1, at + 1 + replacement.blockCount, true});
    std::stable_sort(kept.begin(), kept.end(), [](const Piece& a, const Piece& b) {
        return a.anchor < b.anchor || (a.anchor == b.anchor && a.replacement && !b.replacement);
    });
    m_pieces = std::move(kept);
    m_claimed.push_back({first, end});
    m_claimed.push_back({at, at + 1 + replacement.blockCount});
    return true;
}

qint64 CaptureJournalReader::read(std::span<CaptureRow> rows) {
    const auto wanted = static_cast<qint64>(rows.size());
    qint64 done = 0;
    while (done < wanted && m_piece < m_pieces.size()) {
        const Piece& piece = m_pieces[m_piece];
        if (m_next == piece.end) {
            if (++m_piece < m_pieces.size())
                m_next = m_pieces[m_piece].begin;
            continue;
        }
        const qint64 count = std::min({piece.end - m_next, wanted - done, ChunkRecords});
        if (!readRecords(m_next, count))
            return -1;
        for (qint64 i = 0; i < count; ++i) {
            const journal::Record decoded =
                journal::decodeRecord(m_chunk.constData() + i * RecordSize);
            const auto* row = std::get_if<CaptureRow>(&decoded);
            if (!row) {
                fail(QStringLiteral("it changed while it was read"));
                return -1;
            }
            rows[static_cast<std::size_t>(done + i)] = *row;
        }
        m_next += count;
        done += count;
    }
    return done;
}

} // namespace kx
