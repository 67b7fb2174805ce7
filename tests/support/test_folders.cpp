#include "PrintQString.h"
#include "TempEnvironment.h"
#include "support/Folders.h"

#include <QFile>
#include <gtest/gtest.h>

namespace {

TEST(Folders, ExistsOnlyForFoldersAndCreatesEveryMissingLevel) {
    kx::test::TempEnvironment environment;
    const QString folder = environment.documentsFolder();
    QFile(folder + "/file.txt").open(QIODevice::WriteOnly);
    const std::pair<QString, bool> cases[] = {{"  " + folder + "  ", true},
                                              {folder + "/", true},
                                              {folder + "/file.txt", false},
                                              {folder + "/missing", false},
                                              {"   ", false}};
    for (const auto& [path, expected] : cases)
        EXPECT_EQ(kx::FolderExists(path), expected) << path.toStdString();

    const QString deep = environment.commonAppDataFolder() + "/Quentral/Plate Control Panel/x";
    kx::CreateFolderPath(deep);
    kx::CreateFolderPath(deep); // already there: nothing happens
    EXPECT_TRUE(kx::FolderExists(deep));
    kx::CreateFolderPath(folder + "/file.txt/below"); // fails quietly
    EXPECT_FALSE(kx::FolderExists(folder + "/file.txt/below"));
}

TEST(Folders, FolderOfPath) {
    const std::pair<QString, QString> cases[] = {
        {"  /data/runs/capture.txt  ", "/data/runs"},
        {"C:\\Data\\run.txt", "C:\\Data"},
        {"C:\\Data/run.txt", "C:\\Data"},
        {"/capture.txt", ""},
        {"capture.txt", ""},
        {"/data/runs/", ""},
        // the file name's first appearance, in any case, ends the folder
        {"/data/RUN/x/run", "/data"}};
    for (const auto& [path, expected] : cases)
        EXPECT_EQ(kx::FolderOfPath(path), expected) << path.toStdString();
}

TEST(Folders, SpecialFoldersFollowTheEnvironmentWithoutTrailingSeparator) {
    kx::test::TempEnvironment environment;
    EXPECT_EQ(kx::CommonAppDataFolder(), environment.commonAppDataFolder());
    qputenv("KX_DOCUMENTS", "/srv/docs/");
    EXPECT_EQ(kx::DocumentsFolder(), "/srv/docs");
    qputenv("KX_COMMON_APPDATA", "");
    EXPECT_FALSE(kx::CommonAppDataFolder().isEmpty());
    EXPECT_FALSE(kx::CommonAppDataFolder().endsWith(u'/'));
}

} // namespace
