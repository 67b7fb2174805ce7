#include "app/FileDialogSetup.h"
#include "app/PlateInput.h"
#include "app/PlatformLine.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <limits>

namespace kx {
namespace {

TEST(PlatformLine, NamesLinuxWithItsKernelAndWindowsWithItsVersion) {
    EXPECT_EQ(platformLine(QStringLiteral("linux"), QStringLiteral("6.1.0-18-amd64"), {}),
              QStringLiteral("For Linux 6.1.0-18-amd64"));
    EXPECT_EQ(platformLine(QStringLiteral("winnt"), QStringLiteral("10.0.19045"), {}),
              QStringLiteral("For Windows NT 10.0"));
}

TEST(PlateInput, NumbersUseThePointAndWholeNumbersRoundHalfToEvenAndSaturate) {
    EXPECT_EQ(parseNumber(QStringLiteral(" 2.358 ")), 2.358);
    // A comma is never a group separator: "1,500" is not 1500.
    for (const char* text : {"", "abc", "1,5", "1,500", "1,000.5", "12abc", "inf", "nan", "1e999"})
        EXPECT_FALSE(parseNumber(QString::fromLatin1(text)).has_value()) << text;
    EXPECT_EQ(toInt16(2.5), 2);
    EXPECT_EQ(toInt16(3.5), 4);
    EXPECT_EQ(toInt16(70000), 32767) << "never wraps to a negative rate";
    EXPECT_EQ(toInt32(-9e12), std::numeric_limits<qint32>::min());
}

TEST(FileDialogSetup, RequestOptionsReachTheDialog) {
    QTemporaryDir folder;
    FileDialogRequest request;
    request.title = QStringLiteral("Save Capture");
    request.filter = QStringLiteral("All Files (*.*)|*.*|Text Files (*.txt)|*.txt");
    request.filterIndex = 2;
    request.defaultExtension = QStringLiteral(".txt");
    request.initialFolder = folder.path();
    request.overwritePrompt = true;
    QFileDialog save;
    setUpFileDialog(save, request, QFileDialog::AcceptSave);
    EXPECT_EQ(save.nameFilters(),
              (QStringList{QStringLiteral("All Files (*)"), QStringLiteral("Text Files (*.txt)")}));
    EXPECT_EQ(save.selectedNameFilter(), QStringLiteral("Text Files (*.txt)"));
    EXPECT_EQ(save.defaultSuffix(), QStringLiteral("txt"));
    EXPECT_EQ(save.directory().path(), folder.path());
    EXPECT_FALSE(save.testOption(QFileDialog::DontConfirmOverwrite));
}

} // namespace
} // namespace kx
