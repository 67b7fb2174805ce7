#pragma once

#include <QDateTime>
#include <QObject>
#include <QtGlobal>
#include <functional>

namespace kx {

class Timer;

// The one source of time for the program and the simulated plates. Dialogs never read the
// wall clock and never block to wait: they compare tick counts and schedule through here,
// so that tests can drive hours of operation in milliseconds with a manual clock.
class Clock {
public:
    virtual ~Clock() = default;

    // Milliseconds since an arbitrary origin, wrapping at 2^32 like the system tick count.
    // Compare ticks only through unsigned differences: quint32(now - then).
    virtual quint32 tickCount() const = 0;

    // The calendar date and time, local. Everything the program stamps with a date (the
    // calibration's acquisitions, the operator records, the counters' date) takes it from here.
    virtual QDateTime currentDateTime() const = 0;

    // A timer in the dialogs' style: an interval, an enabled switch and a timeout signal.
    // The parent owns it.
    virtual Timer* createTimer(QObject* parent) = 0;

    // Runs `action` once, `ms` milliseconds from now, unless `context` is destroyed first.
    virtual void singleShot(int ms, QObject* context, std::function<void()> action) = 0;

    // A timer and a tick count that keep to the machine's real time when this clock runs
    // faster, for what does not speed up with it: refreshing what is only shown (a progress
    // bar, a chart, a read-out; the screen shows no more at a higher speed) and waiting for an
    // outside program. The same as the above on a clock that does not run faster.
    virtual Timer* createWallTimer(QObject* parent) { return createTimer(parent); }
    virtual quint32 wallTickCount() const { return tickCount(); }
};

// Fires timeout() every interval() milliseconds while enabled. Setting the interval or
// enabling the timer starts its countdown anew; an interval of 0 never fires.
class Timer : public QObject {
    Q_OBJECT
public:
    int interval() const { return m_interval; }
    void setInterval(int ms);
    bool isEnabled() const { return m_enabled; }
    void setEnabled(bool enabled);
    // Interval and enabled in one step.
    void start(int ms);
    void stop() { setEnabled(false); }

Q_SIGNALS:
    void timeout();

protected:
    explicit Timer(QObject* parent)
        : QObject(parent) {}
    bool isRunning() const { return m_enabled && m_interval > 0; }
    // Called whenever the countdown must start again or stop; see isRunning().
    virtual void rearm() = 0;

private:
    int m_interval = 0;
    bool m_enabled = false;
};

} // namespace kx
