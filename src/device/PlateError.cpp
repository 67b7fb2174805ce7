#include "device/PlateError.h"

#include "support/Prompt.h"

namespace kx {

PlateError::PlateError(QString message)
    : m_message(std::move(message))
    , m_utf8(m_message.toUtf8()) {}

bool runDeviceHandler(Prompt& prompt, const std::function<void()>& handler) {
    try {
        handler();
        return true;
    } catch (const PlateError& error) {
        prompt.critical(error.message());
        return false;
    }
}

} // namespace kx
