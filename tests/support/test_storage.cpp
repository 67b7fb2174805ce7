#include "FileBytes.h"
#include "PrintQString.h"
#include "TempEnvironment.h"
#include "support/FileLocations.h"
#include "support/Folders.h"
#include "support/IniFile.h"
#include "support/SaveAtomically.h"
#include "support/Settings.h"
#include "support/SettingsFile.h"
#include "support/SettingsKeys.h"

#include <QDir>
#include <gtest/gtest.h>
#include <limits>

#ifdef Q_OS_UNIX
#include "FileSaves.h"
#include "FileSizeLimit.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#endif

using namespace kx;
using test::fileBytes;
using test::writeFileBytes;

namespace {

constexpr auto kUser = SettingsRoot::CurrentUser;

class Settings : public testing::Test {
protected:
    QByteArray stored() const { return fileBytes(m_environment.settingsFile()); }
    QStringList files() const { return QDir(m_environment.path()).entryList(QDir::Files); }
    QString iniPath() const { return m_environment.commonAppDataFolder() + "/KXPlateCpl.ini"; }
    test::TempEnvironment m_environment;
};
using IniFileTest = Settings;

TEST_F(Settings, TheProfileAndHelpFollowTheEnvironment) {
    const QString profile =
        m_environment.commonAppDataFolder() + "/Quentral/Plate Control Panel/KXPlateCpl.ini";
    EXPECT_EQ(IniFile::sharedProfile().path(), profile);
    const QString help = fileLocationsHelp();
    for (const QString& expected :
         QStringList{m_environment.settingsFile(), profile, m_environment.documentsFolder(),
                     m_environment.userDataFolder() + "/Recovery",
                     m_environment.userDataFolder() + "/Unsaved Captures", "KX_SETTINGS_FILE",
                     "KX_COMMON_APPDATA", "KX_DOCUMENTS", "KX_USER_DATA"})
        EXPECT_TRUE(help.contains(expected)) << expected.toStdString() << "\n"
                                             << help.toStdString();
}

TEST_F(Settings, MissingValuesReadTheirTrimmedDefaultsAndEveryReadSeesTheFileAsItIsNow) {
    EXPECT_EQ(GetSettingString(kUser, kAcquisitionKey, "Min Autoscale Res", " 0.001  "), "0.001");
    EXPECT_EQ(GetSettingLong(kUser, kMeterKey, "Refresh Rate (Hz)", -2500), -2500);
    EXPECT_FALSE(QFile::exists(m_environment.settingsFile())) << "a read writes nothing";
    SaveSettingLong(kUser, kMeterKey, "Refresh Rate (Hz)", 5);
    writeFileBytes(m_environment.settingsFile(),
                   stored().replace("dword:00000005", "dword:00000009"));
    EXPECT_EQ(GetSettingLong(kUser, kMeterKey, "Refresh Rate (Hz)", 0), 9);
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
    const SettingsFile read = SettingsFile::fromText(file.toText());
    EXPECT_EQ(read.value(kUser, "software\\maker\\tool", "path"),
              SettingValue(QStringLiteral("C:\\x \"y\"\nz")));
    EXPECT_EQ(read.toText(), file.toText());
}

TEST(SettingsFile, AcceptsHandEditedText) {
    const SettingsFile file = SettingsFile::fromText("\xEF\xBB\xBF; edited by hand\r\n\r\n"
                                                     "  [hkey_current_user\\Software\\A]  \r\n"
                                                     "\"n\"=DWORD:7F\r\n"
                                                     "\"t\"=\"\"\r\n");
    EXPECT_TRUE(file.skippedLines().isEmpty());
    EXPECT_EQ(file.value(kUser, "Software\\A", "n"), SettingValue(0x7F));
    EXPECT_EQ(file.value(kUser, "Software\\A", "t"), SettingValue(QString()));
}

// One bad line costs only itself: the good values around it read, and it is written back in
// its place, byte for byte.
TEST(SettingsFile, ALineThatDoesNotParseIsSkippedAndKeptForTheRewrite) {
    const struct {
        const char* name;
        QByteArray bad; // lines, each ended by "\n"
    } cases[] = {
        {"no equals sign", "\"m\" dword:1\n"},
        {"more than 32 bits", "\"m\"=dword:123456789\n"},
        {"unterminated text", "\"m\"=\"open\n"},
        {"not UTF-8", "\"Operator\"=\"M\xFC"
                      "ller\"\r\n"},
        {"an INI section and its lines", "[Noise]\nFrequencies=5\n\"m\"=dword:1\n"},
        {"another root", "[HKEY_LOCAL_MACHINE\\A]\n\"m\"=dword:1\n"},
        {"a misspelt root", "[HKEY_CURRENT_USERS\\A]\n\"m\"=dword:1\n"},
    };
    for (const auto& c : cases) {
        const QByteArray text = "[HKEY_CURRENT_USER\\A]\n\"before\"=dword:1\n" + c.bad +
                                "[HKEY_CURRENT_USER\\B]\n\"after\"=\"kept\"\n";
        SettingsFile file = SettingsFile::fromText(text);
        EXPECT_EQ(file.value(kUser, "A", "before"), SettingValue(1)) << c.name;
        EXPECT_EQ(file.value(kUser, "B", "after"), SettingValue(QStringLiteral("kept"))) << c.name;
        EXPECT_FALSE(file.value(kUser, "A", "m")) << c.name;
        QByteArray bad = c.bad;
        bad.chop(1);
        EXPECT_EQ(file.skippedLines(), bad.split('\n')) << c.name;

        file.setValue(kUser, "A", "new", 2);
        const QByteArray written = file.toText();
        EXPECT_TRUE(
            written.contains("\"new\"=dword:00000002\n" + c.bad + "\n[HKEY_CURRENT_USER\\B]"))
            << c.name << "\n"
            << written.constData();
        EXPECT_EQ(SettingsFile::fromText(written).toText(), written) << c.name;
    }

    const SettingsFile outside = SettingsFile::fromText("\"n\"=dword:1\n[HKEY_CURRENT_USER\\A]\n");
    EXPECT_EQ(outside.skippedLines(), QList<QByteArray>{"\"n\"=dword:1"});
    EXPECT_TRUE(outside.toText().startsWith("; KX Force Platforms Control Panel user settings\n"
                                            "\"n\"=dword:1\n"));
}

TEST(SettingsFile, ValuesAtTheRootReadBack) {
    SettingsFile file;
    file.setValue(kUser, "", "n", 5);
    EXPECT_EQ(SettingsFile::fromText(file.toText()).value(kUser, "\\", "n"), SettingValue(5));
    EXPECT_EQ(
        SettingsFile::fromText("[hkey_current_user\\]\n\"n\"=dword:1\n").value(kUser, "", "n"),
        SettingValue(1));
}

// How fast deep keys read is measured in bench_settings.
TEST(SettingsFile, DeepKeysReadBackAndDeeperThanTheRegistryAreRefused) {
    const auto nested = [](int levels, qsizetype width) {
        QByteArray path = "HKEY_CURRENT_USER";
        for (int i = 0; i < levels; ++i)
            path += '\\' + QByteArray(width, 'k');
        return path;
    };
    const QByteArray deepest = nested(512, 128);
    const SettingsFile file = SettingsFile::fromText('[' + deepest + "]\n\"n\"=dword:2\n");
    const SettingsFile reread = SettingsFile::fromText(file.toText());
    EXPECT_EQ(reread.value(kUser, deepest.mid(18), "n"), SettingValue(2));
    const SettingsFile tooDeep =
        SettingsFile::fromText('[' + nested(513, 1) + "]\n\"n\"=dword:1\n");
    EXPECT_EQ(tooDeep.skippedLines().size(), 2);
}

int warnings = 0;

TEST_F(Settings, ABadLineIsReportedOnceAndEveryOtherValueKeepsWorking) {
    const QtMessageHandler previous =
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString&) {
            warnings += type == QtWarningMsg ? 1 : 0;
        });
    SaveSettingLong(kUser, kAcquisitionKey, "Refresh Text (Hz)", 5);
    const QByteArray bad = "\"Display Type\"=dword:xyz";
    writeFileBytes(m_environment.settingsFile(), stored() + bad + '\n');
    EXPECT_EQ(GetSettingLong(kUser, kAcquisitionKey, "Refresh Text (Hz)", 7), 5);
    EXPECT_EQ(GetSettingLong(kUser, kAcquisitionKey, "Display Type", 1), 1);
    EXPECT_EQ(warnings, 1);

    SaveSettingLong(kUser, kAcquisitionKey, "Scrolling", 1);
    EXPECT_EQ(GetSettingLong(kUser, kAcquisitionKey, "Scrolling", 0), 1);
    EXPECT_EQ(GetSettingLong(kUser, kAcquisitionKey, "Refresh Text (Hz)", 7), 5);
    EXPECT_TRUE(stored().contains(bad + '\n')) << "the skipped line is not dropped";
    EXPECT_EQ(files(), QStringList{QFileInfo(m_environment.settingsFile()).fileName()})
        << "nothing renamed aside";
    qInstallMessageHandler(previous);
}

#ifdef Q_OS_UNIX
// A file that cannot be opened is not damaged: it is neither renamed nor replaced. A socket in
// its place stands in for a file the user may not read: even root cannot open it.
TEST_F(Settings, AFileThatCannotBeOpenedIsLeftAlone) {
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray path = QFile::encodeName(m_environment.settingsFile());
    ASSERT_LT(path.size(), qsizetype{sizeof address.sun_path});
    std::copy(path.begin(), path.end(), address.sun_path);
    ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(GetSettingLong(kUser, kAcquisitionKey, "Scrolling", 3), 3);
    SaveSettingLong(kUser, kAcquisitionKey, "Scrolling", 1);
    EXPECT_FALSE(QFileInfo(m_environment.settingsFile()).isFile()) << "replaced by a new file";
    EXPECT_EQ(files().size(), 0) << "no file renamed aside or written beside it";
    ::close(socket);
}

// The value is not lost: it reads back for the rest of the run and the next write, of any
// value, writes it too.
TEST_F(Settings, ASaveThatFailsLeavesTheFileAsItWasAndKeepsTheValueForTheNextWrite) {
    SaveSettingString(kUser, kAcquisitionKey, "Last File Path", "/data");
    const QByteArray before = stored();
    const QString path(400, u'x');
    {
        FileSizeLimit limit(static_cast<rlim_t>(before.size()));
        EXPECT_FALSE(SaveSettingString(kUser, kAcquisitionKey, "Last File Path", path));
        EXPECT_FALSE(SaveSettingLong(kUser, kMeterKey, "Refresh Rate (Hz)", 7));
    }
    EXPECT_EQ(stored(), before);
    EXPECT_EQ(files().size(), 1); // no leftovers
    EXPECT_EQ(GetSettingString(kUser, kAcquisitionKey, "LAST FILE PATH", "/"), path);
    EXPECT_EQ(GetSettingLong(kUser, kMeterKey, "Refresh Rate (Hz)", 5), 7);

    EXPECT_TRUE(SaveSettingLong(kUser, kMeterKey, "Excitation (mV)", -5000));
    writeFileBytes(m_environment.settingsFile(), stored().replace(path.toLatin1(), "/again"));
    EXPECT_EQ(GetSettingString(kUser, kAcquisitionKey, "Last File Path", "/"), "/again")
        << "written, and no longer kept aside";
    EXPECT_EQ(GetSettingLong(kUser, kMeterKey, "Refresh Rate (Hz)", 5), 7);
}

// Each store writes over its old file from a child process whose files may not grow past
// 4 KiB; the child reports 0 when the write failed and the value still reads back.
TEST_F(Settings, ShortWritesOfTheSettingsFileAndTheProfileLeaveBothByteForByte) {
    SaveSettingString(kUser, kAcquisitionKey, "Last File Path", QString(3000, u'o'));
    IniFile(iniPath()).setValue("Noise", "Frequencies", QString(3000, u'5'));
    const QByteArray settingsBefore = stored();
    const QByteArray profileBefore = fileBytes(iniPath());
    const QString longer(6000, u'n');
    EXPECT_EQ(exitStatusUnderFileSizeLimit(
                  4096,
                  [&] {
                      const bool failed = !SaveSettingString(kUser, kMeterKey, "Name", longer);
                      return failed && GetSettingString(kUser, kMeterKey, "Name", {}) == longer ? 0
                                                                                                : 1;
                  }),
              0);
    EXPECT_EQ(exitStatusUnderFileSizeLimit(
                  4096,
                  [&] {
                      const IniFile profile(iniPath());
                      const bool failed = !profile.setValue("Noise", "Channels", longer);
                      return failed && profile.value("Noise", "Channels", {}) == longer ? 0 : 1;
                  }),
              0);
    EXPECT_EQ(stored(), settingsBefore);
    EXPECT_EQ(fileBytes(iniPath()), profileBefore);
}
#endif

// With lines in another encoding (an operator's name written by a Windows tool in code page
// 1252) and without an end to its last line.
const QByteArray kProfile = "; noise plan\r\n"
                            "[noise]\r\n"
                            "Frequencies = 3\r\n"
                            "FREQUENCY 0=32\r\n"
                            "Operator=M\xFCller \xE9t\xE9\r\n"
                            "Quoted=\"  padded  \"\r\n"
                            "Expression=a=b\r\n"
                            "\r\n"
                            "[ Calibration ]\r\n"
                            "Points=9\r\n"
                            "Note=\xFF\xFE caf\xE9\r\n"
                            "[NOISE]\r\n"
                            "Channels=1";

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
// sections to the end of the file. Every other byte stays as it was.
TEST_F(IniFileTest, AWriteTouchesOnlyItsOwnLine) {
    writeFileBytes(iniPath(), kProfile);
    IniFile(iniPath()).setValue("NOISE", "frequencies", "4");
    IniFile(iniPath()).setValue("Noise", "Test Duration", "60");
    IniFile(iniPath()).setValue("Linearity", "Loads", "8");
    QByteArray expected = kProfile;
    expected.replace("Frequencies = 3", "Frequencies=4");
    expected.replace("Expression=a=b\r\n", "Expression=a=b\r\nTest Duration=60\r\n");
    expected += "\r\n[Linearity]\r\nLoads=8\r\n";
    EXPECT_EQ(fileBytes(iniPath()), expected);
}

#ifdef Q_OS_UNIX
// Several values in one save leave the file as writing them in turn would; writing what the
// file holds already saves nothing. A CR LF file whose last line has no end gets that line's
// CR once, when a line follows it.
TEST_F(IniFileTest, SeveralValuesGoInOneSaveAndValuesTheFileHoldsInNone) {
    writeFileBytes(iniPath(), kProfile);
    FileSaves saves(iniPath());
    ASSERT_TRUE(saves.watching());
    const std::vector<IniFile::Value> values{{"NOISE", "frequencies", "4"},
                                             {"Noise", "Test Duration", "60"},
                                             {"Linearity", "Loads", "8"},
                                             {"Linearity", "Load 1", "244.922"},
                                             {"Noise", "Test Duration", "30"}};
    EXPECT_TRUE(IniFile(iniPath()).setValues(values));
    EXPECT_EQ(saves.take(), 1);
    QByteArray expected = kProfile;
    expected.replace("Frequencies = 3", "Frequencies=4");
    expected.replace("Expression=a=b\r\n", "Expression=a=b\r\nTest Duration=30\r\n");
    expected += "\r\n[Linearity]\r\nLoads=8\r\nLoad 1=244.922\r\n";
    EXPECT_EQ(fileBytes(iniPath()), expected);
    EXPECT_TRUE(IniFile(iniPath()).setValues(values));
    EXPECT_TRUE(IniFile(iniPath()).setValue("calibration", "points", "9"));
    EXPECT_EQ(saves.take(), 0);
    EXPECT_EQ(fileBytes(iniPath()), expected);

    writeFileBytes(iniPath(), "[a]\r\nx=1");
    saves.take();
    EXPECT_TRUE(IniFile(iniPath()).setValues({{"a", "x", "2"}}));
    EXPECT_EQ(fileBytes(iniPath()), "[a]\r\nx=2");
    EXPECT_TRUE(IniFile(iniPath()).setValues({{"a", "x", "3"}, {"a", "y", "4"}}));
    EXPECT_EQ(fileBytes(iniPath()), "[a]\r\nx=3\r\ny=4\r\n");
    EXPECT_EQ(saves.take(), 2);
}
#endif

TEST_F(IniFileTest, TheFirstWriteCreatesAPlainFile) {
    IniFile(iniPath()).setValue("Noise", "Frequency 1", "64");
    IniFile(iniPath()).setValue("Noise", "Excitation 0", "0.25");
    EXPECT_EQ(fileBytes(iniPath()), "[Noise]\nFrequency 1=64\nExcitation 0=0.25\n");
}

#ifdef Q_OS_UNIX
TEST_F(IniFileTest, AWriteThatFailsKeepsTheOldContentsAndTheValueUntilTheNextWrite) {
    writeFileBytes(iniPath(), kProfile);
    {
        FileSizeLimit limit(static_cast<rlim_t>(kProfile.size()));
        EXPECT_FALSE(IniFile(iniPath()).setValue("Noise", "Frequencies", QString(200, u'9')));
    }
    EXPECT_EQ(fileBytes(iniPath()), kProfile);
    EXPECT_EQ(QDir(QFileInfo(iniPath()).absolutePath()).entryList(QDir::Files).size(), 1);
    EXPECT_EQ(IniFile(iniPath()).value("noise", "FREQUENCIES", "1"), QString(200, u'9'));
    EXPECT_TRUE(IniFile(iniPath()).setValue("Noise", "Channels", "4"));
    EXPECT_TRUE(fileBytes(iniPath()).contains("Frequencies=" + QByteArray(200, '9')));

    const IniFile elsewhere(QFileInfo(iniPath()).absolutePath() + "/missing/KXPlateCpl.ini");
    EXPECT_TRUE(elsewhere.setValue("Noise", "Channels", "3")) << "its folder is made";
    EXPECT_EQ(elsewhere.value("Noise", "Channels", "1"), "3");
}

// Each case writes over an old file under a limit that cuts the new contents short: one larger
// than the write buffer (written straight through) and one that sits in the buffer until the
// flush. The child reports 0 only when the save said why it failed.
TEST_F(IniFileTest, AShortWriteFailsWithAReasonAndKeepsTheOldFileByteForByte) {
    const QString path = QFileInfo(iniPath()).absolutePath() + "/results.txt";
    const QByteArray old(3000, 'o');
    for (const qsizetype size : {qsizetype(100'000), qsizetype(3500)}) {
        writeFileBytes(path, old);
        const int status = exitStatusUnderFileSizeLimit(3200, [&] {
            const kx::SaveResult saved = kx::saveAtomically(path, QByteArray(size, 'n'));
            return !saved && !saved.error.isEmpty() ? 0 : 1;
        });
        EXPECT_EQ(status, 0) << size << " bytes passed as saved";
        EXPECT_EQ(fileBytes(path), old) << size;
        EXPECT_EQ(QDir(QFileInfo(path).absolutePath()).entryList(QDir::Files).size(), 1)
            << "no temporary file left beside it";
    }
    EXPECT_TRUE(kx::saveAtomically(path, "new"));
    EXPECT_EQ(fileBytes(path), "new");
}
#endif

TEST(Folders, ExistOnlyAsFoldersAreWritableOnlyWhereTheSystemSaysAndAreMadeLevelByLevel) {
    test::TempEnvironment environment;
    const QString folder = environment.documentsFolder();
    QFile(folder + "/file.txt").open(QIODevice::WriteOnly);
    const std::pair<QString, bool> cases[] = {{"  " + folder + "/  ", true},
                                              {folder + "/file.txt", false},
                                              {folder + "/missing", false},
                                              {"   ", false}};
    for (const auto& [path, expected] : cases)
        EXPECT_EQ(FolderExists(path), expected) << path.toStdString();
    EXPECT_TRUE(FolderIsWritable(folder));
    EXPECT_FALSE(FolderIsWritable(folder + "/missing"));
    EXPECT_FALSE(FolderIsWritable(folder + "/file.txt"));
    QDir(folder).mkdir("locked");
    QFile::setPermissions(folder + "/locked", QFile::ReadOwner | QFile::ExeOwner);
    // The superuser writes anywhere; the check asks the system rather than reading the bits.
    QFile probe(folder + "/locked/probe");
    EXPECT_EQ(FolderIsWritable(folder + "/locked"), probe.open(QIODevice::WriteOnly));
    QFile::setPermissions(folder + "/locked",
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

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

// The profile is one file for the whole machine where the installed package made its folder;
// elsewhere (a program run from its build folder) each user keeps one and hears why once, told
// both folders so that an administrator knows what to make.
TEST(SharedProfileFolder, MachineWideWhereUsableElseThePerUserFolderWithANotice) {
    const std::tuple<QString, bool, QString> cases[] = {
        {"", true, "/var/lib/kxcpl"},
        {"", false, "/home/ann/.local/share"},
        // the environment moves it wherever it points, usable or not
        {"/srv/plates", false, "/srv/plates"},
        {"/srv/plates", true, "/srv/plates"}};
    for (const auto& [overridden, usable, expected] : cases) {
        const CommonAppDataChoice choice = ChooseCommonAppDataFolder(
            overridden, "/var/lib/kxcpl", usable, "/home/ann/.local/share");
        EXPECT_EQ(choice.folder, expected) << overridden.toStdString();
        const bool told = expected.startsWith("/home");
        for (const char* folder : {"\"/var/lib/kxcpl/Quentral/Plate Control Panel\"",
                                   "\"/home/ann/.local/share/Quentral/Plate Control Panel\""})
            EXPECT_EQ(choice.notice.contains(folder), told) << choice.notice.toStdString();
    }
}

} // namespace
