#pragma once

#include "support/Clock.h"
#include "support/ManualClock.h"

#include <QObject>
#include <deque>
#include <optional>

namespace kx {

// A clock that runs at a chosen multiple of a base clock (the real one in a run of the
// program, a manual one in tests): ticks, timers, single shots and the calendar all go `speed`
// times as fast. Its own time moves in steps whenever the base clock wakes it, and everything
// due on the way fires at its own due time and in order, exactly as under a manual clock; so
// the program does the same things at every speed, only sooner.
//
// A step's work stops after WorkBudgetMs of base time, so that the event loop stays
// responsive; what is left is caught up at the next wakes. When the handlers cannot keep up,
// no more than MaxBacklogMs of base time is kept owed and the rest is given up: time runs
// slower than asked, and achievedSpeed() says by how much. Nothing that falls due is skipped;
// it only comes later. A change of speed keeps time continuous.
// A speed given on a command line (--speed N): a whole number from ScaledClock::MinSpeed to
// ScaledClock::MaxSpeed; nothing for any other text.
std::optional<double> speedFromText(const QString& text);
// The one line that refuses any other text.
QString speedRefusal(const QString& text);

class ScaledClock final : public QObject, public Clock {
    Q_OBJECT
public:
    static constexpr double MinSpeed = 1;
    static constexpr double MaxSpeed = 1000;
    // The longest the base clock lets this one stand still, the most base time one step's
    // work may take, and the most base time owed and not yet run through, ms.
    static constexpr int MaxWakeMs = 20;
    static constexpr int WorkBudgetMs = 40;
    static constexpr int MaxBacklogMs = 1000;

    // The calendar starts at `origin`, by default at the base clock's date and time.
    explicit ScaledClock(Clock& base, double speed = 1,
                         const std::optional<QDateTime>& origin = std::nullopt,
                         QObject* parent = nullptr);

    quint32 tickCount() const override { return m_time.tickCount(); }
    QDateTime currentDateTime() const override { return m_time.currentDateTime(); }
    Timer* createTimer(QObject* parent) override { return m_time.createTimer(parent); }
    void singleShot(int ms, QObject* context, std::function<void()> action) override {
        m_time.singleShot(ms, context, std::move(action));
    }
    // The base clock's, whatever the speed.
    Timer* createWallTimer(QObject* parent) override { return m_base.createTimer(parent); }
    quint32 wallTickCount() const override { return m_base.tickCount(); }

    double speed() const { return m_speed; }
    // Clamped to MinSpeed..MaxSpeed.
    void setSpeed(double speed);
    // The speed time actually ran at over about the last second of base time (the speed asked
    // for until a second has passed).
    double achievedSpeed() const;

Q_SIGNALS:
    void speedChanged(double speed);

private:
    void wake();
    // Adds the base time since the last look to what is owed, at the present speed.
    void takeBaseTime();
    // Arms the base clock for the next due time, or for MaxWakeMs; `onlyIfSooner` leaves an
    // earlier planned wake alone.
    void planWake(bool onlyIfSooner);
    void noteProgress();

    Clock& m_base;
    ManualClock m_time;
    Timer* m_wake;
    double m_speed;
    quint32 m_lastBase;
    double m_owedMs = 0;  // of this clock's time, not yet run through
    quint32 m_wakeAt = 0; // base tick of the planned wake
    int m_depth = 0;      // wakes in progress (a handler's nested event loop wakes again)

    struct Progress {
        quint32 base;
        qint64 own;
    };
    std::deque<Progress> m_progress;
    qint64 m_ownElapsed = 0; // of this clock, since it was made
};

} // namespace kx
