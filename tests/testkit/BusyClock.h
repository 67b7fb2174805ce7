#pragma once

#include "support/Clock.h"
#include "support/ManualClock.h"

namespace kx::test {

// The wall clock of a machine whose handlers take time: a manual clock's ticks plus the
// milliseconds the handlers say they spent, during which nothing could fire.
class BusyClock final : public Clock {
public:
    quint32 tickCount() const override { return manual.tickCount() + busyMs; }
    QDateTime currentDateTime() const override { return manual.currentDateTime(); }
    Timer* createTimer(QObject* parent) override { return manual.createTimer(parent); }
    void singleShot(int ms, QObject* context, std::function<void()> action) override {
        manual.singleShot(ms, context, std::move(action));
    }

    ManualClock manual;
    quint32 busyMs = 0;
};

} // namespace kx::test
