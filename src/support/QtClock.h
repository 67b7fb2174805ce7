#pragma once

#include "support/Clock.h"

namespace kx {

// The clock of a real run: the monotonic system tick count and Qt's precise timers.
class QtClock final : public Clock {
public:
    quint32 tickCount() const override;
    QDateTime currentDateTime() const override;
    Timer* createTimer(QObject* parent) override;
    void singleShot(int ms, QObject* context, std::function<void()> action) override;
};

} // namespace kx
