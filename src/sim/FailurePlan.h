#pragma once

#include <QHash>
#include <QString>
#include <optional>
#include <utility>

namespace kx {

// Operations of a plate made to fail on demand: the next call of any operation, every call of
// one operation named as in PlateDevice ("SampleFrequency", "SetGageVoltage", ...), or one
// call of it further on (the fifth of nine matrix cells written, say).
class FailurePlan {
public:
    void failNextCall(const QString& message) { m_next = message; }
    void failEveryCall(const QString& operation, const QString& message) {
        m_every.insert(operation, message);
    }
    // The call of `operation` after `callsFirst` calls that succeed fails, once.
    void failOneCall(const QString& operation, int callsFirst, const QString& message) {
        m_counted.insert(operation, {callsFirst, message});
    }
    void clear();

    // Throws PlateError with the planned message when `operation` is to fail.
    void check(const char* operation);

private:
    std::optional<QString> m_next;
    QHash<QString, QString> m_every;
    QHash<QString, std::pair<int, QString>> m_counted; // calls still to succeed, message
};

} // namespace kx
