#pragma once

#include "measure/CaptureJournalFormat.h"
#include "measure/CaptureJournalReader.h"

#include <QBuffer>
#include <vector>

namespace kx::test {

// A capture journal built record by record, as the journal writes them, for the reader and
// the capture file writer to read.
class JournalBytes {
public:
    static CaptureJournalHeader header() {
        return {QStringLiteral("20418"),
                DisplayType::Forces,
                false,
                1000.0f,
                -2.5f,
                QDateTime(QDate(2024, 3, 14), QTime(9, 30, 5, 250))};
    }

    explicit JournalBytes(const CaptureJournalHeader& header = JournalBytes::header())
        : bytes(journal::encodeHeader(header)) {}

    JournalBytes& row(const CaptureRow& row) {
        journal::encodeRow(row, grow());
        return *this;
    }
    JournalBytes& rows(const std::vector<CaptureRow>& rows) {
        for (const CaptureRow& r : rows)
            row(r);
        return *this;
    }
    JournalBytes& replacement(qint64 first, qint64 liveCount, qint64 blockCount) {
        journal::encodeReplacement({first, liveCount, blockCount}, grow());
        return *this;
    }
    // Where record `n` (counted from 0 after the header) starts.
    qsizetype recordAt(qint64 n) const { return headerSize() + n * journal::RecordSize; }
    qsizetype headerSize() const { return journal::encodeHeader(header()).size(); }

    QByteArray bytes;

private:
    char* grow() {
        bytes.resize(bytes.size() + journal::RecordSize);
        return bytes.data() + bytes.size() - journal::RecordSize;
    }
};

// A reader on journal bytes held in memory.
struct JournalInMemory {
    explicit JournalInMemory(const QByteArray& bytes)
        : data(bytes) {
        buffer.open(QIODevice::ReadOnly);
        opened = reader.open(buffer);
    }
    // Every row, in order; stops at a failed read.
    std::vector<CaptureRow> rows() {
        std::vector<CaptureRow> all(std::size_t(std::max<qint64>(reader.rowCount(), 0)));
        const qint64 got = reader.read(all);
        all.resize(std::size_t(std::max<qint64>(got, 0)));
        return all;
    }

    QByteArray data;
    QBuffer buffer{&data};
    CaptureJournalReader reader;
    bool opened = false;
};

// A plain row whose values tell it apart: volts (n, 0, 0), forces (-n, 0, 0), no postural.
inline CaptureRow numbered(int n) {
    const auto v = static_cast<float>(n);
    return CaptureRow{{v, 0, 0}, {-v, 0, 0}, {}};
}

} // namespace kx::test
