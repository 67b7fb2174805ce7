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

// Equal due times fire in the order they were scheduled.
TEST(ManualClock, EverythingDueFiresInTimeOrderAtItsOwnTick) {
    ManualClock clock;
    QObject owner;
    std::vector<std::pair<char, quint32>> fired;
    const auto record = [&](char what) { fired.emplace_back(what, clock.tickCount()); };
    Timer* fast = clock.createTimer(&owner);
    Timer* slow = clock.createTimer(&owner);
    QObject::connect(fast, &Timer::timeout, [&] { record('f'); });
    QObject::connect(slow, &Timer::timeout, [&] { record('s'); });
    clock.singleShot(100, &owner, [&] { record('1'); });
    fast->start(100);
    slow->start(250);
    clock.singleShot(100, &owner, [&] { record('2'); });
    clock.singleShot(150, &owner, [&] { record('o'); });

    clock.advance(300);
    const std::vector<std::pair<char, quint32>> expected{
        {'1', 100}, {'f', 100}, {'2', 100}, {'o', 150}, {'f', 200}, {'s', 250}, {'f', 300}};
    EXPECT_EQ(fired, expected);
    EXPECT_EQ(clock.tickCount(), 300u);
}

TEST(ManualClock, TimerFollowsIntervalAndEnabledLikeADialogTimer) {
    ManualClock clock;
    QObject owner;
    std::vector<quint32> fired;
    Timer* timer = clock.createTimer(&owner);
    QObject::connect(timer, &Timer::timeout, [&] { fired.push_back(clock.tickCount()); });

    timer->setInterval(500); // not enabled yet
    clock.advance(1000);
    timer->setEnabled(true);
    clock.advance(400);
    timer->setInterval(500); // restarts the countdown: due at 1900, not 1500
    clock.advance(500);
    timer->setInterval(0); // an interval of 0 never fires
    clock.advance(5000);
    EXPECT_EQ(fired, std::vector<quint32>{1900});
}

TEST(ManualClock, HandlersMayStopDeleteOrScheduleDuringAnAdvance) {
    ManualClock clock;
    QObject owner;
    std::vector<quint32> at;
    Timer* once = clock.createTimer(&owner);
    QObject::connect(once, &Timer::timeout, [&] {
        at.push_back(clock.tickCount());
        once->setEnabled(false);
        clock.singleShot(0, &owner, [&] { at.push_back(clock.tickCount()); });
    });
    Timer* doomed = clock.createTimer(&owner);
    QObject::connect(doomed, &Timer::timeout, [&] {
        at.push_back(clock.tickCount());
        delete doomed;
    });
    once->start(500);
    doomed->start(10);
    clock.advance(2000);
    EXPECT_EQ(at, (std::vector<quint32>{10, 500, 500}));
}

// As a handler's nested event loop does: time never goes back after it.
TEST(ManualClock, AnAdvanceFromAHandlerMovesTimeOnForGood) {
    ManualClock clock;
    QObject owner;
    std::vector<quint32> at;
    clock.singleShot(10, &owner, [&] { clock.advance(50); });
    clock.singleShot(30, &owner, [&] { at.push_back(clock.tickCount()); });
    clock.advance(20);
    EXPECT_EQ(at, std::vector<quint32>{30});
    EXPECT_EQ(clock.tickCount(), 60u);
    EXPECT_EQ(clock.msUntilNextDue(), std::nullopt);
}

TEST(ManualClock, NothingFiresIntoADestroyedContextOrClock) {
    QObject owner;
    Timer* timer = nullptr;
    int runs = 0;
    {
        ManualClock clock;
        clock.createTimer(&owner); // never armed: destroyed with the owner, after the clock
        {
            auto context = std::make_unique<QObject>();
            clock.singleShot(10, context.get(), [&] { ++runs; });
        }
        clock.advance(20);
        timer = clock.createTimer(&owner);
        timer->start(10);
    }
    EXPECT_EQ(runs, 0);
    timer->setInterval(20); // must not reach the destroyed clock (the sanitizer build checks)
}

TEST(ManualClock, CalendarIsTheOriginPlusTheTicksAdvanced) {
    const QDateTime origin(QDate(2025, 12, 31), QTime(23, 59, 30));
    ManualClock clock(0xFFFFFF00u, origin);
    EXPECT_EQ(clock.currentDateTime(), origin);
    clock.advance(45'000); // across midnight and the tick counter's wrap
    EXPECT_EQ(clock.currentDateTime(), QDateTime(QDate(2026, 1, 1), QTime(0, 0, 15)));
}
