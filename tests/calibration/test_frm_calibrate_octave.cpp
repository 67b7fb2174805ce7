#include "../support/PrintQString.h"
#include "CalibrateBench.h"
#include "calibration/BuiltInFitEngine.h"
#include "calibration/Calibration.h"
#include "calibration/MatrixFit.h"
#include "resources/StringTable.h"

#include <QDir>
#include <QFile>
#include <QProgressBar>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <cerrno>
#include <csignal>

namespace kx::test {
namespace {

namespace c = strings::calibrate;

// Each wait for the child is bounded; a healthy run ends in milliseconds.
constexpr int ChildWaitMs = 20000;
constexpr int Points = 4;

// Whether the process still exists; a zombie nobody has reaped still does.
bool exists(pid_t pid) {
    return ::kill(pid, 0) == 0 || errno != ESRCH;
}

// Stand-ins for octave-cli written into the test's folder, so the tests need no Octave: one
// that answers as Octave would (the fit of the walked points, written to "answer"), one that
// never answers, one that fails, and so on. Each leaves its process id in "pid" and what it was
// sent in "received.m".
class CalibrateWithOctave : public DialogFixture<frmCalibrate> {
protected:
    QString standIn(const QString& name, const QByteArray& body,
                    const QByteArray& interpreter = "/bin/sh") {
        const QString path = folder.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!" + interpreter + "\ncd '" + QFile::encodeName(folder.path()) +
                   "'\necho $$ > pid\n" + body);
        file.close();
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QFile::remove(folder.filePath(QStringLiteral("pid")));
        return path;
    }
    // Reads its input, waits until `go` exists when asked to, then gives C and F.
    QString answering(bool waitForGo = false) {
        QByteArray body = "cat > received.tmp && mv received.tmp received.m\n";
        if (waitForGo)
            body += "while [ ! -e go ]; do sleep 0.02; done\n";
        body += "echo 'warning: a banner line'\necho KX-FIT-RESULT\ncat answer\n";
        return standIn(QStringLiteral("answering"), body);
    }
    // The fit of the points walked, column by column as Octave prints it.
    void writeAnswer() {
        QString unused;
        const FitProblem problem =
            MatrixFit::pose(dialog->session().calibration().record.points, unused).value();
        const FitProducts fit = BuiltInFitEngine().compute(problem.L, problem.S, unused).value();
        QByteArray answer;
        for (const Eigen::MatrixXd* m : {&fit.C, &fit.F})
            for (Eigen::Index j = 0; j < m->cols(); ++j)
                for (Eigen::Index i = 0; i < m->rows(); ++i)
                    answer += QByteArray::number((*m)(i, j), 'g', 17) + '\n';
        QFile file(folder.filePath(QStringLiteral("answer")));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(answer) == answer.size());
    }
    QString silent() { return standIn(QStringLiteral("silent"), "exec sleep 60\n"); }

    frmCalibrate& openWalked(const QString& program) {
        plate = &openCalibrationPlate(driver, clock);
        openDialog(plate, [&](frmCalibrate& d) {
            d.txtDuration->setText(QStringLiteral("2"));
            d.setFitProgram(program);
        });
        CalibrateHands(clock, *plate).walk(*dialog, 0, Points);
        writeAnswer();
        return *dialog;
    }

    bool fitDone() {
        return QTest::qWaitFor([this] { return dialog->cmdMatrix->isEnabled(); }, ChildWaitMs);
    }
    // The stand-in's process id, once it has started.
    pid_t childPid() {
        QFile file(folder.filePath(QStringLiteral("pid")));
        EXPECT_TRUE(QTest::qWaitFor([&] { return file.exists() && file.size() > 0; }, ChildWaitMs));
        return file.open(QIODevice::ReadOnly) ? pid_t(file.readAll().trimmed().toInt()) : 0;
    }
    bool childGone(pid_t pid) {
        return pid > 0 && QTest::qWaitFor([pid] { return !exists(pid); }, ChildWaitMs);
    }

    CalMatrix builtInMatrix() const {
        BuiltInFitEngine builtIn;
        return MatrixFit::compute(dialog->session().calibration().record.points, builtIn)
            .result->matrix;
    }
    QString fellBack(const QString& why) const {
        return strings::text(c::EngineUnavailable) + "\n\n" + why + "\n\n" +
               strings::text(c::EngineBuiltInUsed);
    }

    QTemporaryDir folder;
    SimPlate* plate = nullptr;
};

// The window stays live while Octave works and shows its matrix; whatever goes wrong with Octave,
// an answer that is not the fit of the points included, the technician is told so and gets the
// built-in fit.
TEST_F(CalibrateWithOctave, TheWindowStaysLiveAndAFailingOctaveFallsBackToTheBuiltInFit) {
    frmCalibrate& calibrate = openWalked(answering(true));
    calibrate.cmdMatrix->click();
    bool eventsRan = false;
    QTimer::singleShot(0, &calibrate, [&] { eventsRan = true; });
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return QFile::exists(folder.filePath(QStringLiteral("received.m"))); }, ChildWaitMs));
    EXPECT_TRUE(eventsRan) << "the window handles events while the child works";
    EXPECT_EQ(calibrate.StatusBar1->currentMessage(), "Computing Matrix");
    EXPECT_EQ(calibrate.ProgressBar1->maximum(), 0) << "a busy bar";
    for (QWidget* control : std::initializer_list<QWidget*>{
             calibrate.cmdMatrix, calibrate.cmdZero, calibrate.cmdData, calibrate.cmdNext,
             calibrate.picPlate, calibrate.cmdScaleZero, calibrate.cmdFileName, calibrate.cmdOK})
        EXPECT_FALSE(control->isEnabled()) << control->objectName().toStdString();
    EXPECT_TRUE(calibrate.cmdCancel->isEnabled());

    QFile(folder.filePath(QStringLiteral("go"))).open(QIODevice::WriteOnly);
    ASSERT_TRUE(fitDone());
    EXPECT_EQ(prompt.messages, QStringList()) << "Octave's matrix taken";
    EXPECT_EQ(calibrate.session().calibration().matrix, builtInMatrix());
    EXPECT_EQ(calibrate.StatusBar1->currentMessage(), "Ready");
    EXPECT_TRUE(calibrate.cmdZero->isEnabled() && calibrate.picPlate->isEnabled());
    EXPECT_EQ(calibrate.flxgrdErrors->rowCount(), Points);

    const CalMatrix builtIn = builtInMatrix();
    const QString missing = folder.filePath(QStringLiteral("no-such-octave"));
    const QString failing =
        standIn(QStringLiteral("failing"), "echo 'error: out of memory' >&2\nexit 1\n");
    const QString babbling =
        standIn(QStringLiteral("babbling"), "cat > /dev/null\necho KX-FIT-RESULT\necho 1\n");
    const QString unstartable = standIn(QStringLiteral("unstartable"), "", "/no/such/interpreter");
    const QString ones = standIn(QStringLiteral("ones"),
                                 "cat > /dev/null\necho KX-FIT-RESULT\nfor v in $(seq " +
                                     QByteArray::number(9 + 3 * Points) + "); do echo 1; done\n");

    struct Case {
        QString program;
        QString message; // a prefix where the system's own words follow
        bool exact;
    } cases[] = {
        {missing, "Unable to start Matlab", true},
        {failing, fellBack(failing + " failed: error: out of memory"), true},
        {babbling, fellBack(babbling + " gave no complete result."), true},
        {unstartable,
         strings::text(c::EngineUnavailable) + "\n\n" + unstartable + " could not be started: ",
         false},
        // Octave started and answered: the heading says so, not that it could not start.
        {ones,
         "The fit engine answered, but its matrix was not used\n\n" + ones +
             " gave a matrix that is not the fit of these points",
         false},
    };
    for (const Case& k : cases) {
        prompt.messages.clear();
        calibrate.setFitProgram(k.program);
        calibrate.cmdMatrix->click();
        ASSERT_TRUE(fitDone()) << k.program.toStdString();
        ASSERT_EQ(prompt.messages.size(), 1) << k.program.toStdString();
        const QString& told = prompt.messages[0];
        EXPECT_TRUE(k.exact ? told == k.message : told.startsWith(k.message)) << told.toStdString();
        EXPECT_EQ(calibrate.session().calibration().matrix, builtIn) << k.program.toStdString();
        EXPECT_EQ(calibrate.StatusBar1->currentMessage(), "Ready");
    }
}

// The time-out runs on the clock; a cancel during a fit ends the child and nothing arrives.
TEST_F(CalibrateWithOctave, AnOctaveThatNeverAnswersTimesOutAfterThirtySecondsAndCancelEndsIt) {
    frmCalibrate& calibrate = openWalked(silent());
    calibrate.cmdMatrix->click();
    pid_t child = childPid();
    ASSERT_TRUE(exists(child));
    clock.advance(29999);
    EXPECT_FALSE(calibrate.cmdMatrix->isEnabled());
    EXPECT_EQ(prompt.messages, QStringList());
    clock.advance(1);
    EXPECT_EQ(prompt.messages,
              QStringList{fellBack(folder.filePath("silent") + " did not answer within 30 s.")});
    EXPECT_EQ(calibrate.session().calibration().matrix, builtInMatrix());
    EXPECT_TRUE(calibrate.cmdMatrix->isEnabled());
    EXPECT_EQ(calibrate.StatusBar1->currentMessage(), "Ready");
    EXPECT_TRUE(childGone(child)) << "killed and reaped";

    prompt.messages.clear();
    QFile::remove(folder.filePath(QStringLiteral("pid")));
    calibrate.cmdDisplay->click();
    calibrate.cmdMatrix->click();
    child = childPid();
    ASSERT_TRUE(exists(child));
    plate->raise(PlateFault::DataClipped);
    EXPECT_FALSE(calibrate.cmdMatrix->isEnabled()) << "the display's fault does not end the fit";
    prompt.answers = {1, 0}; // discard the points, and mean it
    calibrate.cmdCancel->click();
    EXPECT_EQ(unloads, 1);
    EXPECT_TRUE(childGone(child)) << "killed and reaped";
    clock.advance(60000);
    EXPECT_EQ(prompt.messages, QStringList{strings::text(strings::CalibrateBlock + 910)});
    dialog.reset();
    QCoreApplication::processEvents();
}

} // namespace
} // namespace kx::test
