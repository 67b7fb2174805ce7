// The capture journal: any bytes either are refused, saying why, or give rows, as many as the
// reader counted and never more than the file has records, in any size of pieces; those rows
// make a capture file of one line each; and a header that was read writes and reads back the
// same.

#include "FuzzCheck.h"
#include "measure/CaptureFileWriter.h"
#include "measure/CaptureJournalReader.h"

#include <QBuffer>
#include <cstdint>
#include <vector>

using kx::fuzz::check;

namespace {

// Takes what is written, counting its lines, and keeps none of it.
class LineCounter : public QIODevice {
public:
    qint64 lines = 0;

protected:
    qint64 readData(char*, qint64) override { return -1; }
    qint64 writeData(const char* data, qint64 size) override {
        lines += QByteArrayView(data, size).count('\n');
        return size;
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    kx::CaptureJournalReader reader;
    if (!reader.open(buffer)) {
        check(!reader.errorString().isEmpty(), "a refused journal says why");
        return 0;
    }
    const kx::CaptureJournalHeader header = reader.header();
    const qint64 records =
        (bytes.size() - kx::journal::encodeHeader(header).size()) / kx::journal::RecordSize;
    check(reader.rowCount() >= 0 && reader.droppedRecords() >= 0, "counts are not negative");
    check(reader.rowCount() <= records, "every row has a record of its own");

    // Pieces of a size the input chooses.
    std::vector<kx::CaptureRow> rows(1 + (size % 7));
    qint64 total = 0;
    for (qint64 got; (got = reader.read(rows)) > 0;)
        total += got;
    check(total == reader.rowCount(), "the rows read are the rows counted");

    kx::CaptureJournalReader again;
    check(again.open(buffer), "a journal read once reads again");
    LineCounter file;
    file.open(QIODevice::WriteOnly);
    kx::CaptureFileWriter writer(again, header.sampleFrequency, header.minFz);
    check(writer.write(file), "the rows make a capture file");
    check(file.lines == 1 + reader.rowCount(), "a line per row under the header");

    if (header.plateSerial.toUtf8().size() <= 255) {
        QString error;
        kx::CaptureJournalHeader reread;
        check(kx::journal::decodeHeader(kx::journal::encodeHeader(header), reread, error) &&
                  reread == header,
              "a header writes and reads back the same");
    }
    return 0;
}
