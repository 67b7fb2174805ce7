#pragma once

#include <QtGlobal>
#include <optional>

namespace kx {

// Lets a read-out refresh at most once per interval: a refresh is due when more than the
// interval has passed since the last one (exactly the interval is not enough). The first
// refresh is always due. Ticks are the clock's wrapping milliseconds.
class RefreshThrottle {
public:
    // True when a refresh is due at `now`; it then counts as the last refresh.
    bool due(quint32 now, double intervalMs);

private:
    std::optional<quint32> m_last;
};

} // namespace kx
