#include "../support/PrintQString.h"
#include "RecordingPrompt.h"
#include "SessionBench.h"
#include "TempEnvironment.h"
#include "calibration/CalibrationSettings.h"
#include "resources/StringTable.h"
#include "support/IniFile.h"

#include <QProcess>
#include <gtest/gtest.h>

namespace kx::test {
namespace {

// Each wait for the child is bounded; a healthy one answers in a second or two.
constexpr int ChildWaitMs = 60000;

// A calibration killed with SIGKILL in the middle of an acquisition: the next program on the
// same plate offers the work back, and every point accepted before the kill is there as it
// was taken; the acquisition the kill cut short is not.
TEST(CalibrationKilled, TheNextProgramOffersBackEveryPointAccepted) {
    TempEnvironment environment;
    QProcess child;
    child.start(QStringLiteral(KX_SESSION_CHILD), {QStringLiteral("4")});
    ASSERT_TRUE(child.waitForStarted(ChildWaitMs));
    std::vector<std::array<double, 7>> accepted;
    for (;;) {
        ASSERT_TRUE(child.canReadLine() || child.waitForReadyRead(ChildWaitMs))
            << child.readAllStandardError().toStdString();
        const QStringList words = QString::fromLatin1(child.readLine()).split(u' ');
        if (words.value(0).trimmed() == "running")
            break;
        ASSERT_EQ(words.size(), 9);
        std::array<double, 7> values{};
        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] = words[qsizetype(i) + 2].toDouble();
        accepted.push_back(values);
    }
    child.kill();
    ASSERT_TRUE(child.waitForFinished(ChildWaitMs));
    EXPECT_EQ(child.exitStatus(), QProcess::CrashExit);
    ASSERT_EQ(accepted.size(), 4u);

    ManualClock clock{1000};
    RecordingPrompt prompt;
    SimDriver driver{clock};
    SimPlate& plate = openCalibrationPlate(driver, clock);
    CalibrationSession session(clock, prompt);
    session.begin(CalibrationSettings::load(IniFile::sharedProfile()), &plate);
    ASSERT_EQ(prompt.questions.size(), 1u);
    EXPECT_TRUE(
        prompt.questions[0].text.startsWith("Calibration work on plate 30417 was not saved"));
    const std::vector<CalPoint>& points = session.calibration().record.points;
    for (std::size_t i = 0; i < accepted.size(); ++i) {
        EXPECT_TRUE(points[i].zeroDone && points[i].dataDone) << i;
        for (std::size_t c = 0; c < 4; ++c)
            EXPECT_EQ(points[i].zeroAverage[c], accepted[i][c]) << i;
        for (std::size_t c = 0; c < 3; ++c)
            EXPECT_EQ(points[i].dataMean[c], accepted[i][4 + c]) << i;
    }
    EXPECT_FALSE(points[4].zeroDone) << "the zero under way when the kill came";
    EXPECT_TRUE(session.hasWorkAtRisk());
}

} // namespace
} // namespace kx::test
