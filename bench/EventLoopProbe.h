#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <functional>

// Ticks every millisecond on the window's thread and keeps the longest time between two ticks:
// how long at most the thread kept the window from its events.
class EventLoopProbe {
public:
    EventLoopProbe() {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setInterval(1);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { tick(); });
    }

    void start() {
        m_longestNs = 0;
        m_clock.start();
        m_last = 0;
        m_timer.start();
    }
    // The longest gap since start(), in milliseconds.
    double stop() {
        tick();
        m_timer.stop();
        return double(m_longestNs) / 1e6;
    }

private:
    void tick() {
        const qint64 now = m_clock.nsecsElapsed();
        m_longestNs = std::max(m_longestNs, now - m_last);
        m_last = now;
    }

    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_last = 0;
    qint64 m_longestNs = 0;
};

// Runs the event loop for `ms` milliseconds of the real clock.
inline void runFor(int ms) {
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

// Runs the event loop until `done`, at most `limitMs`; false when it never came. `done` is
// asked every 20 ms, so that asking (a look at the disk, say) does not hold the loop up itself.
inline bool runUntil(const std::function<bool()>& done, qint64 limitMs) {
    QElapsedTimer clock;
    clock.start();
    qint64 asked = 0;
    while (clock.elapsed() < limitMs) {
        if (clock.elapsed() - asked >= 20) {
            if (done())
                return true;
            asked = clock.elapsed();
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
    return done();
}
