#include "measure/RefreshThrottle.h"

namespace kx {

bool RefreshThrottle::due(quint32 now, double intervalMs) {
    if (m_last && static_cast<double>(static_cast<quint32>(now - *m_last)) <= intervalMs)
        return false;
    m_last = now;
    return true;
}

} // namespace kx
