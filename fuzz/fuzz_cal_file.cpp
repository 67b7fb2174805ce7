// The calibration file: any bytes either read as a record or are refused with a message; a
// record that was read writes a file that reads back and writes the same bytes again.

#include "FuzzCheck.h"
#include "calibration/CalFileReader.h"
#include "calibration/CalFileWriter.h"

#include <QBuffer>
#include <cstdint>

using kx::fuzz::check;

namespace {

std::optional<kx::CalibrationRecord> readBytes(const QByteArray& bytes, QString& error) {
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    kx::CalFileReader reader(kx::CalEnvironment{}, {10.0f, 20.0f});
    std::optional<kx::CalibrationRecord> record = reader.read(buffer);
    error = reader.errorString();
    return record;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray input =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QString error;
    const std::optional<kx::CalibrationRecord> record = readBytes(input, error);
    if (!record) {
        check(!error.isEmpty(), "a refused file has a message");
        return 0;
    }
    check(error.isEmpty(), "a file that reads has no message");
    // Compared as bytes: a record may hold NaNs, which never compare equal.
    const QByteArray written = kx::writeCalFile(*record);
    const std::optional<kx::CalibrationRecord> reread = readBytes(written, error);
    check(reread.has_value(), "a written record reads back");
    check(kx::writeCalFile(*reread) == written, "a record read back writes the same bytes");
    return 0;
}
