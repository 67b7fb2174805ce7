#include "sim/FailurePlan.h"

#include "device/PlateError.h"

namespace kx {

void FailurePlan::clear() {
    m_next.reset();
    m_every.clear();
    m_counted.clear();
}

void FailurePlan::check(const char* operation) {
    if (m_next) {
        const QString message = *std::exchange(m_next, std::nullopt);
        throw PlateError(message);
    }
    const QLatin1String name(operation);
    if (const auto counted = m_counted.find(name); counted != m_counted.end()) {
        if (counted->first-- == 0) {
            const QString message = counted->second;
            m_counted.erase(counted);
            throw PlateError(message);
        }
    }
    const auto found = m_every.constFind(name);
    if (found != m_every.constEnd())
        throw PlateError(*found);
}

} // namespace kx
