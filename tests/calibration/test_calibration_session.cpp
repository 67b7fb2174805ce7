#include "../support/PrintQString.h"
#include "FileBytes.h"
#include "FileSizeLimit.h"
#include "RecordingPrompt.h"
#include "SessionBench.h"
#include "TempEnvironment.h"
#include "calibration/CalFileWriter.h"
#include "calibration/CalibrationRecovery.h"
#include "calibration/CalibrationTexts.h"
#include "resources/StringTable.h"
#include "support/IniFile.h"
#include "support/NumberFormat.h"

#include <QDir>
#include <QFileInfo>
#include <QFile>
#include <gtest/gtest.h>
#include <limits>

namespace kx::test {
namespace {

namespace c = strings::calibrate;
using FitState = Calibration::FitState;

class Session : public ::testing::Test {
protected:
    CalibrationSession& begin(PlateDevice* device) {
        session.reset();
        session = std::make_unique<CalibrationSession>(clock, prompt);
        // No outside engine: every fit is the built-in one, after the engine's absence is told.
        session->setFitProgram(QStringLiteral("/no/such/octave-cli"));
        session->setDuration(QStringLiteral("2"));
        session->begin(CalibrationSettings::load(IniFile::sharedProfile()), device);
        hands.emplace(clock, plate, *session);
        return *session;
    }
    CalibrationSession& begin() { return begin(&plate); }
    // The session closed as the dialog closes it, and a new one begun on the same plate.
    CalibrationSession& beginAgain(bool unplugged = false) {
        session->end(unplugged);
        return begin();
    }

    void fillForm(const char* operatorCode = "JD7") {
        session->setOperatorCode(QLatin1String(operatorCode));
        session->setCondition(CalibrationSession::Condition::Temperature, QStringLiteral("21.5"));
        session->setCondition(CalibrationSession::Condition::Humidity, QStringLiteral("40"));
        session->setCondition(CalibrationSession::Condition::Pressure, QStringLiteral("1013"));
    }
    // Four points walked, fitted and saved: the file's path.
    QString savedCalibration() {
        begin();
        hands->walk(0, 4);
        session->computeMatrix();
        fillForm();
        EXPECT_TRUE(session->save());
        return session->openFile();
    }

    QStringList told() const {
        QStringList shown = prompt.messages;
        shown.removeAll(strings::text(c::EngineUnavailable));
        return shown;
    }
    QStringList asked() const {
        QStringList texts;
        for (const Question& question : prompt.questions)
            texts << question.text;
        return texts;
    }
    void forget() {
        prompt.messages.clear();
        prompt.questions.clear();
        prompt.events.clear();
    }
    std::optional<KeptWork> kept() const {
        QString why;
        return CalibrationRecovery(plate.serial()).read(why);
    }
    bool plateWasCalibrated() { return plate.CalibrationRecordDate().isValid(); }

    TempEnvironment environment;
    ManualClock clock{1000};
    RecordingPrompt prompt;
    SimDriver driver{clock};
    SimPlate& plate = openCalibrationPlate(driver, clock);
    std::unique_ptr<CalibrationSession> session;
    std::optional<SessionHands> hands;
};

// A zero noisier than the profile allows is refused with the text of its mode, after the
// completion sound, and the earlier results and the plate's zero stay.
TEST_F(Session, ANoisyZeroIsRefusedWithTheTextOfItsMode) {
    (void)IniFile::sharedProfile().setValue(QStringLiteral("Calibration"),
                                            QStringLiteral("Max Zero StdDev"), QStringLiteral("1"));
    begin();
    const qint32 before = plate.ZeroValue(1, Which::Current);
    for (const bool scaling : {false, true}) {
        forget();
        (scaling ? hands->takeScalingZero() : hands->takeZero());
        EXPECT_EQ(told(),
                  QStringList{scaling ? "Error: Signal Too Noisy!\nTry the acquisition again."
                                      : "Error: Signal Too Noisy!\n\n\n\nTry the "
                                        "acquisition again."});
        ASSERT_EQ(prompt.events.size(), 2);
        EXPECT_TRUE(prompt.events[0].startsWith(QStringLiteral("sound:"))) << "sound first";
        EXPECT_EQ(session->status(), "Ready");
    }
    EXPECT_FALSE(session->calibration().record.points[0].zeroDone);
    EXPECT_FALSE(session->calibration().record.scalingZero.done);
    EXPECT_EQ(plate.ZeroValue(1, Which::Current), before);
}

// Without a matrix that matches the points OK writes nothing into the plate: it asks, and
// going back or closing leaves the plate's matrix and records alone.
TEST_F(Session, OkWithoutAMatrixWritesNothingToThePlate) {
    begin();
    fillForm();
    const Matrix3 held = plate.storedMatrix();
    EXPECT_FALSE(session->commit()) << "Esc goes back";
    ASSERT_EQ(asked(), QStringList{strings::text(c::OkWithoutFit)});
    EXPECT_EQ(prompt.questions[0].choices, (QStringList{"&Close Without Writing", "&Go Back"}));
    prompt.answers = {0};
    EXPECT_TRUE(session->commit());
    EXPECT_EQ(plate.storedMatrix(), held);
    EXPECT_FALSE(plateWasCalibrated());
}

// A calibration opened from its file is fitted as it opens: OK then commits its matrix, and
// the plate holds exactly what the main window's boxes are handed.
TEST_F(Session, ACalibrationOpenedFromItsFileIsFittedAndCommitted) {
    const QString file = savedCalibration();
    const CalMatrix fitted = session->calibration().matrix;
    beginAgain();
    EXPECT_EQ(session->calibration().fitState(), FitState::Absent);
    prompt.fileAnswers = {file};
    session->open();
    EXPECT_EQ(session->calibration().fitState(), FitState::Current);
    EXPECT_EQ(session->calibration().matrix, fitted);
    forget();
    session->setOperatorCode(QStringLiteral("JD7"));
    ASSERT_TRUE(session->commit());
    EXPECT_EQ(told(), QStringList());
    EXPECT_EQ(asked(), QStringList());
    const QStringList texts = session->committedTexts();
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(plate.storedMatrix()[std::size_t(i / 3)][std::size_t(i % 3)],
                  double(texts[i].toFloat()))
            << i;
    EXPECT_EQ(plate.CalibrationRecordOperator(), "JD7");
    EXPECT_EQ(plate.CalibrationRecordDate(), clock.currentDateTime());
}

// The report says whether the plate holds the calibration's scaled matrix, as read back from
// the plate when the report is made: not before OK, and again not once the scaling changes.
TEST_F(Session, TheReportSaysWhetherThePlateHoldsTheMatrix) {
    const auto plateSays = [this] {
        const std::optional<CalibrationSession::ReportRequest> request = session->prepareReport();
        if (!request)
            return QStringLiteral("(no report)");
        for (const ReportSection& part : request->report.pages[0].sections)
            if (part.heading.startsWith(QStringLiteral("Scaled Matrix")))
                return part.notes.back();
        return QStringLiteral("(no scaled matrix)");
    };
    const QString notWritten = strings::text(c::ReportScaledNotWritten);
    const QString held = strings::text(c::ReportScaledHeld);
    const QString file = savedCalibration();
    EXPECT_EQ(plateSays(), notWritten);
    ASSERT_TRUE(session->commit());

    // Printed later, from the calibration's file.
    beginAgain();
    fillForm();
    prompt.fileAnswers = {file};
    session->open();
    EXPECT_EQ(plateSays(), held);
    ASSERT_TRUE(session->applyScale(QStringLiteral("1.01")));
    EXPECT_EQ(plateSays(), notWritten);
    ASSERT_TRUE(session->applyScale(QStringLiteral("1")));
    EXPECT_EQ(plateSays(), held);
    EXPECT_EQ(told(), QStringList());

    // The same calibration under another plate's name: what the plate attached holds says
    // nothing about that plate.
    const QString others = QFileInfo(file).dir().filePath(QStringLiteral("99999_1.cal"));
    ASSERT_TRUE(QFile::copy(file, others));
    prompt.fileAnswers = {others};
    session->open();
    EXPECT_EQ(plateSays(), notWritten);
}

// Whatever the fit was computed from changes, the fit goes stale; what it was not computed
// from leaves it current. A stale fit is neither committed nor reported.
TEST_F(Session, AFitMatchesThePointsOrIsStale) {
    begin();
    hands->walk(0, 5);
    session->computeMatrix();
    ASSERT_EQ(session->calibration().fitState(), FitState::Current);
    const CalMatrix first = session->calibration().matrix;

    hands->goTo(7);
    hands->takeZero(); // a zero at a point without data is no input of the fit
    session->applyScale(QStringLiteral("1.01"));
    EXPECT_EQ(session->calibration().fitState(), FitState::Current);

    hands->goTo(2);
    hands->takeZero(); // clears point 3's data
    EXPECT_EQ(session->calibration().fitState(), FitState::Stale);
    hands->takeData();
    EXPECT_EQ(session->calibration().fitState(), FitState::Stale) << "new data, old fit";
    session->computeMatrix();
    EXPECT_EQ(session->calibration().fitState(), FitState::Current);

    // A refit refused for want of points keeps the old matrix, stale.
    for (const int point : {0, 1, 2}) {
        hands->goTo(point);
        hands->takeZero();
    }
    const CalMatrix refitted = session->calibration().matrix;
    EXPECT_NE(refitted, first);
    forget();
    session->computeMatrix();
    EXPECT_EQ(told().size(), 1) << "the refusal";
    EXPECT_EQ(session->calibration().matrix, refitted);
    EXPECT_EQ(session->calibration().fitState(), FitState::Stale);

    fillForm();
    forget();
    EXPECT_FALSE(session->prepareReport());
    EXPECT_EQ(told(), QStringList{strings::text(c::ReportWithStaleFit)});
    const Matrix3 held = plate.storedMatrix();
    EXPECT_FALSE(session->commit());
    EXPECT_EQ(asked(), QStringList{strings::text(c::OkWithStaleFit)});
    EXPECT_EQ(plate.storedMatrix(), held);
    EXPECT_FALSE(plateWasCalibrated());
}

// Get Data needs the point's accepted zero, a linearity step the scaling zero: otherwise the
// status says what to do and neither the plate's zero nor the points change.
TEST_F(Session, NoAcquisitionWithoutItsZero) {
    begin();
    hands->walk(0, 1);
    hands->goTo(3);
    const Matrix3 before = plate.storedMatrix();
    const std::array<qint32, 3> zero{plate.ZeroValue(0, Which::Current),
                                     plate.ZeroValue(1, Which::Current),
                                     plate.ZeroValue(2, Which::Current)};
    const CalibrationRecord record = session->calibration().record;
    forget();
    hands->takeData();
    EXPECT_EQ(session->status(), "Point 4 has no zero: unload the plate and press Get Zero first.");
    hands->takeStep(0, 25);
    EXPECT_EQ(session->status(), strings::text(c::NeedScalingZero));
    EXPECT_EQ(session->calibration().record, record);
    EXPECT_EQ(prompt.events, QStringList()) << "no acquisition ended, no message";
    EXPECT_EQ(plate.ZeroValue(0, Which::Current), zero[0]);
    EXPECT_EQ(plate.ZeroValue(2, Which::Current), zero[2]);
    EXPECT_EQ(plate.storedMatrix(), before);

    hands->takeZero();
    hands->takeData();
    EXPECT_TRUE(session->calibration().record.points[3].dataDone);
    hands->takeScalingZero();
    hands->takeStep(0, 25);
    EXPECT_TRUE(session->calibration().record.steps[0].done);
}

// OK writes the nine cells and reads them back; any failure puts the old cells back, is told
// once, writes no operator record and keeps the dialog open. Records that fail after a good
// matrix are told, and OK tried again writes them.
TEST_F(Session, ThePlateHoldsAllNineNewCellsOrItsOldMatrix) {
    begin();
    hands->walk(0, 4);
    session->computeMatrix();
    fillForm();
    const Matrix3 old = plate.storedMatrix();
    const QString cable = QStringLiteral("The cable is loose.");
    struct Case {
        const char* name;
        std::function<void()> plan;
        QString message;
    } cases[] = {
        {"the fifth cell cannot be written",
         [&] { plate.failures().failOneCall(QStringLiteral("SetMatrixElement"), 4, cable); },
         strings::text(c::CommitFailed).arg(cable)},
        {"the fifth cell cannot be read back",
         [&] { plate.failures().failOneCall(QStringLiteral("MatrixElement"), 9 + 4, cable); },
         strings::text(c::CommitFailed).arg(cable)},
        {"the old matrix cannot be read",
         [&] { plate.failures().failOneCall(QStringLiteral("MatrixElement"), 0, cable); },
         strings::text(c::CommitOldUnreadable).arg(cable)},
        {"no cell can be written, nor the old ones again",
         [&] { plate.failures().failEveryCall(QStringLiteral("SetMatrixElement"), cable); },
         strings::text(c::CommitMixed).arg(cable, cable)},
    };
    for (const Case& k : cases) {
        plate.failures().clear();
        k.plan();
        forget();
        EXPECT_FALSE(session->commit()) << k.name;
        EXPECT_EQ(told(), QStringList{k.message}) << k.name;
        plate.failures().clear();
        EXPECT_EQ(plate.storedMatrix(), old) << k.name;
        EXPECT_FALSE(plateWasCalibrated()) << k.name;
    }

    plate.failures().failOneCall(QStringLiteral("SetOperatorRecord3"), 0, cable);
    forget();
    EXPECT_FALSE(session->commit());
    EXPECT_EQ(told(), QStringList{strings::text(c::CommitRecordsFailed).arg(cable)});
    EXPECT_NE(plate.storedMatrix(), old) << "the verified matrix stays";
    EXPECT_FALSE(plate.InspectionRecordDate().isValid());
    EXPECT_TRUE(session->commit());
    EXPECT_EQ(plate.InspectionRecordOperator(), "JD7");
}

// Each accepted acquisition is kept at once, with what the technician had typed; what is kept
// survives an unplug and comes back in the next session of the plate, fitted; a save or a
// deliberate discard ends it.
TEST_F(Session, NothingCollectedIsLost) {
    begin();
    EXPECT_FALSE(kept()) << "nothing to keep yet";
    fillForm("AB");
    for (int point = 0; point < 4; ++point) {
        hands->goTo(point);
        hands->takeZero();
        ASSERT_TRUE(kept()) << point;
        EXPECT_EQ(kept()->calibration.record, session->calibration().record) << point;
        hands->takeData();
        EXPECT_EQ(kept()->calibration.record, session->calibration().record) << point;
    }
    hands->takeScalingZero();
    hands->takeStep(0, 25);
    const CalibrationRecord record = session->calibration().record;
    EXPECT_EQ(kept()->calibration.record, record);
    EXPECT_TRUE(record.steps[0].done);
    const QString work = QStringLiteral("4 of 10 points taken, 1 of 8 linearity steps taken");

    // An unplug closes the session without a question and keeps the work.
    const QString keptAt = dateTimeText(OleDate::fromDateTime(kept()->keptAt));
    forget();
    beginAgain(true);
    ASSERT_EQ(prompt.questions.size(), 1u);
    const Question& offer = prompt.questions[0];
    EXPECT_EQ(offer.text, strings::text(c::RecoveryOffer).arg("30417", keptAt, work));
    EXPECT_EQ(offer.choices, (QStringList{"&Restore", "&Discard"}));
    EXPECT_EQ(offer.escapeChoice, 0) << "Esc restores";
    EXPECT_EQ(session->calibration().record, record);
    EXPECT_EQ(session->calibration().currentPoint, 3);
    EXPECT_EQ(session->form().operatorCode, "AB");
    EXPECT_EQ(session->form().pressure, "1013");
    EXPECT_EQ(session->calibration().fitState(), FitState::Current) << "fitted as restored";
    EXPECT_TRUE(session->hasWorkAtRisk());

    // Leaving asks; going back, a failed save and a discard thought better of all stay.
    forget();
    prompt.answers = {2, 1, 1};
    EXPECT_FALSE(session->mayLeave());
    EXPECT_FALSE(session->mayLeave()) << "Discard, then Go Back";
    ASSERT_EQ(asked().size(), 3);
    EXPECT_EQ(asked()[0], strings::text(c::LeaveQuestion).arg(work));
    EXPECT_EQ(asked()[2], strings::text(c::DiscardConfirm).arg(work));
    session->setOperatorCode(QStringLiteral(" "));
    prompt.answers = {0};
    EXPECT_FALSE(session->mayLeave());
    EXPECT_EQ(told(), QStringList{strings::text(c::InvalidOperator)});
    ASSERT_TRUE(kept());

    // A save ends the kept work; so does a discard meant.
    session->setOperatorCode(QStringLiteral("AB"));
    EXPECT_TRUE(session->save());
    EXPECT_FALSE(kept());
    EXPECT_TRUE(session->mayLeave());
    hands->goTo(4);
    hands->takeZero();
    ASSERT_TRUE(kept());
    prompt.answers = {1, 0};
    EXPECT_TRUE(session->mayLeave());
    EXPECT_FALSE(kept());
}

TEST_F(Session, KeptWorkDiscardedAtTheOfferIsAskedOnceMoreAndUnreadableWorkIsSetAside) {
    begin();
    hands->walk(0, 2);
    const CalibrationRecord record = session->calibration().record;
    forget();
    prompt.answers = {1, 1}; // Discard, then Keep It
    beginAgain();
    ASSERT_EQ(asked().size(), 2);
    EXPECT_EQ(asked()[1], strings::text(c::RecoveryDiscardConfirm)
                              .arg("30417", "2 of 10 points taken, 0 of 8 linearity steps taken"));
    EXPECT_EQ(session->calibration().record, record);
    prompt.answers = {1, 0};
    beginAgain();
    EXPECT_FALSE(kept());
    EXPECT_FALSE(session->hasWorkAtRisk());

    // Another plate's session sees none of this plate's work.
    hands->walk(0, 1);
    SimPlateConfig other = calibrationPlateConfig();
    other.serial = QStringLiteral("11093");
    SimPlate* second = driver.addPlate(other);
    driver.OpenDevices(PlateVendorId, PlateProductId1, PlateProductId2);
    forget();
    session->end(false);
    begin(second);
    EXPECT_EQ(asked(), QStringList());

    const CalibrationRecovery recovery(plate.serial());
    writeFileBytes(recovery.path(), fileBytes(recovery.path()).left(100));
    forget();
    begin();
    ASSERT_EQ(told().size(), 1);
    EXPECT_TRUE(told()[0].startsWith("The calibration work kept for plate 30417 cannot be read: "))
        << told()[0].toStdString();
    EXPECT_EQ(asked(), QStringList());
    EXPECT_FALSE(recovery.exists());
    EXPECT_EQ(QDir(QFileInfo(recovery.path()).path()).entryList(QDir::Files).size(), 1)
        << "moved aside, not deleted";
}

// An older file lacks the environment: it takes the profile's gravity and pressure correction
// and no conditions, never those of the calibration open before.
TEST_F(Session, AnOldFileTakesTheProfilesEnvironment) {
    begin();
    CalibrationRecord full = session->calibration().record;
    full.environment = {9.81, 21.0f, 40.0f, 1000.0, 4.0};
    const QString folder = QDir(environment.path()).filePath(QStringLiteral("files"));
    const QString fullFile = QDir(folder).filePath(QStringLiteral("30417_1.cal"));
    ASSERT_TRUE(saveCalFile(fullFile, full));
    const QString oldFile = QDir(folder).filePath(QStringLiteral("30417_2.cal"));
    QFile::copy(QStringLiteral(KX_CAL_GOLDEN_DIR "/through17.cal"), oldFile);
    for (const QString& file : {fullFile, oldFile}) {
        prompt.fileAnswers = {file};
        session->open();
    }
    EXPECT_EQ(session->calibration().record.environment,
              (CalEnvironment{9.796878, 0, 0, 0, 5.210406}));
    EXPECT_EQ(session->form().temperature, "0");
    EXPECT_EQ(session->form().pressure, "0");
}

// A calibration of another plate says so when it opens, and OK asks before writing it here.
TEST_F(Session, AnotherPlatesCalibrationIsWrittenOnlyWhenConfirmed) {
    const QString file = savedCalibration();
    const QString folder = QFileInfo(file).path();
    const QString foreign = QDir(folder).filePath(QStringLiteral("11093_4.cal"));
    const QString unnamed = QDir(folder).filePath(QStringLiteral("lab copy.cal"));
    QFile::copy(file, foreign);
    QFile::copy(file, unnamed);
    beginAgain();
    for (const auto& [path, serial] : {std::pair{unnamed, strings::text(c::UnknownPlate)},
                                       std::pair{foreign, QStringLiteral("11093")}}) {
        forget();
        prompt.fileAnswers = {path};
        session->open();
        EXPECT_EQ(told(), QStringList{strings::text(c::OtherPlateOpened).arg(serial, "30417")});
    }
    EXPECT_EQ(session->calibration().serialOnFile, "11093");
    session->setOperatorCode(QStringLiteral("JD7"));
    forget();
    EXPECT_FALSE(session->commit());
    ASSERT_EQ(asked(), QStringList{strings::text(c::OtherPlateCommit).arg("11093", "30417")});
    EXPECT_EQ(prompt.questions[0].choices, (QStringList{"&Write to Plate 30417", "&Go Back"}));
    EXPECT_FALSE(plateWasCalibrated());
    prompt.answers = {0};
    EXPECT_TRUE(session->commit());
    EXPECT_TRUE(plateWasCalibrated());
}

// The excitation box sets the plate's excitation and shows what the plate took; data taken at
// one excitation bring the plate back to it for the next acquisition, with the note.
TEST_F(Session, TheExcitationBoxSetsThePlate) {
    begin();
    for (const auto& [typed, held] : {std::pair{"2.5", 2.5f}, std::pair{"9", 5.0f},
                                      std::pair{"-1", 0.01f}, std::pair{"2,5", 0.01f}}) {
        session->setExcitation(QLatin1String(typed));
        EXPECT_FLOAT_EQ(plate.GageVoltage(Which::Current), held) << typed;
        EXPECT_EQ(session->form().excitation, formatNumber(held, u"0.000")) << typed;
    }
    EXPECT_EQ(prompt.beeps, 1) << "the comma is refused";
    session->setExcitation(QStringLiteral("2.5"));
    hands->walk(0, 1);
    session->setExcitation(QStringLiteral("4"));
    hands->takeZero();
    EXPECT_FLOAT_EQ(plate.GageVoltage(Which::Current), 2.5f);
    EXPECT_EQ(session->form().excitation, "2.500");
    EXPECT_EQ(session->form().excitationNote,
              "for compatibility with previously collected data\nthe bridge excitation has been "
              "set to 2.500");
}

// The load buttons follow the profile's steps, named by their kilograms at its gravity.
TEST_F(Session, TheStepsFollowTheProfile) {
    begin();
    QStringList captions;
    for (int step = 0; step < 8; ++step)
        captions << session->stepCaption(step);
    EXPECT_EQ(captions,
              (QStringList{"Load &25 kg", "Load &50 kg", "Load &75 kg", "Load &100 kg",
                           "Unload &100 kg", "Unload &75 kg", "Unload &50 kg", "Unload &25 kg"}));
    const IniFile profile = IniFile::sharedProfile();
    const QString section = QStringLiteral("Linearity");
    (void)profile.setValue(section, QStringLiteral("Loads"), QStringLiteral("5"));
    for (int n = 1; n <= 5; ++n)
        (void)profile.setValue(section, QStringLiteral("Load %1").arg(n),
                               QString::number(12.5 * n * ProfileGravity, 'f', 3));
    session->end(false);
    begin();
    ASSERT_EQ(session->calibration().record.steps.size(), 5u);
    captions.clear();
    for (int step = 0; step < 5; ++step)
        captions << session->stepCaption(step);
    EXPECT_EQ(captions, (QStringList{"Load &12.5 kg", "Load &25 kg", "Unload &37.5 kg",
                                     "Unload &50 kg", "Unload &62.5 kg"}));
}

// A save the disk cuts short tells why once and leaves the file as it was, byte for byte;
// so does a recovery write. The work stays, to be saved again.
TEST_F(Session, ShortWritesKeepTheOldFilesWhole) {
    const QString file = savedCalibration();
    hands->goTo(5);
    hands->takeZero();
    const CalibrationRecovery recovery(plate.serial());
    const QByteArray savedBytes = fileBytes(file);
    const QByteArray keptBytes = fileBytes(recovery.path());
    ASSERT_FALSE(keptBytes.isEmpty());
    const rlim_t limit = rlim_t(std::min(savedBytes.size(), keptBytes.size()) / 2);
    const int saved = exitStatusUnderFileSizeLimit(limit, [&] {
        const bool refused = !session->save();
        return refused && told().size() == 1 &&
                       told()[0].startsWith(
                           strings::text(c::FileNotSaved).arg(QDir::toNativeSeparators(file)))
                   ? 0
                   : 1;
    });
    EXPECT_EQ(saved, 0);
    EXPECT_EQ(fileBytes(file), savedBytes);
    const int keptSafe = exitStatusUnderFileSizeLimit(limit, [&] {
        hands->goTo(6);
        hands->takeZero();
        hands->takeData();
        const QString notKept =
            strings::text(c::RecoveryNotKept).section(QStringLiteral("%2"), 0, 0);
        return told().size() == 1 &&
                       told()[0].startsWith(notKept.arg(QDir::toNativeSeparators(recovery.path())))
                   ? 0
                   : 1;
    });
    EXPECT_EQ(keptSafe, 0) << "told once for the zero and the data";
    EXPECT_EQ(fileBytes(recovery.path()), keptBytes);
}

// A matrix cell's tip says what the cell is, in its units, to the figures that matter: the
// uncertainty to two significant figures and the value to the same place.
TEST(CalibrationTexts, MatrixCellTipsRoundToTheFiguresThatMatter) {
    const std::tuple<int, int, float, std::optional<double>, const char*> cases[] = {
        {0, 0, -1234.5678f, 2.77205529759035,
         "Fz per volt of bridge 1: -1234.6 N/V, known to ±2.8 N/V (about 95 %)"},
        {1, 2, 407.51934f, 0.0123,
         "Mx per volt of bridge 3: 407.519 N·m/V, known to ±0.012 N·m/V (about 95 %)"},
        {2, 1, -1163.3f, 27.7,
         "My per volt of bridge 2: -1163 N·m/V, known to ±28 N·m/V (about 95 %)"},
        {2, 0, 5.8124f, std::nullopt, "My per volt of bridge 1: 5.812 N·m/V"},
        {0, 2, 1.5f, std::numeric_limits<double>::quiet_NaN(),
         "Fz per volt of bridge 3: 1.500 N/V"},
    };
    for (const auto& [row, column, value, uncertainty, tip] : cases)
        EXPECT_EQ(matrixCellTip(row, column, value, uncertainty), QString::fromUtf8(tip)) << tip;
}

} // namespace
} // namespace kx::test
