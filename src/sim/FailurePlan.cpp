#include "sim/FailurePlan.h"

#include "device/PlateError.h"

namespace kx {

void FailurePlan::clear() {
    m_next.reset();
    m_every.clear();
}

void FailurePlan::check(const char* operation) {
    if (m_next) {
        const QString message = *std::exchange(m_next, std::nullopt);
        throw PlateError(message);
    }
    if (m_every.isEmpty())
        return;
    const auto found = m_every.constFind(QLatin1String(operation));
    if (found != m_every.constEnd())
        throw PlateError(*found);
}

} // namespace kx
