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

TEST(SettingsFile, IsWrittenInTheRegistryExportLayoutAndReadBack) {
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
    EXPECT_EQ(read->toText(), file.toText());
}

TEST(SettingsFile, AcceptsHandEditedTextAndRejectsWhatIsNotASettingsFile) {
    const std::optional<SettingsFile> file =
        SettingsFile::fromText("\xEF\xBB\xBF; edited by hand\r\n\r\n"
                               "  [hkey_current_user\\Software\\A]  \r\n"
                               "\"n\"=DWORD:7F\r\n"
                               "\"t\"=\"\"\r\n");
    ASSERT_TRUE(file);
    EXPECT_EQ(file->value(kUser, "Software\\A", "n"), SettingValue(0x7F));
    EXPECT_EQ(file->value(kUser, "Software\\A", "t"), SettingValue(QString()));

    const char* const damaged[] = {
        "\"n\"=dword:1\n",                                    // value outside a key
        "[HKEY_CURRENT_USER\\A]\n\"n\"=dword:123456789\n",    // more than 32 bits
        "[HKEY_CURRENT_USER\\A]\n\"n\"=\"open\n",             // unterminated text
        "[HKEY_CURRENT_USER\\A]\n\"n\"=\"bad \\q escape\"\n", // unknown escape
        "[HKEY_CURRENT_USER\\A]\n\"n\"=hex:01,02\n",          // a type it does not keep
        "[HKEY_LOCAL_MACHINE\\A]\n",                          // another root
        "[Noise]\nFrequencies=5\n",                           // an INI file
        "[HKEY_CURRENT_USER\\A]\n\"\xFF\xFE\"=dword:1\n",     // not UTF-8
    };
    for (const char* text : damaged)
        EXPECT_FALSE(SettingsFile::fromText(text)) << text;
}

class SettingsStoreFile : public testing::Test {
protected:
    QByteArray stored() const { return fileBytes(m_environment.settingsFile()); }
    QStringList files(const QString& filter = "*") const {
        return QDir(m_environment.path()).entryList({filter}, QDir::Files);
    }
    test::TempEnvironment m_environment;
};

TEST_F(SettingsStoreFile, TheFirstSaveCreatesEveryLevelOfTheKeyOnce) {
    SaveSettingLong(kUser, kScaleAutozeroKey, "Enabled", -1);
    SaveSettingLong(kUser, kScaleKey, "Frequency (Hz)", 64);
    const QString panel = "[HKEY_CURRENT_USER\\Software\\Quentral, LLC.\\Plates Control Panel";
    const QString levels[] = {"[HKEY_CURRENT_USER\\Software",
                              "[HKEY_CURRENT_USER\\Software\\Quentral, LLC.", panel,
                              panel + "\\Scale", panel + "\\Scale\\Autozero"};
    qsizetype previous = -1;
    for (const QString& level : levels) {
        const QByteArray header = (level + "]").toUtf8();
        EXPECT_GT(stored().indexOf(header), previous) << level.toStdString();
        EXPECT_EQ(stored().count(header), 1) << level.toStdString();
        previous = stored().indexOf(header);
    }
}

TEST_F(SettingsStoreFile, EveryReadSeesTheFileAsItIsNow) {
    SaveSettingLong(kUser, kMeterKey, "Refresh Rate (Hz)", 5);
    writeFileBytes(m_environment.settingsFile(),
                   stored().replace("dword:00000005", "dword:00000009"));
    EXPECT_EQ(GetSettingLong(kUser, kMeterKey, "Refresh Rate (Hz)", 0), 9);
    QFile::remove(m_environment.settingsFile());
    EXPECT_EQ(GetSettingLong(kUser, kMeterKey, "Refresh Rate (Hz)", 0), 0);
}

int warnings = 0;

TEST_F(SettingsStoreFile, ADamagedFileServesDefaultsWarnsOnceAndIsKeptAsideOnTheNextSave) {
    const QtMessageHandler previous =
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString&) {
            warnings += type == QtWarningMsg ? 1 : 0;
        });
    const QByteArray damaged = "[Acquisition]\nRefresh Text (Hz)=5\n";
    writeFileBytes(m_environment.settingsFile(), damaged);
    EXPECT_EQ(GetSettingLong(kUser, kAcquisitionKey, "Refresh Text (Hz)", 7), 7);
    EXPECT_EQ(GetSettingString(kUser, kAcquisitionKey, "Last File Path", "/d"), "/d");
    EXPECT_EQ(warnings, 1);
    EXPECT_EQ(stored(), damaged);

    SaveSettingLong(kUser, kAcquisitionKey, "Refresh Rate Graph (Hz)", 30);
    ASSERT_EQ(files("*.corrupt").size(), 1);
    EXPECT_EQ(fileBytes(QDir(m_environment.path()).filePath(files("*.corrupt")[0])), damaged);
    EXPECT_EQ(GetSettingLong(kUser, kAcquisitionKey, "Refresh Rate Graph (Hz)", 60), 30);

    // A second damage in the same second is kept aside too, under its own name.
    writeFileBytes(m_environment.settingsFile(), "garbage");
    SaveSettingLong(kUser, kAcquisitionKey, "Scrolling", 1);
    EXPECT_EQ(files("*.corrupt").size(), 2);
    EXPECT_EQ(warnings, 2);
    qInstallMessageHandler(previous);
}

TEST_F(SettingsStoreFile, ASaveThatFailsLeavesTheFileAsItWas) {
    SaveSettingString(kUser, kAcquisitionKey, "Last File Path", "/data");
    const QByteArray before = stored();
    {
        FileSizeLimit limit(static_cast<rlim_t>(before.size()));
        SaveSettingString(kUser, kAcquisitionKey, "Last File Path", QString(400, u'x'));
    }
    EXPECT_EQ(stored(), before);
    EXPECT_EQ(files().size(), 1); // no leftovers
}

} // namespace
