#include "EventsUntil.h"
#include "FileBytes.h"
#include "JournalBytes.h"
#include "PrintQString.h"
#include "RecordingPrompt.h"
#include "TempEnvironment.h"
#include "measure/CaptureJournal.h"
#include "measure/UnsavedCaptures.h"
#include "support/Folders.h"
#include "support/Settings.h"
#include "support/SettingsKeys.h"

#include <QDir>
#include <QLocale>
#include <QSignalSpy>
#include <gtest/gtest.h>

namespace kx::test {
namespace {

using Rows = std::vector<CaptureRow>;

class UnsavedCapturesTest : public ::testing::Test {
protected:
    void SetUp() override { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }
    void TearDown() override { QLocale::setDefault(QLocale::system()); }

    // A journal a crash left in the journal folder.
    QString leave(const Rows& rows, CaptureJournalHeader header = JournalBytes::header()) {
        const QString path =
            QDir(UnsavedCapturesFolder())
                .filePath(header.started.toString("yyyy-MM-dd hh.mm.ss") + ".kxcj");
        QDir().mkpath(UnsavedCapturesFolder());
        writeFileBytes(path, JournalBytes(header).rows(rows).bytes);
        return path;
    }

    // Offers what the folder holds, answering from the prompt's queues, until every journal
    // has its answer.
    void offer() {
        UnsavedCaptures captures(prompt);
        QSignalSpy finished(&captures, &UnsavedCaptures::finished);
        QSignalSpy started(&captures, &UnsavedCaptures::saveStarted);
        QSignalSpy ended(&captures, &UnsavedCaptures::saveEnded);
        QObject::connect(&captures, &UnsavedCaptures::saveStarted, &captures, [&] {
            if (started.size() <= savesToCancel)
                captures.cancelSave();
        });
        captures.start(UnsavedCapturesFolder());
        ASSERT_TRUE(eventsUntil([&finished] { return !finished.isEmpty(); }))
            << "the offer never ends";
        ASSERT_EQ(finished.size(), 1);
        saves = started.size();
        EXPECT_EQ(ended.size(), saves);
    }

    QString documents(const char* name) const {
        return QDir(environment.documentsFolder()).filePath(QLatin1String(name));
    }

    TempEnvironment environment;
    RecordingPrompt prompt;
    qsizetype savesToCancel = 0; // the first ones are cancelled as soon as they begin
    qsizetype saves = 0;
};

// Oldest first, each with its size and when it began; Later (Esc) keeps it for the next start.
TEST_F(UnsavedCapturesTest, EachCaptureIsOfferedOldestFirstAndLaterKeepsIt) {
    CaptureJournalHeader later = JournalBytes::header();
    later.started = QDateTime(QDate(2024, 3, 15), QTime(17, 5));
    const QString second = leave(Rows(5), later);
    const QString first = leave(Rows(3));
    offer();
    ASSERT_EQ(prompt.questions.size(), 2u);
    EXPECT_EQ(prompt.questions[0].text,
              "A capture of 3 rows from 3/14/2024, 9:30 AM was not saved. Save it now?");
    EXPECT_EQ(prompt.questions[1].text,
              "A capture of 5 rows from 3/15/2024, 5:05 PM was not saved. Save it now?");
    EXPECT_EQ(prompt.questions[0].choices, (QStringList{"&Save", "&Discard", "&Later"}));
    EXPECT_EQ(prompt.questions[0].defaultChoice, 0);
    EXPECT_EQ(prompt.questions[0].escapeChoice, 2);
    EXPECT_TRUE(QFile::exists(first) && QFile::exists(second));
}

// The capture file is the one the signals display would have saved, timed by the frequency
// and cut by the threshold the capture had; the journal goes only once it is written.
TEST_F(UnsavedCapturesTest, SaveWritesTheCaptureFileAndOnlyThenRemovesTheJournal) {
    SaveSettingString(SettingsRoot::CurrentUser, QLatin1String(kAcquisitionKey),
                      QStringLiteral("Last File Path"), QStringLiteral("/where/it/was"));
    CaptureJournalHeader header = JournalBytes::header();
    header.sampleFrequency = 500;
    header.minFz = -5;
    const QString journal = leave({CaptureRow{}, captureRowOf({-700, 7, -14}, {1, 2, 3}, -5),
                                   captureRowOf({-3, 0, 0}, {1, 1, 1}, -5)},
                                  header);
    prompt.answers = {0};
    prompt.fileAnswers = {documents("recovered.txt")};
    offer();
    EXPECT_EQ(saves, 1);
    ASSERT_EQ(prompt.dialogs.size(), 1u);
    EXPECT_EQ(prompt.dialogs[0].title,
              "KX Force Platforms Control Panel - Save Captured Data File As");
    EXPECT_EQ(prompt.dialogs[0].initialFolder, "/where/it/was");
    EXPECT_EQ(GetSettingString(SettingsRoot::CurrentUser, QLatin1String(kAcquisitionKey),
                               QStringLiteral("Last File Path"), {}),
              environment.documentsFolder());
    EXPECT_EQ(
        fileBytes(documents("recovered.txt")),
        "%Time(s), V1, V2, V3, Fz, Mx, My, CoPx, CoPy\r\n"
        "%NaN, NaN, NaN, NaN, NaN, NaN, NaN, NaN, NaN\r\n"
        "0.002000, 1.000000, 2.000000, 3.000000, -700.000000, 7.000000, -14.000000, "
        "-0.020000, -0.010000\r\n"
        "0.004000, 1.000000, 1.000000, 1.000000, -3.000000, 0.000000, 0.000000, NaN, NaN\r\n");
    EXPECT_FALSE(QFile::exists(journal));
    EXPECT_TRUE(prompt.messages.isEmpty());
}

// A cancelled file dialog, a cancelled save and a failed one each ask again; the journal stays.
TEST_F(UnsavedCapturesTest, ACancelledOrFailedSaveAsksAgain) {
    const QString journal = leave(Rows(1'000'000, CaptureRow{{1, 2, 3}, {-700, 1, 1}, {}}));
    prompt.answers = {0, 0, 0, 2}; // Save (cancelled), Save (cancelled save), Save (fails), Later
    prompt.fileAnswers = {std::nullopt, documents("big.txt"), documents("gone/big.txt")};
    savesToCancel = 1;
    offer();
    EXPECT_EQ(prompt.questions.size(), 4u);
    EXPECT_EQ(saves, 2);
    ASSERT_EQ(prompt.messages.size(), 1) << "the failure is told, the cancel is not";
    EXPECT_TRUE(prompt.messages[0].contains(QDir::toNativeSeparators(documents("gone/big.txt"))))
        << prompt.messages[0].toStdString();
    EXPECT_TRUE(QFile::exists(journal));
    EXPECT_TRUE(QDir(environment.documentsFolder()).isEmpty());
}

TEST_F(UnsavedCapturesTest, DiscardIsAskedTwice) {
    const QString journal = leave(Rows(2));
    prompt.answers = {1, 1, 1, 0}; // Discard, Keep, Discard, Discard
    offer();
    ASSERT_EQ(prompt.questions.size(), 4u);
    EXPECT_EQ(prompt.questions[1].text,
              "Discard the 2 captured rows? They cannot be brought back.");
    EXPECT_EQ(prompt.questions[2].text, prompt.questions[0].text);
    EXPECT_FALSE(QFile::exists(journal));
    EXPECT_TRUE(prompt.dialogs.empty());
}

// A journal that cannot be read is told about once and set aside, never deleted; one that
// holds no row, or was saved already, goes without a word.
TEST_F(UnsavedCapturesTest, AnUnreadableJournalIsSetAsideAndAnEmptyOneGoes) {
    const QString empty = leave({});
    const QString foreign = QDir(UnsavedCapturesFolder()).filePath("notes.kxcj");
    writeFileBytes(foreign, "shopping list");
    // Saved before a kill, and set aside but not yet deleted.
    const QString saved = QDir(UnsavedCapturesFolder()).filePath("saved.kxcj.removed");
    writeFileBytes(saved, JournalBytes().rows(Rows(2)).bytes);
    offer();
    EXPECT_TRUE(eventsUntil([&] { return !QFile::exists(saved); }));
    EXPECT_TRUE(prompt.questions.empty());
    ASSERT_EQ(prompt.messages.size(), 1);
    EXPECT_EQ(prompt.messages[0], "The unsaved capture " + QDir::toNativeSeparators(foreign) +
                                      " cannot be read: it is not a capture journal.\n\nIt stays "
                                      "in its folder, set aside as \"notes.kxcj.unreadable\".");
    EXPECT_FALSE(QFile::exists(empty));
    EXPECT_EQ(fileBytes(foreign + ".unreadable"), "shopping list");
    offer();
    EXPECT_EQ(prompt.messages.size(), 1) << "not told again at the next start";
}

} // namespace
} // namespace kx::test
