#include "sim/ServiceRecord.h"

#include "device/PlateError.h"

#include <algorithm>

namespace kx {

ServiceRecord::ServiceRecord(float maxTemperature, float minTemperature, qint32 enumerations,
                             qint64 secondsInService)
    : m_max(maxTemperature)
    , m_min(minTemperature)
    , m_enumerations(enumerations)
    , m_milliseconds(secondsInService * 1000) {}

void ServiceRecord::observeTemperature(double celsius) {
    m_max = std::max(m_max, float(celsius));
    m_min = std::min(m_min, float(celsius));
}

void ServiceRecord::poweredOn(quint32 tick) {
    m_powered = true;
    m_poweredAt = tick;
}

void ServiceRecord::poweredOff(quint32 tick) {
    m_milliseconds += quint32(tick - m_poweredAt);
    m_powered = false;
}

qint64 ServiceRecord::timeInService(quint32 tick) const {
    return (m_milliseconds + (m_powered ? quint32(tick - m_poweredAt) : 0)) / 1000;
}

void ServiceRecord::execute(qint16 code, double celsius, quint32 tick) {
    switch (code) {
    case ResetTemperatures:
        m_max = m_min = float(celsius);
        return;
    case ResetTimeInService:
        m_milliseconds = 0;
        m_poweredAt = tick;
        return;
    case ResetEnumerations:
        m_enumerations = 0;
        return;
    default:
        throw PlateError(
            QStringLiteral("The plate does not know maintenance command %1.").arg(code));
    }
}

} // namespace kx
