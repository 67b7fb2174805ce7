#include "calibration/CalFileWriter.h"

#include "support/SaveAtomically.h"

#include <QDir>
#include <QFileInfo>
#include <QtEndian>
#include <cstring>

namespace kx {

namespace {

class RecordWriter {
public:
    QByteArray bytes;

    template <typename T>
    void value(T v) {
        char raw[sizeof(T)];
        qToLittleEndian(v, raw);
        bytes.append(raw, sizeof(T));
    }
    void boolean(bool v) { value<qint16>(v ? -1 : 0); }
    void date(OleDate d) { value<double>(d.days); }
    void variant(const CalVariant& v) {
        value<quint16>(v.tag);
        bytes.append(v.value);
    }
    // Dimensions first index first; every lower bound 0.
    void header(std::initializer_list<std::size_t> counts) {
        value<qint16>(static_cast<qint16>(counts.size()));
        for (const std::size_t count : counts) {
            value<qint32>(static_cast<qint32>(count));
            value<qint32>(0);
        }
    }
    template <typename Items, typename Put>
    void array(const Items& items, Put put) {
        header({items.size()});
        for (const auto& item : items)
            put(item);
    }
    // channels × items, the channel varying fastest.
    template <std::size_t Channels, typename Items, typename Get>
    void table(const Items& items, Get get) {
        header({Channels, items.size()});
        for (const auto& item : items) {
            const std::array<double, Channels>& values = get(item);
            for (const double v : values)
                value<double>(v);
        }
    }
};

} // namespace

QByteArray writeCalFile(const CalibrationRecord& r) {
    RecordWriter w;
    const auto& points = r.points;
    const auto& steps = r.steps;
    w.value<qint32>(static_cast<qint32>(points.size())); // 1
    w.value<float>(r.pointRadius);                       // 2
    w.value<float>(r.plateXLeft);                        // 3 .. 6
    w.value<float>(r.plateXRight);
    w.value<float>(r.plateYTop);
    w.value<float>(r.plateYBottom);
    w.array(points, [&](const CalPoint& p) { w.value<double>(p.x); }); // 7
    w.array(points, [&](const CalPoint& p) { w.value<double>(p.y); }); // 8
    w.array(points, [&](const CalPoint& p) { w.boolean(p.zeroDone); });
    w.array(points, [&](const CalPoint& p) { w.date(p.zeroDate); });
    w.array(points, [&](const CalPoint& p) { w.boolean(p.dataDone); });
    w.array(points, [&](const CalPoint& p) { w.date(p.dataDate); }); // 12
    w.table<4>(
        points, [](const CalPoint& p) -> const auto& { return p.zeroAverage; });
    w.table<4>(
        points, [](const CalPoint& p) -> const auto& { return p.zeroStdDev; });
    w.table<3>(
        points, [](const CalPoint& p) -> const auto& { return p.dataMean; });
    w.table<3>(
        points, [](const CalPoint& p) -> const auto& { return p.dataStdDev; });
    w.table<3>(
        points, [](const CalPoint& p) -> const auto& { return p.expectedLoad; }); // 17

    w.value<qint32>(static_cast<qint32>(steps.size())); // 18
    w.boolean(r.scalingZero.done);
    w.date(r.scalingZero.date);
    w.array(steps, [&](const LinearityStep& s) { w.boolean(s.done); });
    w.array(steps, [&](const LinearityStep& s) { w.date(s.date); });
    w.array(r.scalingZero.average, [&](double v) { w.value<double>(v); }); // 23
    w.array(r.scalingZero.stdDev, [&](double v) { w.value<double>(v); });  // 24
    // 25, 26: step by channel, the step varying fastest.
    for (const auto member : {&LinearityStep::mean, &LinearityStep::stdDev}) {
        w.header({steps.size(), 3});
        for (std::size_t c = 0; c < 3; ++c)
            for (const LinearityStep& s : steps)
                w.value<double>((s.*member)[c]);
    }
    w.array(steps, [&](const LinearityStep& s) { w.value<double>(s.appliedLoad); }); // 27
    w.value<float>(r.scaleValue);                                                    // 28

    w.array(points, [&](const CalPoint& p) { w.value<float>(p.zeroTemperature); }); // 29
    w.array(points, [&](const CalPoint& p) { w.value<float>(p.dataTemperature); }); // 30
    w.value<double>(r.reserved);                                                    // 31
    w.array(steps, [&](const LinearityStep& s) { w.value<float>(s.temperature); }); // 32
    w.variant(r.reservedVariant1);
    w.variant(r.reservedVariant2); // 34

    w.value<double>(r.environment.gravity); // 35
    w.value<float>(r.environment.temperature);
    w.value<float>(r.environment.humidity);
    w.value<double>(r.environment.pressure);
    w.value<double>(r.environment.pressureCorrection); // 39
    return w.bytes;
}

SaveResult saveCalFile(const QString& path, const CalibrationRecord& record) {
    return saveAtomically(path, writeCalFile(record));
}

QString nextCalFileName(const QString& folder, const QString& serial) {
    const QDir dir(folder);
    for (int n = 1;; ++n) {
        const QString path = dir.filePath(QStringLiteral("%1_%2.cal").arg(serial).arg(n));
        if (!QFileInfo::exists(path))
            return path;
    }
}

} // namespace kx
