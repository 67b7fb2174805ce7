#include "BusyClock.h"
#include "support/ManualClock.h"
#include "support/ScaledClock.h"

#include <QObject>
#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <vector>

using kx::Clock;
using kx::ManualClock;
using kx::ScaledClock;
using kx::Timer;

namespace {

// Every tick at which a timer of the clock fired.
struct Firings {
    Firings(Clock& clock, int intervalMs)
        : timer(clock.createTimer(&owner)) {
        QObject::connect(timer, &Timer::timeout,
                         [this, &clock] { ticks.push_back(clock.tickCount()); });
        timer->start(intervalMs);
    }
    // Every firing exactly one interval after the one before.
    bool evenlySpaced(quint32 from, quint32 interval) const {
        for (quint32 tick : ticks) {
            if (tick - from != interval)
                return false;
            from = tick;
        }
        return true;
    }

    QObject owner;
    Timer* timer;
    std::vector<quint32> ticks;
};

} // namespace

TEST(ScaledClock, TimersSingleShotsAndTheCalendarRunAtTheChosenSpeed) {
    for (const double speed : {1.0, 10.0, 100.0, 1000.0}) {
        ManualClock base(5000);
        ScaledClock clock(base, speed);
        const quint32 start = clock.tickCount();
        const QDateTime origin = clock.currentDateTime();
        EXPECT_EQ(origin, base.currentDateTime()) << "the calendar starts at the base's";
        Firings timer(clock, 1000);
        QObject owner;
        quint32 shotAt = 0;
        clock.singleShot(3000, &owner, [&] { shotAt = clock.tickCount(); });

        base.advance(10'000);
        EXPECT_EQ(timer.ticks.size(), std::size_t(10 * speed)) << speed;
        EXPECT_TRUE(timer.evenlySpaced(start, 1000)) << speed;
        EXPECT_EQ(shotAt - start, 3000u) << speed;
        EXPECT_EQ(quint32(clock.tickCount() - start), quint32(10'000 * speed)) << speed;
        EXPECT_EQ(origin.msecsTo(clock.currentDateTime()), qint64(10'000 * speed)) << speed;
        EXPECT_EQ(clock.achievedSpeed(), speed);
    }
}

// What is only shown refreshes as often as at ×1: the screen shows no more.
TEST(ScaledClock, WallTimersAndTicksKeepToTheBaseClock) {
    ManualClock base;
    ScaledClock clock(base, 100);
    QObject owner;
    int refreshes = 0;
    Timer* display = clock.createWallTimer(&owner);
    QObject::connect(display, &Timer::timeout, [&] { ++refreshes; });
    display->start(100);
    const quint32 start = clock.wallTickCount();
    base.advance(1000);
    EXPECT_EQ(refreshes, 10);
    EXPECT_EQ(quint32(clock.wallTickCount() - start), 1000u);
}

TEST(ScaledClock, ASpeedChangeKeepsTimeContinuous) {
    ManualClock base;
    ScaledClock clock(base, 10);
    const quint32 start = clock.tickCount();
    Firings timer(clock, 700);
    // Between two wakes of the base: what passed until the change counts at the old speed.
    base.advance(1010);
    clock.setSpeed(100);
    base.advance(1010);
    const quint32 fast = clock.tickCount() - start;
    EXPECT_LE(fast, 10'100u + 101'000u);
    EXPECT_GT(fast, 10'100u + 101'000u - ScaledClock::MaxWakeMs * 100);
    clock.setSpeed(1);
    base.advance(1010);
    // Time moves when the base wakes the clock: the last few ms may still be owed.
    const quint32 elapsed = clock.tickCount() - start;
    EXPECT_LE(elapsed, 10'100u + 101'000u + 1010u);
    EXPECT_GT(elapsed, 10'100u + 101'000u + 1010u - ScaledClock::MaxWakeMs);
    EXPECT_TRUE(timer.evenlySpaced(start, 700));
    EXPECT_EQ(timer.ticks.size(), std::size_t(elapsed / 700));

    clock.setSpeed(5000);
    EXPECT_EQ(clock.speed(), ScaledClock::MaxSpeed);
    clock.setSpeed(0);
    EXPECT_EQ(clock.speed(), ScaledClock::MinSpeed);
}

// Scheduled between two wakes of the base, as by a click: fires on time, not at the next
// wake planned before it.
TEST(ScaledClock, WhatIsScheduledBetweenWakesFiresOnTime) {
    ManualClock base;
    ScaledClock clock(base, 1);
    base.advance(ScaledClock::MaxWakeMs / 2);
    QObject owner;
    quint32 firedAtBase = 0;
    clock.singleShot(3, &owner, [&] { firedAtBase = base.tickCount(); });
    base.advance(ScaledClock::MaxWakeMs);
    EXPECT_EQ(firedAtBase, quint32(ScaledClock::MaxWakeMs / 2 + 3));
}

// Handlers that take 5 ms of the machine's time for every 10 ms of the clock's cannot keep
// ×10: time runs at about ×2, every firing still comes in order and none is lost.
TEST(ScaledClock, WhenTheHandlersCannotKeepUpTimeRunsSlowerAndNothingIsLost) {
    kx::test::BusyClock base;
    ScaledClock clock(base, 10);
    const quint32 start = clock.tickCount();
    Firings timer(clock, 10);
    // The work each wake of the base did, by the base's ticks without the work.
    std::map<quint32, quint32> workAt;
    const auto busy = QObject::connect(timer.timer, &Timer::timeout, [&] {
        base.busyMs += 5;
        workAt[base.manual.tickCount()] += 5;
    });

    base.manual.advance(3000);
    quint32 longestWork = 0;
    for (const auto& [tick, work] : workAt)
        longestWork = std::max(longestWork, work);
    EXPECT_LT(longestWork, 100u) << "the work is done in steps, the event loop runs between";
    EXPECT_EQ(clock.speed(), 10);
    EXPECT_NEAR(clock.achievedSpeed(), 2.0, 0.2);
    EXPECT_TRUE(timer.evenlySpaced(start, 10));
    EXPECT_EQ(timer.ticks.size(), std::size_t(quint32(clock.tickCount() - start) / 10));

    // Once the work is light again, time goes on at the speed asked for, with no more of a
    // rush than the backlog kept.
    QObject::disconnect(busy);
    const quint32 light = clock.tickCount();
    base.manual.advance(2000);
    const double ran = quint32(clock.tickCount() - light);
    EXPECT_GE(ran, 20'000 - ScaledClock::MaxWakeMs * 10);
    EXPECT_LE(ran, 20'000 + (ScaledClock::MaxBacklogMs + ScaledClock::WorkBudgetMs + 10) * 10)
        << "the backlog, and the time the last busy step took";
    EXPECT_NEAR(clock.achievedSpeed(), 10.0, 0.5);
}
