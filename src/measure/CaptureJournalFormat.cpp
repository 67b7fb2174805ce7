#include "measure/CaptureJournalFormat.h"

#include "measure/Crc32.h"

#include <QtEndian>
#include <bit>
#include <cmath>
#include <cstring>
#include <utility>

namespace kx::journal {
namespace {

constexpr char Magic[8] = {'K', 'X', 'C', 'J', 'R', 'N', 'L', '\x1a'};
constexpr quint16 Version = 1;
constexpr quint16 DriftFlag = 1;
constexpr quint32 RowKind = 1;
constexpr quint32 ReplacementKind = 2;
constexpr qsizetype PayloadEnd = RecordSize - 4;

template <typename T>
void put(char*& out, T value) {
    qToLittleEndian(value, out);
    out += sizeof(T);
}

void putFloat(char*& out, float value) {
    put(out, std::bit_cast<quint32>(value));
}

void putText(QByteArray& out, const QByteArray& text) {
    out.append(static_cast<char>(text.size()));
    out.append(text);
}

// Reads a header field by field; any read past the end makes it fail.
class FieldReader {
public:
    explicit FieldReader(QByteArray bytes)
        : m_bytes(std::move(bytes)) {}

    bool ok() const { return m_ok; }

    template <typename T>
    T next() {
        if (!take(sizeof(T)))
            return T{};
        return qFromLittleEndian<T>(m_bytes.constData() + m_at - qsizetype(sizeof(T)));
    }
    float nextFloat() { return std::bit_cast<float>(next<quint32>()); }
    QByteArray nextText() {
        const auto size = next<quint8>();
        if (!take(size))
            return {};
        return m_bytes.sliced(m_at - size, size);
    }

private:
    bool take(qsizetype size) {
        if (!m_ok || m_bytes.size() - m_at < size)
            return m_ok = false;
        m_at += size;
        return true;
    }

    QByteArray m_bytes;
    qsizetype m_at = 0;
    bool m_ok = true;
};

} // namespace

QByteArray encodeHeader(const CaptureJournalHeader& header) {
    QByteArray bytes(PrefixSize + 12, '\0');
    char* out = bytes.data();
    std::memcpy(out, Magic, sizeof Magic);
    out += sizeof Magic;
    put<quint16>(out, Version);
    put<quint16>(out, 0); // the size, known at the end
    put<quint16>(out, static_cast<quint16>(header.signalSet));
    put<quint16>(out, header.drift ? DriftFlag : 0);
    putFloat(out, header.sampleFrequency);
    putFloat(out, header.minFz);
    putText(bytes, header.started.toString(Qt::ISODateWithMs).toLatin1());
    putText(bytes, header.plateSerial.toUtf8().left(255));
    putText(bytes, QByteArray(Columns));
    const auto size = static_cast<quint16>(bytes.size() + 4);
    qToLittleEndian(size, bytes.data() + sizeof Magic + 2);
    char crc[4];
    qToLittleEndian(crc32(bytes.constData(), std::size_t(bytes.size())), crc);
    bytes.append(crc, 4);
    return bytes;
}

qsizetype headerSize(const QByteArray& prefix, QString& error) {
    if (prefix.size() < PrefixSize || std::memcmp(prefix.constData(), Magic, sizeof Magic) != 0) {
        error = QStringLiteral("it is not a capture journal");
        return 0;
    }
    if (qFromLittleEndian<quint16>(prefix.constData() + 8) != Version) {
        error = QStringLiteral("it was written by another version of the program");
        return 0;
    }
    const auto size = qFromLittleEndian<quint16>(prefix.constData() + 10);
    if (size < PrefixSize + 12 + 3 + 4 || size > MaxHeaderSize) {
        error = QStringLiteral("its header is damaged");
        return 0;
    }
    return size;
}

bool decodeHeader(const QByteArray& bytes, CaptureJournalHeader& header, QString& error) {
    error = QStringLiteral("its header is damaged");
    const qsizetype checked = bytes.size() - 4;
    if (checked < PrefixSize || crc32(bytes.constData(), std::size_t(checked)) !=
                                    qFromLittleEndian<quint32>(bytes.constData() + checked))
        return false;
    FieldReader in(bytes.first(checked));
    in.next<quint64>(); // magic, version and size: checked already
    in.next<quint32>();
    const auto signalSet = in.next<quint16>();
    const auto flags = in.next<quint16>();
    const float frequency = in.nextFloat();
    const float minFz = in.nextFloat();
    const QDateTime started =
        QDateTime::fromString(QString::fromLatin1(in.nextText()), Qt::ISODateWithMs);
    const QString serial = QString::fromUtf8(in.nextText());
    const QByteArray columns = in.nextText();
    if (!in.ok() || signalSet > 2 || !(frequency > 0) || !std::isfinite(frequency) ||
        !std::isfinite(minFz) || !started.isValid() || columns != Columns)
        return false;
    header = {
        serial, static_cast<DisplayType>(signalSet), (flags & DriftFlag) != 0, frequency, minFz,
        started};
    error.clear();
    return true;
}

namespace {

void seal(char* record) {
    char* out = record + PayloadEnd;
    put(out, crc32(record, std::size_t(PayloadEnd)));
}

} // namespace

void encodeRow(const CaptureRow& row, char* out) {
    char* at = out;
    put(at, RowKind);
    for (const Float3* values : {&row.volts, &row.forces, &row.postural})
        for (const float value : *values)
            putFloat(at, value);
    seal(out);
}

void encodeReplacement(const Replacement& replacement, char* out) {
    std::memset(out, 0, RecordSize);
    char* at = out;
    put(at, ReplacementKind);
    put(at, replacement.first);
    put(at, replacement.liveCount);
    put(at, replacement.blockCount);
    seal(out);
}

Record decodeRecord(const char* in) {
    if (crc32(in, std::size_t(PayloadEnd)) != qFromLittleEndian<quint32>(in + PayloadEnd))
        return {};
    const auto kind = qFromLittleEndian<quint32>(in);
    const char* at = in + 4;
    if (kind == RowKind) {
        CaptureRow row;
        for (Float3* values : {&row.volts, &row.forces, &row.postural}) {
            for (float& value : *values) {
                value = std::bit_cast<float>(qFromLittleEndian<quint32>(at));
                at += 4;
            }
        }
        return row;
    }
    if (kind == ReplacementKind) {
        return Replacement{qFromLittleEndian<qint64>(at), qFromLittleEndian<qint64>(at + 8),
                           qFromLittleEndian<qint64>(at + 16)};
    }
    return {};
}

} // namespace kx::journal
