#include "PrintQString.h"
#include "TempEnvironment.h"
#include "support/Folders.h"
#include "support/IniFile.h"
#include "support/Settings.h"
#include "support/SettingsFile.h"
#include "support/SettingsKeys.h"

#include <QDir>
#include <QElapsedTimer>
#include <gtest/gtest.h>
#include <limits>

#ifdef Q_OS_UNIX
#include "FileSizeLimit.h"
#endif

using namespace kx;

namespace {

constexpr auto kUser = SettingsRoot::CurrentUser;

QByteArray fileBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFileBytes(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(bytes);
}

class Settings : public testing::Test {
protected:
    QByteArray stored() const { return fileBytes(m_environment.settingsFile()); }
    QStringList files(const QString& filter = "*") const {
        return QDir(m_environment.path()).entryList({filter}, QDir::Files);
    }
    QString iniPath() const { return m_environment.commonAppDataFolder() + "/KXPlateCpl.ini"; }
    test::TempEnvironment m_environment;
};
using IniFileTest = Settings;

TEST_F(Settings, MissingValuesReadAsTheirTrimmedDefaultsAndAreNotWritten) {
    EXPECT_EQ(GetSettingString(kUser, kAcquisitionKey, "Min Autoscale Res", " 0.001  "), "0.001");
    EXPECT_EQ(GetSettingLong(kUser, kAcquisitionKey, "Min Fz (mN)", -2500), -2500);
    EXPECT_FALSE(QFile::exists(m_environment.settingsFile()));
}

// Texts longer than the read buffer (512) read as the default; a text ends at its first NUL.
TEST_F(Settings, TextsAreTrimmedAndUnreadableOrBlankTextsReadAsTheDefault) {
    const std::pair<QString, QString> cases[] = {{"  /data/runs  ", "/data/runs"},
                                                 {"   ", "fallback"},
                                                 {"", "fallback"},
                                                 {"\tx\t", "\tx\t"}, // only spaces are trimmed
                                                 {QString(512, u'a'), QString(512, u'a')},
                                                 {QString(513, u'a'), "fallback"},
                                                 {QString::fromLatin1("0.01\0junk", 9), "0.01"}};
    for (const auto& [text, expected] : cases) {
        SaveSettingString(kUser, kCalibrationKey, "Display Point Radius (m)", text);
        EXPECT_EQ(
            GetSettingString(kUser, kCalibrationKey, "Display Point Radius (m)", " fallback "),
            expected)
            << text.toStdString();
    }
}

// -1 and 1 are both kept: the two boolean conventions.
TEST_F(Settings, NumbersKeepTheirSigned32BitRangeAndTheirTypeApartFromTexts) {
    for (const qint32 value :
         {0, 1, -1, std::numeric_limits<qint32>::min(), std::numeric_limits<qint32>::max()}) {
        SaveSettingLong(kUser, kMeterKey, "Excitation (mV)", value);
        EXPECT_EQ(GetSettingLong(kUser, kMeterKey, "Excitation (mV)", 12345), value);
    }
    SaveSettingString(kUser, kScaleKey, "Display Decimals", "5");
    EXPECT_EQ(GetSettingLong(kUser, kScaleKey, "Display Decimals", 0), 0);
    SaveSettingLong(kUser, kScaleKey, "Display Decimals", 2); // the other type replaces it
    EXPECT_EQ(GetSettingLong(kUser, kScaleKey, "Display Decimals", 0), 2);
    EXPECT_EQ(GetSettingString(kUser, kScaleKey, "Display Decimals", "none"), "none");
}

TEST_F(Settings, KeysIgnoreCaseAndAWriteKeepsEveryOtherValue) {
    SaveSettingLong(kUser, kScaleKey, "Frequency (Hz)", 64);
    SaveSettingLong(kUser, kScaleAutozeroKey, "Interval (ms)", 2000);
    SaveSettingString(kUser, kCalibrationKey, "Last File Path", "/cal");
    SaveSettingLong(kUser, QString(kScaleKey).toLower(), "FREQUENCY (HZ)", 128);
    EXPECT_EQ(GetSettingLong(kUser, QString(kScaleKey).toUpper(), "frequency (hz)", 0), 128);
    EXPECT_EQ(GetSettingLong(kUser, kScaleAutozeroKey, "Interval (ms)", 0), 2000);
    EXPECT_EQ(GetSettingString(kUser, kCalibrationKey, "Last File Path", ""), "/cal");
}

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
        "\"n\"=dword:1\n",                                 // value outside a key
        "[HKEY_CURRENT_USER\\A]\n\"n\"=dword:123456789\n", // more than 32 bits
        "[HKEY_CURRENT_USER\\A]\n\"n\"=\"open\n",          // unterminated text
        "[Noise]\nFrequencies=5\n",                        // an INI file
        "[HKEY_CURRENT_USER\\A]\n\"\xFF\xFE\"=dword:1\n",  // not UTF-8
    };
    for (const char* text : damaged)
        EXPECT_FALSE(SettingsFile::fromText(text)) << text;
}

TEST(SettingsFile, ValuesAtTheRootReadBack) {
    SettingsFile file;
    file.setValue(kUser, "", "n", 5);
    const std::optional<SettingsFile> read = SettingsFile::fromText(file.toText());
    ASSERT_TRUE(read);
    EXPECT_EQ(read->value(kUser, "\\", "n"), SettingValue(5));
    EXPECT_TRUE(SettingsFile::fromText("[hkey_current_user\\]\n\"n\"=dword:1\n"));
    EXPECT_FALSE(SettingsFile::fromText("[HKEY_CURRENT_USERS\\A]\n"));
}

TEST(SettingsFile, DeepKeysReadQuicklyAndDeeperThanTheRegistryAreRefused) {
    const auto nested = [](int levels, qsizetype width) {
        QByteArray path = "HKEY_CURRENT_USER";
        for (int i = 0; i < levels; ++i)
            path += '\\' + QByteArray(width, 'k');
        return path;
    };
    // Every level is a key with its whole path; reading them back once took seconds.
    const QByteArray deepest = nested(512, 128);
    QElapsedTimer wall;
    wall.start();
    const std::optional<SettingsFile> file =
        SettingsFile::fromText('[' + deepest + "]\n\"n\"=dword:2\n");
    ASSERT_TRUE(file);
    const std::optional<SettingsFile> reread = SettingsFile::fromText(file->toText());
    EXPECT_LT(wall.elapsed(), 1000);
    ASSERT_TRUE(reread);
    EXPECT_EQ(reread->value(kUser, deepest.mid(18), "n"), SettingValue(2));
    EXPECT_FALSE(SettingsFile::fromText('[' + nested(513, 1) + "]\n"));
}

TEST_F(Settings, EveryReadSeesTheFileAsItIsNow) {
    SaveSettingLong(kUser, kMeterKey, "Refresh Rate (Hz)", 5);
    writeFileBytes(m_environment.settingsFile(),
                   stored().replace("dword:00000005", "dword:00000009"));
    EXPECT_EQ(GetSettingLong(kUser, kMeterKey, "Refresh Rate (Hz)", 0), 9);
    QFile::remove(m_environment.settingsFile());
    EXPECT_EQ(GetSettingLong(kUser, kMeterKey, "Refresh Rate (Hz)", 0), 0);
}

int warnings = 0;

TEST_F(Settings, ADamagedFileServesDefaultsWarnsOnceAndIsKeptAsideOnTheNextSave) {
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

#ifdef Q_OS_UNIX
TEST_F(Settings, ASaveThatFailsLeavesTheFileAsItWas) {
    SaveSettingString(kUser, kAcquisitionKey, "Last File Path", "/data");
    const QByteArray before = stored();
    {
        FileSizeLimit limit(static_cast<rlim_t>(before.size()));
        SaveSettingString(kUser, kAcquisitionKey, "Last File Path", QString(400, u'x'));
    }
    EXPECT_EQ(stored(), before);
    EXPECT_EQ(files().size(), 1); // no leftovers
}
#endif

const QByteArray kProfile = "; noise plan\r\n"
                            "[noise]\r\n"
                            "Frequencies = 3\r\n"
                            "FREQUENCY 0=32\r\n"
                            "Quoted=\"  padded  \"\r\n"
                            "Expression=a=b\r\n"
                            "\r\n"
                            "[ Calibration ]\r\n"
                            "Points=9\r\n"
                            "[NOISE]\r\n"
                            "Channels=1\r\n";

TEST_F(IniFileTest, SectionsAndKeysMatchWithoutRegardToCaseAndMissingOnesReadTheDefault) {
    EXPECT_EQ(IniFile(iniPath()).value("Noise", "Initial Delay", " 3600  "), " 3600");
    EXPECT_FALSE(QFile::exists(iniPath()));
    writeFileBytes(iniPath(), kProfile);
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"Noise", "frequencies", "3"},     {"NOISE", "Frequency 0", "32"},
        {"noise", "Quoted", "  padded  "}, {"Noise", "Expression", "a=b"},
        {"calibration", "POINTS", "9"},    {"Noise", "Points", "default"},
        {"Noise", "Channels", "default"}, // only the first section of a name counts
        {"Linearity", "Loads", "default"}};
    for (const auto& [section, key, expected] : cases)
        EXPECT_EQ(IniFile(iniPath()).value(section, key, "default"), expected)
            << section << "/" << key;
}

// A changed value keeps its line's place; new keys go to the end of their section and new
// sections to the end of the file.
TEST_F(IniFileTest, AWriteTouchesOnlyItsOwnLine) {
    writeFileBytes(iniPath(), kProfile);
    IniFile(iniPath()).setValue("NOISE", "frequencies", "4");
    IniFile(iniPath()).setValue("Noise", "Test Duration", "60");
    IniFile(iniPath()).setValue("Linearity", "Loads", "8");
    QByteArray expected = kProfile;
    expected.replace("Frequencies = 3", "Frequencies=4");
    expected.replace("Expression=a=b\r\n", "Expression=a=b\r\nTest Duration=60\r\n");
    expected += "[Linearity]\r\nLoads=8\r\n";
    EXPECT_EQ(fileBytes(iniPath()), expected);
}

TEST_F(IniFileTest, TheFirstWriteCreatesAPlainFile) {
    IniFile(iniPath()).setValue("Noise", "Frequency 1", "64");
    IniFile(iniPath()).setValue("Noise", "Excitation 0", "0.25");
    EXPECT_EQ(fileBytes(iniPath()), "[Noise]\nFrequency 1=64\nExcitation 0=0.25\n");
}

#ifdef Q_OS_UNIX
TEST_F(IniFileTest, AWriteThatFailsKeepsTheOldContentsOrIsLost) {
    writeFileBytes(iniPath(), kProfile);
    {
        FileSizeLimit limit(static_cast<rlim_t>(kProfile.size()));
        IniFile(iniPath()).setValue("Noise", "Frequencies", QString(200, u'9'));
    }
    EXPECT_EQ(fileBytes(iniPath()), kProfile);
    EXPECT_EQ(QDir(QFileInfo(iniPath()).absolutePath()).entryList(QDir::Files).size(), 1);

    const IniFile nowhere(QFileInfo(iniPath()).absolutePath() + "/missing/KXPlateCpl.ini");
    nowhere.setValue("Noise", "Channels", "3"); // lost without a word
    EXPECT_EQ(nowhere.value("Noise", "Channels", "1"), "1");
}
#endif

TEST(Folders, ExistsOnlyForFoldersAndCreatesEveryMissingLevel) {
    test::TempEnvironment environment;
    const QString folder = environment.documentsFolder();
    QFile(folder + "/file.txt").open(QIODevice::WriteOnly);
    const std::pair<QString, bool> cases[] = {{"  " + folder + "/  ", true},
                                              {folder + "/file.txt", false},
                                              {folder + "/missing", false},
                                              {"   ", false}};
    for (const auto& [path, expected] : cases)
        EXPECT_EQ(FolderExists(path), expected) << path.toStdString();

    const QString deep = environment.commonAppDataFolder() + "/Quentral/Plate Control Panel/x";
    CreateFolderPath(deep);
    CreateFolderPath(deep); // already there: nothing happens
    EXPECT_TRUE(FolderExists(deep));
    CreateFolderPath(folder + "/file.txt/below"); // fails quietly
    EXPECT_FALSE(FolderExists(folder + "/file.txt/below"));
}

TEST(Folders, FolderOfPathAndSpecialFolders) {
    const std::pair<QString, QString> cases[] = {
        {"  /data/runs/capture.txt  ", "/data/runs"},
        {"C:\\Data/run.txt", "C:\\Data"},
        {"capture.txt", ""},
        {"/data/runs/", ""},
        // the file name's first appearance, in any case, ends the folder
        {"/data/RUN/x/run", "/data"}};
    for (const auto& [path, expected] : cases)
        EXPECT_EQ(FolderOfPath(path), expected) << path.toStdString();

    test::TempEnvironment environment;
    EXPECT_EQ(CommonAppDataFolder(), environment.commonAppDataFolder());
    qputenv("KX_DOCUMENTS", "/srv/docs/");
    EXPECT_EQ(DocumentsFolder(), "/srv/docs"); // without a trailing separator
}

} // namespace

namespace {

// The profile is one file for the whole machine where the installed package made its folder;
// elsewhere (a program run from its build folder) each user keeps one and hears why once.
TEST(SharedProfileFolder, MachineWideWhereUsableElseThePerUserFolderWithANotice) {
    struct Case {
        QString overridden;
        bool machineWideUsable;
        QString expected;
        bool notice;
    };
    const Case cases[] = {{"", true, "/var/lib/kxcpl", false},
                          {"", false, "/home/ann/.local/share", true},
                          // the environment moves it wherever it points, usable or not
                          {"/srv/plates", false, "/srv/plates", false},
                          {"/srv/plates", true, "/srv/plates", false}};
    for (const Case& c : cases) {
        const CommonAppDataChoice choice = ChooseCommonAppDataFolder(
            c.overridden, "/var/lib/kxcpl", c.machineWideUsable, "/home/ann/.local/share");
        EXPECT_EQ(choice.folder, c.expected) << c.overridden.toStdString();
        EXPECT_EQ(choice.notice.isEmpty(), !c.notice) << choice.notice.toStdString();
    }
    // The notice names both profile folders, so an administrator knows what to make.
    const QString notice =
        ChooseCommonAppDataFolder("", "/var/lib/kxcpl", false, "/home/ann/.local/share").notice;
    EXPECT_TRUE(notice.contains("\"/var/lib/kxcpl/Quentral/Plate Control Panel\""))
        << notice.toStdString();
    EXPECT_TRUE(notice.contains("\"/home/ann/.local/share/Quentral/Plate Control Panel\""))
        << notice.toStdString();
}

TEST(SharedProfileFolder, IsUsableOnlyAsAnExistingFolderThisUserMayWriteIn) {
    test::TempEnvironment environment;
    const QString folder = environment.path();
    QFile(folder + "/file.txt").open(QIODevice::WriteOnly);
    EXPECT_TRUE(FolderIsWritable(folder));
    EXPECT_FALSE(FolderIsWritable(folder + "/missing"));
    EXPECT_FALSE(FolderIsWritable(folder + "/file.txt"));

    QDir(folder).mkdir("locked");
    QFile::setPermissions(folder + "/locked", QFile::ReadOwner | QFile::ExeOwner);
    // The superuser writes anywhere; the check asks the system rather than reading the bits.
    QFile probe(folder + "/locked/probe");
    const bool systemLetsUsWrite = probe.open(QIODevice::WriteOnly);
    EXPECT_EQ(FolderIsWritable(folder + "/locked"), systemLetsUsWrite);
    QFile::setPermissions(folder + "/locked",
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

TEST(SharedProfileFolder, TheProfileFollowsTheEnvironmentVariable) {
    test::TempEnvironment environment;
    EXPECT_EQ(IniFile::sharedProfile().path(),
              environment.commonAppDataFolder() + "/Quentral/Plate Control Panel/KXPlateCpl.ini");
}

} // namespace
