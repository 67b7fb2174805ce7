#pragma once

#include "measure/CaptureRow.h"
#include "measure/SignalSet.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <variant>

namespace kx {

// What a capture journal tells of its capture: enough to write the capture file from it and
// to offer it back after a crash.
struct CaptureJournalHeader {
    QString plateSerial;
    DisplayType signalSet = DisplayType::Voltages; // the charts' signals when it began
    bool drift = false;                            // rows are averaged drift points
    float sampleFrequency = 0; // Hz, what the capture file's time column divides by
    float minFz = -2.5f;       // N: a row has a centre of pressure while its postural Fz < minFz
    QDateTime started;         // local time, to the millisecond

    bool operator==(const CaptureJournalHeader&) const = default;
};

// The capture journal's binary layout, little-endian throughout.
//
// Header: the magic "KXCJRNL\x1a", u16 version (1), u16 header size in bytes, u16 signal set,
// u16 flags (bit 0: drift), f32 sampling frequency, f32 minFz, then three texts each preceded
// by a u8 length: the start time (ISO 8601, local, milliseconds), the plate's serial number
// (UTF-8) and the columns of a row ("V1 V2 V3 Fz Mx My Fz CoPx CoPy"); last a u32 CRC-32 of
// everything before it.
//
// Records follow, RecordSize bytes each: u32 kind, a 36-byte payload, u32 CRC-32 of the kind
// and payload. A row's payload is its nine f32 values. A replacement's payload is three i64
// (then zeros): the `liveCount` row records from record number `first` (counted from 0 after
// the header) are replaced by the `blockCount` row records right after the replacement. It is
// written when the plate's own recording of a segment differs from the rows taken live.
namespace journal {

inline constexpr qsizetype RecordSize = 44;
// The fixed part before the texts, and a bound no valid header reaches.
inline constexpr qsizetype PrefixSize = 12;
inline constexpr qsizetype MaxHeaderSize = 1024;
inline constexpr char Columns[] = "V1 V2 V3 Fz Mx My Fz CoPx CoPy";

struct Replacement {
    qint64 first = 0;
    qint64 liveCount = 0;
    qint64 blockCount = 0;
};

// A record read back: a row or a replacement, or nothing when it is damaged.
using Record = std::variant<std::monostate, CaptureRow, Replacement>;

QByteArray encodeHeader(const CaptureJournalHeader& header);

// From the first PrefixSize bytes: the size of the whole header, or 0 with `error` saying why
// the file is no journal this program can read.
qsizetype headerSize(const QByteArray& prefix, QString& error);
// The header from its `headerSize` bytes; false with `error` when it is damaged.
bool decodeHeader(const QByteArray& bytes, CaptureJournalHeader& header, QString& error);

// Each writes one record of RecordSize bytes at `out`.
void encodeRow(const CaptureRow& row, char* out);
void encodeReplacement(const Replacement& replacement, char* out);
Record decodeRecord(const char* in);

} // namespace journal
} // namespace kx
