#include "RecordingPrompt.h"
#include "device/PlateError.h"

#include <gtest/gtest.h>
#include <stdexcept>

TEST(RunDeviceHandler, PlateErrorEndsTheHandlerAndReachesTheUser) {
    kx::test::RecordingPrompt prompt;
    bool after = false;
    const bool ok = kx::runDeviceHandler(prompt, [&] {
        throw kx::PlateError(QStringLiteral("Write to plate failed"));
        after = true;
    });
    EXPECT_FALSE(ok);
    EXPECT_FALSE(after);
    EXPECT_EQ(prompt.messages, QStringList{QStringLiteral("Write to plate failed")});
}

TEST(RunDeviceHandler, OtherExceptionsAreNotSwallowed) {
    kx::test::RecordingPrompt prompt;
    EXPECT_THROW(kx::runDeviceHandler(prompt, [] { throw std::logic_error("bug"); }),
                 std::logic_error);
    EXPECT_TRUE(prompt.messages.isEmpty());
}
