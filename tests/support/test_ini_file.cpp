#include "FileText.h"
#include "PrintQString.h"
#include "TempEnvironment.h"
#include "support/Folders.h"
#include "support/IniFile.h"

#include <QDir>
#include <gtest/gtest.h>

#ifdef Q_OS_UNIX
#include "FileSizeLimit.h"
#endif

using kx::IniFile;

namespace {

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

class IniFileTest : public testing::Test {
protected:
    QString path() const { return m_environment.commonAppDataFolder() + "/KXPlateCpl.ini"; }
    IniFile profile() const { return IniFile(path()); }

private:
    kx::test::TempEnvironment m_environment;
};

TEST_F(IniFileTest, AMissingFileYieldsEveryDefault) {
    EXPECT_EQ(profile().value("Noise", "Frequencies", "5"), "5");
    EXPECT_EQ(profile().value("Noise", "Initial Delay", " 3600  "), " 3600");
    EXPECT_FALSE(QFile::exists(path()));
}

TEST_F(IniFileTest, SectionsAndKeysMatchWithoutRegardToCase) {
    writeFileBytes(path(), kProfile);
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"Noise", "frequencies", "3"},     {"NOISE", "Frequency 0", "32"},
        {"noise", "Quoted", "  padded  "}, {"Noise", "Expression", "a=b"},
        {"calibration", "POINTS", "9"},    {"Noise", "Points", "default"},
        {"Noise", "Channels", "default"}, // only the first section of a name counts
        {"Linearity", "Loads", "default"}};
    for (const auto& [section, key, expected] : cases)
        EXPECT_EQ(profile().value(section, key, "default"), expected) << section << "/" << key;
}

// A changed value keeps its line's place; new keys go to the end of their section and new
// sections to the end of the file.
TEST_F(IniFileTest, AWriteTouchesOnlyItsOwnLine) {
    writeFileBytes(path(), kProfile);
    profile().setValue("NOISE", "frequencies", "4");
    profile().setValue("Noise", "Test Duration", "60");
    profile().setValue("Linearity", "Loads", "8");
    QByteArray expected = kProfile;
    expected.replace("Frequencies = 3", "Frequencies=4");
    expected.replace("Expression=a=b\r\n", "Expression=a=b\r\nTest Duration=60\r\n");
    expected += "[Linearity]\r\nLoads=8\r\n";
    EXPECT_EQ(fileBytes(path()), expected);
}

TEST_F(IniFileTest, TheFirstWriteCreatesAPlainFile) {
    profile().setValue("Noise", "Frequency 1", "64");
    profile().setValue("Noise", "Excitation 0", "0.25");
    EXPECT_EQ(fileBytes(path()), "[Noise]\nFrequency 1=64\nExcitation 0=0.25\n");
}

#ifdef Q_OS_UNIX
TEST_F(IniFileTest, AWriteThatFailsKeepsTheOldContentsOrIsLost) {
    writeFileBytes(path(), kProfile);
    {
        FileSizeLimit limit(static_cast<rlim_t>(kProfile.size()));
        profile().setValue("Noise", "Frequencies", QString(200, u'9'));
    }
    EXPECT_EQ(fileBytes(path()), kProfile);
    EXPECT_EQ(QDir(QFileInfo(path()).absolutePath()).entryList(QDir::Files).size(), 1);

    const IniFile nowhere(QFileInfo(path()).absolutePath() + "/missing/KXPlateCpl.ini");
    nowhere.setValue("Noise", "Channels", "3"); // lost without a word
    EXPECT_EQ(nowhere.value("Noise", "Channels", "1"), "1");
}
#endif

TEST_F(IniFileTest, TheSharedProfileLivesInTheCommonApplicationDataFolder) {
    EXPECT_EQ(IniFile::sharedProfile().path(),
              kx::CommonAppDataFolder() + "/Quentral/Plate Control Panel/KXPlateCpl.ini");
}

} // namespace
