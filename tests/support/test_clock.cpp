#include "support/Clock.h"
#include "support/ManualClock.h"

#include <QObject>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

using kx::ManualClock;
using kx::Timer;

TEST(ManualClock, TickCountWrapsLikeTheSystemCounter) {
    ManualClock clock(0xFFFFFFF0u);
    const quint32 before = clock.tickCount();
    clock.advance(0x20);
    EXPECT_EQ(clock.tickCount(), 0x10u);
    EXPECT_EQ(quint32(clock.tickCount() - before), 0x20u);
}

TEST(ManualClock, TimersAndSingleShotsFireInTimeOrderAtTheirOwnTicks) {
    ManualClock clock;
    QObject owner;
    std::vector<std::pair<char, quint32>> fired;
    Timer* fast = clock.createTimer(&owner);
    Timer* slow = clock.createTimer(&owner);
    QObject::connect(fast, &Timer::timeout, [&] { fired.emplace_back('f', clock.tickCount()); });
    QObject::connect(slow, &Timer::timeout, [&] { fired.emplace_back('s', clock.tickCount()); });
    fast->start(100);
    slow->start(250);
    clock.singleShot(150, &owner, [&] { fired.emplace_back('o', clock.tickCount()); });

    clock.advance(300);
    const std::vector<std::pair<char, quint32>> expected{
        {'f', 100}, {'o', 150}, {'f', 200}, {'s', 250}, {'f', 300}};
    EXPECT_EQ(fired, expected);
    EXPECT_EQ(clock.tickCount(), 300u);
}

TEST(ManualClock, EqualDueTimesFireInTheOrderTheyWereScheduled) {
    ManualClock clock;
    QObject owner;
    std::vector<int> order;
    clock.singleShot(10, &owner, [&] { order.push_back(1); });
    Timer* timer = clock.createTimer(&owner);
    QObject::connect(timer, &Timer::timeout, [&] { order.push_back(2); });
    timer->start(10);
    clock.singleShot(10, &owner, [&] { order.push_back(3); });
    clock.advance(10);
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST(ManualClock, TimerFollowsIntervalAndEnabledLikeADialogTimer) {
    ManualClock clock;
    QObject owner;
    int ticks = 0;
    Timer* timer = clock.createTimer(&owner);
    QObject::connect(timer, &Timer::timeout, [&] { ++ticks; });

    timer->setInterval(500); // not enabled yet
    clock.advance(1000);
    EXPECT_EQ(ticks, 0);

    timer->setEnabled(true);
    clock.advance(400);
    timer->setInterval(500); // restarts the countdown
    clock.advance(400);
    EXPECT_EQ(ticks, 0);
    clock.advance(100);
    EXPECT_EQ(ticks, 1);

    timer->setInterval(0); // an interval of 0 never fires
    clock.advance(5000);
    EXPECT_EQ(ticks, 1);
}

TEST(ManualClock, HandlerMayStopOrDeleteItsOwnTimer) {
    ManualClock clock;
    QObject owner;
    int ticks = 0;
    Timer* once = clock.createTimer(&owner);
    QObject::connect(once, &Timer::timeout, [&] {
        ++ticks;
        once->setEnabled(false);
    });
    once->start(500);
    clock.advance(2000);
    EXPECT_EQ(ticks, 1);

    Timer* doomed = clock.createTimer(&owner);
    QObject::connect(doomed, &Timer::timeout, [&] {
        ++ticks;
        delete doomed;
    });
    doomed->start(10);
    clock.advance(100);
    EXPECT_EQ(ticks, 2);
}

TEST(ManualClock, SingleShotScheduledFromAHandlerAtZeroDelayRunsInTheSameAdvance) {
    ManualClock clock;
    QObject owner;
    std::vector<quint32> at;
    clock.singleShot(5, &owner, [&] {
        at.push_back(clock.tickCount());
        clock.singleShot(0, &owner, [&] { at.push_back(clock.tickCount()); });
    });
    clock.advance(5);
    EXPECT_EQ(at, (std::vector<quint32>{5, 5}));
}

TEST(ManualClock, SingleShotIsDroppedWhenItsContextDies) {
    ManualClock clock;
    int runs = 0;
    {
        auto context = std::make_unique<QObject>();
        clock.singleShot(10, context.get(), [&] { ++runs; });
    }
    clock.advance(20);
    EXPECT_EQ(runs, 0);
}

TEST(ManualClock, TimersOutliveTheirClockSafely) {
    QObject owner;
    Timer* timer = nullptr;
    {
        ManualClock clock;
        timer = clock.createTimer(&owner);
        timer->start(10);
    }
    timer->setInterval(20); // must not reach the destroyed clock
    SUCCEED();
}
