#include "TempEnvironment.h"
#include "scale/ScaleSettings.h"
#include "support/Settings.h"
#include "support/SettingsKeys.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

constexpr auto User = SettingsRoot::CurrentUser;

qint32 stored(const char* key, const char* name) {
    return GetSettingLong(User, QLatin1String(key), QLatin1String(name), 123456);
}

TEST(ScaleSettings, SavedAsWholeNumbersRoundedHalfToEvenWithDurationsInMilliseconds) {
    test::TempEnvironment environment;
    ScaleSettings s;
    s.AutoZeroEnabled = true;
    s.MinTare = 1.5f;
    s.MaxTare = 2.5f;
    s.AutoZeroDuration = 0.25f;
    s.ZeroDuration = 2.5f;
    s.ScaleFrequency = 100.5f;
    s.AverageResetDifference = 3.5f;
    s.save();
    EXPECT_EQ(stored(kScaleAutozeroKey, "Enabled"), -1);
    EXPECT_EQ(stored(kScaleAutozeroKey, "Min Tare (N)"), 2);
    EXPECT_EQ(stored(kScaleAutozeroKey, "Max Tare (N)"), 2);
    EXPECT_EQ(stored(kScaleAutozeroKey, "Duration (ms)"), 250);
    EXPECT_EQ(stored(kScaleKey, "Zero Duration (ms)"), 2500);
    EXPECT_EQ(stored(kScaleKey, "Frequency (Hz)"), 100);
    EXPECT_EQ(stored(kScaleKey, "Average Reset Difference (N)"), 4);
    EXPECT_EQ(ScaleSettings::load().ZeroDuration, 2.5f);
}

} // namespace
} // namespace kx
