#include "support/Clock.h"

#include <algorithm>

namespace kx {

void Timer::setInterval(int ms) {
    m_interval = std::max(ms, 0);
    rearm();
}

void Timer::setEnabled(bool enabled) {
    m_enabled = enabled;
    rearm();
}

void Timer::start(int ms) {
    m_interval = std::max(ms, 0);
    m_enabled = true;
    rearm();
}

} // namespace kx
