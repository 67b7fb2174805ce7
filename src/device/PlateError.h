#pragma once

#include <QString>
#include <exception>
#include <functional>

namespace kx {

class Prompt;

// What every failing operation of the plate library throws.
class PlateError : public std::exception {
public:
    explicit PlateError(QString message);
    const QString& message() const { return m_message; }
    const char* what() const noexcept override { return m_utf8.constData(); }

private:
    QString m_message;
    QByteArray m_utf8;
};

// The rule for every caller of the plate library: a handler (a click, a device event, a
// timer tick) runs its device calls through this boundary. A PlateError ends the handler,
// the user sees the library's message in a critical box, and the program keeps running.
// Returns false when the handler was ended by an error.
bool runDeviceHandler(Prompt& prompt, const std::function<void()>& handler);

} // namespace kx
