#include "../support/PrintQString.h"
#include "CalibrateBench.h"
#include "resources/StringTable.h"
#include "support/IniFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGroupBox>

namespace kx::test {
namespace {

class CalibrationReportButton : public CalibrateDialogBench {
protected:
    static QString lastFilePath() {
        return CalibrationSettings::load(IniFile::sharedProfile()).LastFilePath;
    }
    // The report asked for and `path` chosen (none: cancelled); the messages it gave.
    QStringList report(const std::optional<QString>& path = std::nullopt) {
        prompt.messages.clear();
        if (path)
            prompt.fileAnswers.push_back(*path);
        dialog->cmdReport->click();
        return prompt.messages;
    }
};

TEST_F(CalibrationReportButton, WritesTheCertificateBesideTheLastFileAndSaysWhenItCannot) {
    const QString folder = lastFilePath();
    open();
    EXPECT_EQ(dialog->cmdReport->text(), "&Report...");
    EXPECT_EQ(dialog->cmdReport->accessibleName(), "Report...");
    EXPECT_EQ(dialog->cmdReport->parentWidget(), static_cast<QWidget*>(dialog->frmFile));
    hands.walk(*dialog, 0, 4);
    // No matrix to report yet: pressing the button says so, and asks for no file.
    EXPECT_TRUE(dialog->cmdReport->isEnabled());
    EXPECT_EQ(report(), QStringList{strings::text(strings::calibrate::ReportWithoutFit)});
    EXPECT_TRUE(prompt.dialogs.empty());
    hands.computeMatrix(*dialog);
    EXPECT_EQ(dialog->cmdReport->toolTip(), QString());

    // Conditions are required as for a save; nothing is asked before they are given.
    EXPECT_EQ(report(), QStringList{strings::text(strings::calibrate::MissingConditions)});
    EXPECT_TRUE(prompt.dialogs.empty());

    dialog->txtCTemp->setText(QStringLiteral("21"));
    dialog->txtCRH->setText(QStringLiteral("40"));
    dialog->txtCPres->setText(QStringLiteral("1000"));
    // A first calibration of this plate lies in the folder already.
    ASSERT_TRUE(
        QFile(QDir(folder).filePath(QStringLiteral("30417_1.cal"))).open(QIODevice::WriteOnly));
    const QString elsewhere = QDir(folder).filePath(QStringLiteral("reports"));
    ASSERT_TRUE(QDir().mkpath(elsewhere));
    const QString written = QDir(elsewhere).filePath(QStringLiteral("certificate.pdf"));
    EXPECT_EQ(report(written), QStringList());
    ASSERT_EQ(prompt.dialogs.size(), 1u);
    const FileDialogRequest& asked = prompt.dialogs[0];
    EXPECT_EQ(asked.title, "KX Force Platforms Control Panel - Calibration Report");
    EXPECT_EQ(asked.filter, "PDF Files (*.pdf)|*.pdf|All Files (*.*)|*.*");
    EXPECT_EQ(asked.defaultExtension, ".pdf");
    EXPECT_EQ(asked.initialFolder, folder);
    EXPECT_EQ(asked.fileName, "30417_2.pdf") << "the name the next save would use";
    QFile pdf(written);
    ASSERT_TRUE(pdf.open(QIODevice::ReadOnly));
    EXPECT_TRUE(pdf.read(5) == "%PDF-");

    // The folder chosen is remembered: the next report and the save start there.
    EXPECT_EQ(report(), QStringList());
    ASSERT_EQ(prompt.dialogs.size(), 2u);
    EXPECT_EQ(prompt.dialogs[1].initialFolder, elsewhere);
    dialog->txtOpNow->setText(QStringLiteral("AB"));
    dialog->cmdFileSave->click();
    ASSERT_TRUE(QFileInfo::exists(QDir(elsewhere).filePath(QStringLiteral("30417_1.cal"))));

    // Once saved, the calibration file names the report. A report that cannot be written is
    // told once, leaves nothing and does not move the folder.
    const QString missing = QDir(elsewhere).filePath(QStringLiteral("gone/30417_1.pdf"));
    EXPECT_EQ(report(missing), QStringList{strings::text(strings::calibrate::ReportNotWritten)
                                               .arg(QDir::toNativeSeparators(missing))});
    EXPECT_FALSE(QFileInfo::exists(missing));
    ASSERT_EQ(prompt.dialogs.size(), 3u);
    EXPECT_EQ(prompt.dialogs[2].fileName, "30417_1.pdf");
    dialog->close();
    EXPECT_EQ(lastFilePath(), elsewhere);
}

} // namespace
} // namespace kx::test
