#include "support/QtClock.h"

#include <QTimer>
#include <chrono>

namespace kx {

namespace {

class QtTimer final : public Timer {
public:
    explicit QtTimer(QObject* parent)
        : Timer(parent) {
        m_timer.setTimerType(Qt::PreciseTimer);
        connect(&m_timer, &QTimer::timeout, this, &Timer::timeout);
    }

protected:
    void rearm() override {
        if (isRunning())
            m_timer.start(interval());
        else
            m_timer.stop();
    }

private:
    QTimer m_timer;
};

} // namespace

quint32 QtClock::tickCount() const {
    // steady_clock counts from boot on Linux, like the system tick count elsewhere.
    using namespace std::chrono;
    return static_cast<quint32>(
        duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

QDateTime QtClock::currentDateTime() const {
    return QDateTime::currentDateTime();
}

Timer* QtClock::createTimer(QObject* parent) {
    return new QtTimer(parent);
}

void QtClock::singleShot(int ms, QObject* context, std::function<void()> action) {
    QTimer::singleShot(ms, Qt::PreciseTimer, context, std::move(action));
}

} // namespace kx
