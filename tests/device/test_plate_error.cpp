#include "RecordingPrompt.h"
#include "device/PlateError.h"

#include <gtest/gtest.h>
#include <stdexcept>

TEST(RunDeviceHandler, PlateErrorEndsTheHandlerAndReachesTheUserOthersPassThrough) {
    kx::test::RecordingPrompt prompt;
    bool after = false;
    EXPECT_FALSE(kx::runDeviceHandler(prompt, [&] {
        throw kx::PlateError(QStringLiteral("Write to plate failed"));
        after = true;
    }));
    EXPECT_FALSE(after);
    EXPECT_EQ(prompt.messages, QStringList{QStringLiteral("Write to plate failed")});
    EXPECT_THROW(kx::runDeviceHandler(prompt, [] { throw std::logic_error("bug"); }),
                 std::logic_error);
    EXPECT_EQ(prompt.messages.size(), 1);
}
