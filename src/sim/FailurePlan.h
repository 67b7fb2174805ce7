#pragma once

#include <QHash>
#include <QString>
#include <optional>

namespace kx {

// Operations of a plate made to fail on demand: the next call of any operation, or every call
// of one operation named as in PlateDevice ("SampleFrequency", "SetGageVoltage", ...).
class FailurePlan {
public:
    void failNextCall(const QString& message) { m_next = message; }
    void failEveryCall(const QString& operation, const QString& message) {
        m_every.insert(operation, message);
    }
    void clear();

    // Throws PlateError with the planned message when `operation` is to fail.
    void check(const char* operation);

private:
    std::optional<QString> m_next;
    QHash<QString, QString> m_every;
};

} // namespace kx
