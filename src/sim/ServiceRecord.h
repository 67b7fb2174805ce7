#pragma once

#include <QDateTime>
#include <QString>
#include <QtGlobal>

namespace kx {

// What a plate keeps about itself in its non-volatile memory: the temperature extremes it has
// seen, how often it was enumerated, how long it has been powered, and the last calibration
// and inspection with their operators. Ticks are the clock's milliseconds.
class ServiceRecord {
public:
    // Maintenance command codes.
    static constexpr qint16 ResetTemperatures = 157;
    static constexpr qint16 ResetTimeInService = 158;
    static constexpr qint16 ResetEnumerations = 160;

    struct OperatorRecord {
        QDateTime date; // invalid: never written
        QString operatorCode;
    };

    ServiceRecord() = default;
    ServiceRecord(float maxTemperature, float minTemperature, qint32 enumerations,
                  qint64 secondsInService);

    // Every temperature the plate reports updates the extremes.
    void observeTemperature(double celsius);
    float maxTemperature() const { return m_max; }
    float minTemperature() const { return m_min; }

    void enumerated() { ++m_enumerations; }
    qint32 enumerationCount() const { return m_enumerations; }

    void poweredOn(quint32 tick);
    void poweredOff(quint32 tick);
    qint64 timeInService(quint32 tick) const; // seconds

    OperatorRecord calibration;
    OperatorRecord inspection;

    // Throws PlateError for an unknown code.
    void execute(qint16 code, double celsius, quint32 tick);

private:
    float m_max = 0;
    float m_min = 0;
    qint32 m_enumerations = 0;
    qint64 m_milliseconds = 0; // before the present power-on
    bool m_powered = false;
    quint32 m_poweredAt = 0;
};

} // namespace kx
