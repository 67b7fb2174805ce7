#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <functional>
#include <gtest/gtest.h>

namespace kx::test {

// Runs the event loop until `done`, for the threads that write files to report back. One that
// never does fails the test instead of hanging it: the minute is a guard, far above any real
// wait here. Use as ASSERT_TRUE(eventsUntil(...)).
inline ::testing::AssertionResult eventsUntil(const std::function<bool()>& done) {
    const QDeadlineTimer guard(std::chrono::minutes(1));
    while (!done() && !guard.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    if (done())
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "what was waited for never came";
}

} // namespace kx::test
