#include "FileBytes.h"
#include "FileSizeLimit.h"
#include "RecordingPrompt.h"
#include "TempEnvironment.h"
#include "device/SettingsSaveNotice.h"
#include "device/ToolDialog.h"
#include "resources/StringTable.h"
#include "support/IniFile.h"
#include "support/ManualClock.h"
#include "support/Settings.h"
#include "support/SettingsKeys.h"

#include <QTest>
#include <gtest/gtest.h>

namespace kx {
namespace {

// The smallest dialog: it records what the base class asks of it.
class ProbeDialog : public ToolDialog {
public:
    ProbeDialog(const ToolContext& context, int block)
        : ToolDialog(context, block) {}
    using ToolDialog::text;
    int loadings = 0;
    int unloadings = 0;

protected:
    void loading() override { ++loadings; }
    void unloading() override { ++unloadings; }
};

TEST(ToolDialog, EscapeOrAnyWayOfClosingUnloadsOnce) {
    ManualClock clock;
    test::RecordingPrompt prompt;
    ProbeDialog dialog{ToolContext{clock, prompt}, strings::ScaleBlock};
    int unloaded = 0;
    QObject::connect(&dialog, &ToolDialog::unloaded, [&] { ++unloaded; });
    dialog.show();
    dialog.hide();
    dialog.show();
    EXPECT_EQ(dialog.loadings, 1) << "loads once, on its first show";
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_FALSE(dialog.isVisible());
    dialog.reject();
    dialog.close();
    EXPECT_EQ(dialog.unloadings, 1);
    EXPECT_EQ(unloaded, 1);
    // Texts are numbered within the dialog's block.
    EXPECT_EQ(dialog.text(901), QStringLiteral("Ready (Buffer Overrun)"));
}

// Saves a setting and a profile value while it unloads, as the tool dialogs do.
class SavingDialog : public ToolDialog {
public:
    SavingDialog(const ToolContext& context, int value)
        : ToolDialog(context, strings::MeterBlock)
        , m_value(value) {}

protected:
    void unloading() override {
        SaveSettingLong(SettingsRoot::CurrentUser, kMeterKey, "Refresh Rate (Hz)", m_value);
        IniFile::sharedProfile().setValue("Noise", "Channels", QString::number(m_value));
    }

private:
    int m_value;
};

// A full disk: the settings file and the profile are each told of once, however many windows
// close meanwhile; the values stay in effect and are written when a window closes after the
// disk has room. A new failure is told again, and at the end what is lost is told.
TEST(ToolDialog, SettingsThatCannotBeSavedAreToldOnceAndSavedWhenTheDiskHasRoom) {
    test::TempEnvironment environment;
    ManualClock clock;
    test::RecordingPrompt prompt;
    const auto openAndClose = [&](int value) {
        SavingDialog dialog{ToolContext{clock, prompt}, value};
        dialog.show();
        dialog.close();
    };
    const auto stored = [] {
        return test::fileBytes(settingsLocation()) +
               test::fileBytes(IniFile::sharedProfile().path());
    };
    const auto said = [&](const QString& file, const char* ending) {
        return QStringList{"critical:Settings could not be saved in " + file + ":\n" +
                           "The disk took only part of the file: File too large.\n\n" + ending};
    };
    const char* inEffect =
        "They stay in effect while the program runs, and it tries again whenever "
        "a window closes.";
    openAndClose(1);
    const QByteArray before = stored();
    ASSERT_TRUE(before.contains("Channels=1"));
    {
        const FileSizeLimit full(1);
        openAndClose(2);
        openAndClose(3);
        EXPECT_EQ(prompt.events, said(settingsLocation(), inEffect) +
                                     said(IniFile::sharedProfile().path(), inEffect));
        EXPECT_EQ(stored(), before);
        EXPECT_EQ(GetSettingLong(SettingsRoot::CurrentUser, kMeterKey, "Refresh Rate (Hz)", 0), 3);
        EXPECT_EQ(IniFile::sharedProfile().value("Noise", "Channels", {}), "3");
    }
    prompt.events.clear();
    openAndClose(4);
    EXPECT_TRUE(prompt.events.isEmpty());
    EXPECT_TRUE(stored().contains("Channels=4"));
    {
        const FileSizeLimit full(1);
        openAndClose(5);
        EXPECT_EQ(prompt.events.size(), 2) << "a new failure is told again";
        prompt.events.clear();
        noticeSettingsLostAtExit(prompt);
        EXPECT_EQ(prompt.events, said(settingsLocation(), "They are lost when the program ends.") +
                                     said(IniFile::sharedProfile().path(),
                                          "They are lost when the program ends."));
    }
}

} // namespace
} // namespace kx
