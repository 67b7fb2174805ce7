#include "FileSizeLimit.h"
#include "FileText.h"
#include "PrintQString.h"
#include "TempEnvironment.h"
#include "support/Settings.h"
#include "support/SettingsFile.h"
#include "support/SettingsKeys.h"

#include <QDir>
#include <gtest/gtest.h>

using namespace kx;

namespace {

constexpr auto kUser = SettingsRoot::CurrentUser;

// Counts the warnings raised while alive.
class WarningCounter {
public:
    WarningCounter() { m_previous = qInstallMessageHandler(&WarningCounter::handle); }
    ~WarningCounter() { qInstallMessageHandler(m_previous); }
    int count() const { return s_count; }

private:
    static void handle(QtMsgType type, const QMessageLogContext&, const QString&) {
        if (type == QtWarningMsg)
            ++s_count;
    }
    static inline int s_count = 0;
    QtMessageHandler m_previous;
};

QStringList corruptFiles(const test::TempEnvironment& environment) {
    return QDir(environment.path()).entryList({"*.corrupt"}, QDir::Files);
}

TEST(SettingsFile, IsWrittenInTheRegistryExportLayout) {
    SettingsFile file;
    file.setValue(kUser, "Software\\Maker\\Tool", "Path", QStringLiteral("C:\\x \"y\"\nz"));
    file.setValue(kUser, "Software\\Maker\\Tool", "Rate", 10);
    file.setValue(kUser, "Software\\Maker\\Tool", "Enabled", -1);
    EXPECT_EQ(file.toText(), "; KX Force Platforms Control Panel user settings\n"
                             "\n[HKEY_CURRENT_USER\\Software]\n"
                             "\n[HKEY_CURRENT_USER\\Software\\Maker]\n"
                             "\n[HKEY_CURRENT_USER\\Software\\Maker\\Tool]\n"
                             "\"Path\"=\"C:\\\\x \\\"y\\\"\\nz\"\n"
                             "\"Rate\"=dword:0000000a\n"
                             "\"Enabled\"=dword:ffffffff\n");

    const std::optional<SettingsFile> read = SettingsFile::fromText(file.toText());
    ASSERT_TRUE(read);
    EXPECT_EQ(read->value(kUser, "software\\maker\\tool", "path"),
              SettingValue(QStringLiteral("C:\\x \"y\"\nz")));
    EXPECT_EQ(read->value(kUser, "Software\\Maker\\Tool", "Enabled"), SettingValue(-1));
    EXPECT_EQ(read->toText(), file.toText());
}

TEST(SettingsFile, AcceptsHandEditedText) {
    const std::optional<SettingsFile> file =
        SettingsFile::fromText("\xEF\xBB\xBF; edited by hand\r\n\r\n"
                               "  [hkey_current_user\\Software\\A]  \r\n"
                               "\"n\"=DWORD:7F\r\n"
                               "; a comment\r\n"
                               "\"t\"=\"\"\r\n");
    ASSERT_TRUE(file);
    EXPECT_EQ(file->value(kUser, "Software\\A", "n"), SettingValue(0x7F));
    EXPECT_EQ(file->value(kUser, "Software\\A", "t"), SettingValue(QString()));
    EXPECT_EQ(file->value(kUser, "Software\\A", "missing"), std::nullopt);
}

TEST(SettingsFile, RejectsWhatIsNotASettingsFile) {
    const char* const damaged[] = {
        "\"n\"=dword:1\n",                                    // value outside a key
        "[HKEY_CURRENT_USER\\A]\n\"n\"=dword:123456789\n",    // more than 32 bits
        "[HKEY_CURRENT_USER\\A]\n\"n\"=dword:\n",             // no digits
        "[HKEY_CURRENT_USER\\A]\n\"n\"=dword:0x1\n",          // not hexadecimal
        "[HKEY_CURRENT_USER\\A]\n\"n\"=\"open\n",             // unterminated text
        "[HKEY_CURRENT_USER\\A]\n\"n\"=\"a\" b\n",            // text after the value
        "[HKEY_CURRENT_USER\\A]\n\"n\"=\"bad \\q escape\"\n", // unknown escape
        "[HKEY_CURRENT_USER\\A]\nn=\"unquoted name\"\n",      // unquoted name
        "[HKEY_CURRENT_USER\\A]\n\"n\"=hex:01,02\n",          // a type it does not keep
        "[HKEY_LOCAL_MACHINE\\A]\n",                          // another root
        "[HKEY_CURRENT_USER\\]\n",                            // no key
        "[HKEY_CURRENT_USER\\A\n",                            // unclosed section
        "[Noise]\nFrequencies=5\n",                           // an INI file
        "[HKEY_CURRENT_USER\\A]\n\"\xFF\xFE\"=dword:1\n",     // not UTF-8
    };
    for (const char* text : damaged)
        EXPECT_FALSE(SettingsFile::fromText(text)) << text;
    EXPECT_TRUE(SettingsFile::fromText(""));
}

TEST(SettingsFile, IsPlacedWhereTheEnvironmentSays) {
    test::TempEnvironment environment;
    EXPECT_EQ(SettingsFile::location(), environment.settingsFile());
}

TEST(SettingsFile, TheFirstSaveCreatesEveryLevelOfTheKey) {
    test::TempEnvironment environment;
    SaveSettingLong(kUser, kScaleAutozeroKey, "Enabled", -1);
    SaveSettingLong(kUser, kScaleKey, "Frequency (Hz)", 64);
    const QByteArray text = fileBytes(environment.settingsFile());
    const char* const levels[] = {
        "[HKEY_CURRENT_USER\\Software]", "[HKEY_CURRENT_USER\\Software\\Quentral, LLC.]",
        "[HKEY_CURRENT_USER\\Software\\Quentral, LLC.\\Plates Control Panel]",
        "[HKEY_CURRENT_USER\\Software\\Quentral, LLC.\\Plates Control Panel\\Scale]",
        "[HKEY_CURRENT_USER\\Software\\Quentral, LLC.\\Plates Control Panel\\Scale\\Autozero]"};
    qsizetype previous = -1;
    for (const char* level : levels) {
        const qsizetype at = text.indexOf(level);
        EXPECT_GT(at, previous) << level;
        EXPECT_EQ(text.count(level), 1) << level;
        previous = at;
    }
    EXPECT_EQ(text.count("\n["), 5);
}

TEST(SettingsFile, EveryReadSeesTheFileAsItIsNow) {
    test::TempEnvironment environment;
    SaveSettingLong(kUser, kMeterKey, "Refresh Rate (Hz)", 5);
    QByteArray text = fileBytes(environment.settingsFile());
    text.replace("dword:00000005", "dword:00000009");
    writeFileBytes(environment.settingsFile(), text);
    EXPECT_EQ(GetSettingLong(kUser, kMeterKey, "Refresh Rate (Hz)", 0), 9);
    QFile::remove(environment.settingsFile());
    EXPECT_EQ(GetSettingLong(kUser, kMeterKey, "Refresh Rate (Hz)", 0), 0);
}

TEST(SettingsFile, ADamagedFileServesDefaultsAndIsKeptAsideOnTheNextSave) {
    test::TempEnvironment environment;
    const QByteArray damaged = "[Acquisition]\nRefresh Text (Hz)=5\n";
    writeFileBytes(environment.settingsFile(), damaged);

    WarningCounter warnings;
    EXPECT_EQ(GetSettingLong(kUser, kAcquisitionKey, "Refresh Text (Hz)", 7), 7);
    EXPECT_EQ(GetSettingString(kUser, kAcquisitionKey, "Last File Path", "/d"), "/d");
    EXPECT_EQ(warnings.count(), 1);
    EXPECT_EQ(fileBytes(environment.settingsFile()), damaged);
    EXPECT_TRUE(corruptFiles(environment).isEmpty());

    SaveSettingLong(kUser, kAcquisitionKey, "Refresh Rate Graph (Hz)", 30);
    const QStringList aside = corruptFiles(environment);
    ASSERT_EQ(aside.size(), 1);
    EXPECT_EQ(fileBytes(QDir(environment.path()).filePath(aside[0])), damaged);
    EXPECT_EQ(GetSettingLong(kUser, kAcquisitionKey, "Refresh Rate Graph (Hz)", 60), 30);
    EXPECT_EQ(warnings.count(), 1);

    // A second damage in the same second is kept aside too, under its own name.
    writeFileBytes(environment.settingsFile(), "garbage");
    SaveSettingLong(kUser, kAcquisitionKey, "Scrolling", 1);
    EXPECT_EQ(corruptFiles(environment).size(), 2);
    EXPECT_EQ(warnings.count(), 2);
}

TEST(SettingsFile, ASaveThatFailsLeavesTheFileAsItWas) {
    test::TempEnvironment environment;
    SaveSettingString(kUser, kAcquisitionKey, "Last File Path", "/data");
    const QByteArray before = fileBytes(environment.settingsFile());
    {
        FileSizeLimit limit(static_cast<rlim_t>(before.size()));
        SaveSettingString(kUser, kAcquisitionKey, "Last File Path", QString(400, u'x'));
    }
    EXPECT_EQ(fileBytes(environment.settingsFile()), before);
    EXPECT_EQ(GetSettingString(kUser, kAcquisitionKey, "Last File Path", ""), "/data");
    EXPECT_EQ(QDir(environment.path()).entryList(QDir::Files).size(), 1); // no leftovers
}

} // namespace
