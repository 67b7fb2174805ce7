#include "calibration/CalFileReader.h"

#include "resources/StringTable.h"

#include <QFile>
#include <QFileInfo>
#include <QIODevice>
#include <QtEndian>

namespace kx {

namespace {

namespace s = strings::calibrate;

// Larger files are not calibration files; nothing more is read from them.
constexpr qint64 MaxFileBytes = 64 * 1024 * 1024;

// The least a point takes in fields 7 to 17 and a linearity step in fields 21 to 27, bytes:
// what bounds a count before anything is allocated from it.
constexpr qint64 BytesPerPoint = 8 + 8 + 2 + 8 + 2 + 8 + 4 * 8 * 2 + 3 * 8 * 3;
constexpr qint64 BytesPerStep = 2 + 8 + 3 * 8 * 2 + 8;

const char* const FieldNames[] = {
    "",
    "field 1 (number of points)",
    "field 2 (point radius)",
    "field 3 (plate X left)",
    "field 4 (plate X right)",
    "field 5 (plate Y top)",
    "field 6 (plate Y bottom)",
    "field 7 (point X)",
    "field 8 (point Y)",
    "field 9 (zero done)",
    "field 10 (zero dates)",
    "field 11 (data done)",
    "field 12 (data dates)",
    "field 13 (zero averages)",
    "field 14 (zero standard deviations)",
    "field 15 (data means)",
    "field 16 (data standard deviations)",
    "field 17 (expected loads)",
    "field 18 (number of linearity steps)",
    "field 19 (scaling zero done)",
    "field 20 (scaling zero date)",
    "field 21 (linearity steps done)",
    "field 22 (linearity step dates)",
    "field 23 (scaling zero averages)",
    "field 24 (scaling zero standard deviations)",
    "field 25 (linearity step means)",
    "field 26 (linearity step standard deviations)",
    "field 27 (linearity step loads)",
    "field 28 (scaling value)",
    "field 29 (zero temperatures)",
    "field 30 (data temperatures)",
    "field 31 (reserved)",
    "field 32 (linearity step temperatures)",
    "field 33 (reserved)",
    "field 34 (reserved)",
    "field 35 (gravity)",
    "field 36 (temperature)",
    "field 37 (relative humidity)",
    "field 38 (pressure)",
    "field 39 (pressure correction)",
};

struct Failure {
    QString message;
};

QString dimensions(const std::vector<qint64>& counts) {
    QStringList parts;
    for (const qint64 c : counts)
        parts << QString::number(c);
    return parts.isEmpty() ? QStringLiteral("(none)") : parts.join(QStringLiteral(" x "));
}

class Cursor {
public:
    explicit Cursor(const QByteArray& bytes)
        : m_bytes(bytes) {}

    qint64 remaining() const { return m_bytes.size() - m_at; }
    bool atEnd() const { return remaining() == 0; }
    void field(int number) { m_field = number; }

    template <typename T>
    T value() {
        if (remaining() < static_cast<qint64>(sizeof(T)))
            throw Failure{strings::text(s::FileTruncated).arg(QLatin1String(FieldNames[m_field]))};
        const T v = qFromLittleEndian<T>(m_bytes.constData() + m_at);
        m_at += static_cast<qint64>(sizeof(T));
        return v;
    }
    bool boolean() { return value<qint16>() != 0; }
    OleDate date() { return {value<double>()}; }
    QByteArray bytes(qint64 count) {
        if (remaining() < count)
            throw Failure{strings::text(s::FileTruncated).arg(QLatin1String(FieldNames[m_field]))};
        const QByteArray b = m_bytes.mid(m_at, count);
        m_at += count;
        return b;
    }

    // An array header that must give exactly these dimensions, all with lower bound 0.
    void header(const std::vector<qint64>& expected) {
        const qint16 count = value<qint16>();
        std::vector<qint64> found;
        bool matches = count == static_cast<qint16>(expected.size());
        for (qint16 d = 0; d < count && d < 8; ++d) {
            const qint32 elements = value<qint32>();
            const qint32 lowerBound = value<qint32>();
            found.push_back(elements);
            matches = matches && lowerBound == 0 && static_cast<std::size_t>(d) < expected.size() &&
                      elements == expected[static_cast<std::size_t>(d)];
        }
        if (!matches || count < 0 || count >= 8)
            throw Failure{strings::text(s::FileBadArray)
                              .arg(QLatin1String(FieldNames[m_field]), dimensions(found),
                                   dimensions(expected))};
    }

private:
    const QByteArray& m_bytes;
    qint64 m_at = 0;
    int m_field = 0;
};

// Fixed-size Variant payloads by type tag; others cannot be skipped safely.
qint64 variantSize(quint16 tag) {
    switch (tag) {
    case 0:
    case 1:
        return 0; // empty, null
    case 17:
        return 1; // byte
    case 2:
    case 11:
        return 2; // integer, Boolean
    case 3:
    case 4:
    case 10:
        return 4; // long, single, error
    case 5:
    case 6:
    case 7:
        return 8; // double, currency, date
    default:
        return -1;
    }
}

CalVariant readVariant(Cursor& in, int field) {
    in.field(field);
    CalVariant v;
    v.tag = in.value<quint16>();
    const qint64 size = variantSize(v.tag);
    if (size < 0)
        throw Failure{
            strings::text(s::FileBadVariant).arg(QLatin1String(FieldNames[field])).arg(v.tag)};
    v.value = in.bytes(size);
    return v;
}

} // namespace

CalFileReader::CalFileReader(CalEnvironment environment, std::vector<float> linearityLoads)
    : m_environment(environment)
    , m_linearityLoads(std::move(linearityLoads)) {}

std::optional<CalibrationRecord> CalFileReader::readFile(const QString& path) {
    if (QFileInfo(path).isDir()) {
        m_error = strings::text(s::FileIsFolder).arg(path);
        return std::nullopt;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        m_error = strings::text(s::FileCannotOpen).arg(path, file.errorString());
        return std::nullopt;
    }
    return read(file);
}

std::optional<CalibrationRecord> CalFileReader::read(QIODevice& device) {
    m_error.clear();
    // In pieces: asking for the largest size at once would allocate it for every file.
    QByteArray bytes;
    while (bytes.size() <= MaxFileBytes) {
        const QByteArray piece = device.read(64 * 1024);
        if (piece.isEmpty())
            break;
        bytes += piece;
    }
    if (bytes.isEmpty()) {
        m_error = strings::text(s::FileEmpty);
        return std::nullopt;
    }
    Cursor in(bytes);
    CalibrationRecord r;
    try {
        in.field(1);
        const qint32 p = in.value<qint32>();
        if (p < 1 || static_cast<qint64>(p) * BytesPerPoint > in.remaining())
            throw Failure{strings::text(s::FileBadPointCount).arg(p)};
        const auto P = static_cast<std::size_t>(p);
        r.points.resize(P);
        auto& pts = r.points;
        in.field(2);
        r.pointRadius = in.value<float>();
        in.field(3);
        r.plateXLeft = in.value<float>();
        in.field(4);
        r.plateXRight = in.value<float>();
        in.field(5);
        r.plateYTop = in.value<float>();
        in.field(6);
        r.plateYBottom = in.value<float>();
        const auto perPoint = [&](int field, auto read) {
            in.field(field);
            in.header({p});
            for (CalPoint& point : pts)
                read(point);
        };
        perPoint(7, [&](CalPoint& q) { q.x = in.value<double>(); });
        perPoint(8, [&](CalPoint& q) { q.y = in.value<double>(); });
        perPoint(9, [&](CalPoint& q) { q.zeroDone = in.boolean(); });
        perPoint(10, [&](CalPoint& q) { q.zeroDate = in.date(); });
        perPoint(11, [&](CalPoint& q) { q.dataDone = in.boolean(); });
        perPoint(12, [&](CalPoint& q) { q.dataDate = in.date(); });
        const auto table = [&](int field, auto member) {
            auto& first = pts.front().*member;
            const auto channels = static_cast<qint64>(first.size());
            in.field(field);
            in.header({channels, p});
            for (CalPoint& point : pts)
                for (double& v : point.*member)
                    v = in.value<double>();
        };
        table(13, &CalPoint::zeroAverage);
        table(14, &CalPoint::zeroStdDev);
        table(15, &CalPoint::dataMean);
        table(16, &CalPoint::dataStdDev);
        table(17, &CalPoint::expectedLoad);

        if (in.atEnd()) {
            m_layout = Layout::ThroughField17;
            for (const float load : m_linearityLoads) {
                LinearityStep step;
                step.appliedLoad = load;
                r.steps.push_back(step);
            }
            r.environment = m_environment;
            return r;
        }

        in.field(18);
        const qint32 t = in.value<qint32>();
        if (t < 0 || static_cast<qint64>(t) * BytesPerStep > in.remaining())
            throw Failure{strings::text(s::FileBadStepCount).arg(t)};
        r.steps.resize(static_cast<std::size_t>(t));
        auto& steps = r.steps;
        in.field(19);
        r.scalingZero.done = in.boolean();
        in.field(20);
        r.scalingZero.date = in.date();
        const auto perStep = [&](int field, auto read) {
            in.field(field);
            in.header({t});
            for (LinearityStep& step : steps)
                read(step);
        };
        perStep(21, [&](LinearityStep& s) { s.done = in.boolean(); });
        perStep(22, [&](LinearityStep& s) { s.date = in.date(); });
        for (const int field : {23, 24}) {
            in.field(field);
            in.header({4});
            for (double& v : field == 23 ? r.scalingZero.average : r.scalingZero.stdDev)
                v = in.value<double>();
        }
        for (const int field : {25, 26}) {
            in.field(field);
            in.header({t, 3});
            const auto member = field == 25 ? &LinearityStep::mean : &LinearityStep::stdDev;
            for (std::size_t c = 0; c < 3; ++c)
                for (LinearityStep& s : steps)
                    (s.*member)[c] = in.value<double>();
        }
        perStep(27,
                [&](LinearityStep& s) { s.appliedLoad = static_cast<float>(in.value<double>()); });
        in.field(28);
        r.scaleValue = in.value<float>();

        if (in.atEnd()) {
            m_layout = Layout::ThroughField28;
            r.environment = m_environment;
            return r;
        }
        perPoint(29, [&](CalPoint& q) { q.zeroTemperature = in.value<float>(); });
        perPoint(30, [&](CalPoint& q) { q.dataTemperature = in.value<float>(); });
        in.field(31);
        r.reserved = in.value<double>();
        perStep(32, [&](LinearityStep& s) { s.temperature = in.value<float>(); });
        r.reservedVariant1 = readVariant(in, 33);
        r.reservedVariant2 = readVariant(in, 34);

        if (in.atEnd()) {
            m_layout = Layout::ThroughField34;
            r.environment = m_environment;
            return r;
        }
        in.field(35);
        r.environment.gravity = in.value<double>();
        in.field(36);
        r.environment.temperature = in.value<float>();
        in.field(37);
        r.environment.humidity = in.value<float>();
        in.field(38);
        r.environment.pressure = in.value<double>();
        in.field(39);
        r.environment.pressureCorrection = in.value<double>();
        if (!in.atEnd())
            throw Failure{strings::text(s::FileTrailingBytes).arg(in.remaining())};
        m_layout = Layout::Full;
        return r;
    } catch (const Failure& failure) {
        m_error = failure.message;
        return std::nullopt;
    }
}

} // namespace kx
