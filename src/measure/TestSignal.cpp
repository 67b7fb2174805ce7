#include "measure/TestSignal.h"

#include <cmath>

namespace kx {

float TestSignal::next() {
    const double pi = 4.0 * std::atan(1.0);
    const double value = m_t * m_t * std::sin(2.0 * pi * 30.0 * m_t);
    m_t += kStep;
    return static_cast<float>(value);
}

} // namespace kx
