#include "resources/StringTable.h"

#include <QStringList>
#include <QtGlobal>
#include <algorithm>
#include <gtest/gtest.h>
#include <set>
#include <vector>

namespace {

using namespace kx::strings;

void addRange(std::set<int>& to, int first, int last, int step = 1) {
    for (int id = first; id <= last; id += step)
        to.insert(id);
}

// Every number that the windows' descriptions give, written out.
std::set<int> namedNumbers() {
    std::set<int> ids{1};
    addRange(ids, 10, 28);
    ids.insert({100, 110, 120, 130, 140, 150, 160, 170, 180, 190, 200, 210, 220, 300, 310,
                320, 330, 350, 360, 400, 410, 420, 430, 440, 500, 510, 520, 530, 540, 600,
                610, 620, 630, 635, 640, 650, 700, 710, 720, 730, 740, 750, 760, 770, 780,
                800, 810, 820, 830, 840, 850, 860, 870, 900, 910, 920, 921, 930});
    ids.insert({1000, 1010, 1020, 1030, 1100, 1110, 1120, 1130, 1200, 1210, 1211, 1212, 1220, 1221,
                1222, 1230, 1231, 1232, 1233});
    ids.insert({2000, 2010, 2020, 2030, 2100, 2110, 2111, 2120, 2130, 2200, 2900, 2910});
    ids.insert({3000, 3010, 3020, 3030, 3040, 3100, 3900, 3901, 3902, 3910, 3911, 3912, 3920, 3930,
                3931, 3940, 3941});
    ids.insert({4000, 4010, 4020, 4021, 4030, 4031, 4040, 4041, 4050, 4100, 4110, 4120,
                4121, 4122, 4130, 4140, 4150, 4200, 4210, 4220, 4230, 4240, 4250, 4300,
                4310, 4311, 4400, 4410, 4411, 4412, 4420, 4421, 4422, 4430, 4431, 4432,
                4500, 4510, 4520, 4900, 4901, 4910, 4911, 4920, 4930, 4940});
    ids.insert({5000, 5010, 5020, 5030, 5100, 5110, 5120, 5130, 5200, 5210, 6000, 6010, 6100});
    ids.insert({7010, 7020, 7030, 7200, 7210, 7220, 7230, 7231, 7232});
    addRange(ids, 7100, 7150, 10);
    ids.insert({8758, 8900, 8901, 8910, 8911, 8920, 8930, 8940, 8950});
    ids.insert({9000, 9010, 9020, 9030, 9040, 9100, 9110, 9111, 9120, 9130, 9140, 9150, 9160, 9170,
                9200, 9210, 9211, 9220, 9221});
    for (int block : {1000, 2000, 5000, 6000, 7000, 9000})
        addRange(ids, block + 900, block + 940, 10);
    return ids;
}

// The numbers given here to texts that came without one, by the names dialogs use.
std::vector<std::pair<int, std::vector<int>>> assignedNumbers() {
    namespace c = calibrate;
    // clang-format off
    std::vector<int> cal{
        c::Title, c::Ok, c::Cancel, c::AcqParamFrame, c::Excitation, c::SampFreq, c::Duration,
        c::OperatorFrame, c::OpPast, c::OpNow, c::FileFrame, c::SerialNumFile, c::FileSave,
        c::FileName, c::FileDialogTitle, c::FileDialogExtension, c::FileDialogFilter,
        c::CalibrationFrame, c::CommandsFrame, c::Next, c::Zero, c::Data, c::Matrix,
        c::MatrixFrame, c::MatrixCaption, c::ErrorsFrame, c::ErrorsColumnPoint, c::ErrorsColumnFz,
        c::ErrorsColumnX, c::ErrorsColumnY, c::ConditionsFrame, c::CTemp, c::CRH, c::CPres,
        c::ZeroFrame, c::ZeroAverage, c::ZeroSDev, c::ZeroT, c::ZeroDate, c::DataFrame,
        c::DataAverage, c::DataSDev, c::DataT, c::DataDate, c::ScalingFrame, c::ScaleZero,
        c::ScalingValueFrame, c::Scale, c::ScaleStored, c::ScaleSuggested, c::LinearityColumnFz,
        c::LinearityColumnLoad, c::LinearityColumnUnload, c::LinearityColumnScale,
        c::ScaledMatrixFrame, c::ScaledMatrixCaption, c::SignalsFrame, c::Scroll, c::Grid,
        c::AutoScale, c::DisplayOn, c::DisplayOff, c::Max, c::Min, c::StatusNoPlate,
        c::StatusReady, c::StatusAcquiringZero, c::StatusAcquiringData, c::StatusComputingMatrix,
        c::InvalidOperator, c::MissingConditions, c::InvalidCondition, c::ExcitationNote,
        c::TooNoisy, c::TooNoisyScaling, c::EngineUnavailable, c::EngineRefused, c::FitNoSignal,
        c::FitTooFewPoints, c::FitIllConditioned, c::EngineNotStarted, c::EngineTimedOut,
        c::EngineFailed, c::EngineNoResult, c::EngineBuiltInUsed, c::PictureCurrent,
        c::PictureNoZero,
        c::PictureZero, c::PictureData, c::PicturePoint, c::PictureArrow, c::FitPoints,
        c::FitSpread, c::FitSpreadGood, c::FitSpreadFair, c::FitSpreadPoor, c::FitScatter,
        c::FitUncertainty, c::FitNoUncertainty, c::FitAllPointsFit, c::FitPointDoesNotFit,
        c::FitPointsDoNotFit, c::ElementUncertainty, c::SignalBridges, c::SignalForces,
        c::EngineDisagrees, c::PictureDoesNotFit, c::PictureArrowLength, c::ReportScaledNotWritten,
        c::ReportScaledHeld, c::ReportLinearity, c::ReportNotPerformed,
        c::ReportElementUncertainty, c::FitExpandedUncertainty, c::FitFewDegrees,
        c::LeaveQuestion, c::OpenQuestion, c::ChoiceSave, c::ChoiceDiscard, c::ChoiceGoBack,
        c::DiscardConfirm, c::WorkSummary, c::RecoveryOffer, c::ChoiceRestore,
        c::RecoveryDiscardConfirm, c::ChoiceKeep, c::RecoveryUnreadable, c::RecoveryNotKept,
        c::NeedPointZero, c::NeedScalingZero, c::FitStale, c::OkWithoutFit, c::OkWithStaleFit,
        c::ChoiceCloseWithoutWriting, c::ReportWithoutFit, c::ReportWithStaleFit,
        c::OtherPlateOpened, c::OtherPlateCommit, c::ChoiceWriteToPlate, c::UnknownPlate,
        c::CommitFailed, c::CommitOldUnreadable, c::CommitMixed, c::CommitMismatch,
        c::CommitRecordsFailed, c::CellTip, c::CellTipWithoutUncertainty, c::UnitsPerVoltForce,
        c::UnitsPerVoltMoment, c::FitFrame, c::LoadStep, c::UnloadStep};
    // clang-format on
    for (int i = 0; i < 3; ++i)
        cal.insert(cal.end(), {c::ZeroCh + i, c::DataCh + i});
    for (int id = c::FileEmpty; id <= c::FileNotSaved; ++id)
        cal.push_back(id);
    for (int id = c::Report; id <= c::ReportPageNumbers; ++id)
        cal.push_back(id);
    return {
        {MainBlock,
         {mainwindow::SplashLinux, mainwindow::RefreshDevices, mainwindow::ServiceLayoutHint, mainwindow::TimeSpeed,
          mainwindow::SettingsNotSaved, mainwindow::SettingsLost}},
        {MeterBlock, {meter::ChannelPrefix, meter::VoltsSuffix, meter::ExcitationHint}},
        {AcquireBlock,
         {acquire::SignalForces, acquire::SignalVoltages, acquire::SignalPostural,
          acquire::NotAvailable, acquire::CaptureTime, acquire::CaptureSamples,
          acquire::CaptureFrequency, acquire::SaveBeforeClosing, acquire::Save, acquire::Discard,
          acquire::Later, acquire::Keep, acquire::ConfirmDiscard, acquire::UnsavedCapture,
          acquire::UnsavedCaptureUnreadable, acquire::SavingCapture, acquire::JournalFailed,
          acquire::JournalNotCreated}},
        {NoiseBlock,
         {noise::Title,
          noise::TestParamFrame,
          noise::TitleF,
          noise::TitleV,
          noise::SampFreq,
          noise::Duration,
          noise::ExcTitke,
          noise::Of,
          noise::Run,
          noise::TestsDone,
          noise::ResultsFrame,
          noise::FileNotSaved,
          noise::FileNotSavedOk,
          noise::PictureNotSaved,
          noise::LogNotSaved,
          noise::RunWaiting,
          noise::RunMeasuring,
          noise::HeadExcitation,
          noise::HeadFrequency,
          noise::HeadAverage,
          noise::HeadDeviation,
          noise::HeadRange,
          noise::HeadVolts,
          noise::HeadHertz,
          noise::HeadCodes,
          noise::Suspect,
          noise::SuspectOverrun,
          noise::SuspectClipping,
          noise::SuspectLoadChange,
          noise::OnChannel,
          noise::ChartChannel,
          noise::ChartDeviation,
          noise::ChartFrequency,
          noise::ChartSuspect,
          noise::StopQuestion,
          noise::StopQuestionUnsaved,
          noise::StopRun,
          noise::KeepRunning,
          noise::UnsavedQuestion,
          noise::SaveElsewhere,
          noise::DiscardResults,
          noise::GoBack,
          noise::FolderQuestion,
          noise::StartAnyway,
          noise::DoNotStart,
          noise::FolderNotMade,
          noise::FolderNotWritable,
          noise::SaveAsTitle,
          noise::SaveAsFilter,
          noise::SaveAsFailed,
          noise::LogStart,
          noise::LogTest,
          noise::LogFinished,
          noise::LogStopped,
          noise::LogTimedOut,
          noise::LogRemoved,
          noise::LogSilent,
          noise::LogNotRestored,
          noise::LogResultsNotSaved,
          noise::LogPictureNotSaved,
          noise::LogSavedElsewhere,
          noise::LogDiscarded}},
        {CalibrateBlock, cal},
    };
}

// Also catches a row under a mistyped number, which would be unreachable.
TEST(StringTable, HoldsATextForExactlyTheNamedAndAssignedNumbers) {
    std::set<int> expected = namedNumbers();
    for (const auto& [block, ids] : assignedNumbers()) {
        for (int id : ids) {
            EXPECT_TRUE(id >= block && id < block + 1000) << id << " outside its block";
            expected.insert(id);
        }
    }
    const QList<int> table = ids();
    EXPECT_EQ(table, QList<int>(expected.begin(), expected.end()));
    for (int id : table)
        EXPECT_FALSE(text(id).isEmpty()) << id;
}

TEST(StringTable, TextsAreExactIncludingMnemonicsBreaksAndKeptSpellings) {
    const std::pair<int, const char*> cases[] = {
        {29, "For Linux"},
        {190, "Ca&librate Device"},
        {930, "A Connected KX Force Platform is not Responding\nTo Communications Attempt From The "
              "Computer!\n\nPlease Disconnect and then Reconnect all\nKX Force Platforms."},
        {3902, "Error: A/D Buffer Overrun!\n\nTry the zero again.\n\nIf the problem persists, "
               "the selected\nsamping frequency might be too high.\nTry selecting a lower "
               "sampling frequency."},
        {4520, "All Files (*.*)|*.*|Text Files (*.txt)|*.txt"},
        {noise::TestsDone, "Tests Done - press OK ot save and exit"},
        {noise::Of, " of "},
        {calibrate::CTemp, "T (°C):"},
        {8950, "Error: Signal Too Noisy!\n\n\n\nTry the acquisition again."},
        {1910, "Error: A/D Signals Clipped!\n\nMake sure nothing is in contact with the "
               "plate\nand try the acquisition again.\n\nIf the problem persists, check the "
               "bridges' trim."},
    };
    for (const auto& [id, expected] : cases)
        EXPECT_EQ(text(id), QString::fromUtf8(expected)) << id;
}

// Handlers fetch `block + offset` without knowing the dialog: every block holds the device
// texts as the acquisition block words them, or the short labels where its dialog runs on.
TEST(StringTable, EveryDialogBlockHoldsItsDeviceErrorTexts) {
    const QString overrun = QStringLiteral(
        "Error: A/D Buffer Overrun!\n\nTry the acquisition again.\n\nIf the problem persists, "
        "the selected\nsamping frequency might be too high.\nTry selecting a lower sampling "
        "frequency.");
    const QString clipped =
        QStringLiteral("Error: A/D Signals Clipped!\n\nTry the acquisition again.");
    const QString removal = QStringLiteral(
        "The Force Platform Has Been Disconnected!!!\n\nThis window will now Close!");
    const QString readTimeout = QStringLiteral(
        "Error: Time-out while reading from the platform!\n\nIf the problem persists, close "
        "this window and\ntry unplugging and then re-plugging the platform\n\nIf the problem "
        "continues, try restarting the computer and\nmake sure no other application (including "
        "any antivirus application) is running.");
    QString writeTimeout = readTimeout;
    writeTimeout.replace(QStringLiteral("reading from"), QStringLiteral("writing to"));
    for (int block : {ZeroBlock, MeterBlock, ScaleBlock, AcquireBlock, ProgramIdBlock, EncoderBlock,
                      NoiseBlock, CalibrateBlock, PlateInfoExBlock}) {
        EXPECT_EQ(text(block + RemovalOffset), removal) << block;
        EXPECT_EQ(text(block + ReadTimeoutOffset), readTimeout) << block;
        EXPECT_EQ(text(block + WriteTimeoutOffset), writeTimeout) << block;
    }
    for (int id : {1900, 4900, 5900, 6900, 7900, 8900, 9900})
        EXPECT_EQ(text(id), overrun) << id;
    for (int id : {4910, 5910, 6910, 7910, 8910, 9910})
        EXPECT_EQ(text(id), clipped) << id;
    for (int id : {2900, 3900, 4901, 8901}) {
        EXPECT_EQ(text(id), QStringLiteral("Overrun!")) << id;
        EXPECT_EQ(text(id + 10), QStringLiteral("Clipping!")) << id;
    }
}

QStringList warnings;

TEST(StringTable, UnknownNumberGivesEmptyTextAndWarnsOncePerNumber) {
    const QtMessageHandler previous =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& message) {
            warnings.append(message);
        });
    EXPECT_TRUE(text(4999).isEmpty());
    EXPECT_TRUE(text(4999).isEmpty());
    EXPECT_TRUE(text(-1).isEmpty());
    qInstallMessageHandler(previous);
    ASSERT_EQ(warnings.size(), 2);
    EXPECT_TRUE(warnings[0].contains(u"4999"));
    EXPECT_TRUE(warnings[1].contains(u"-1"));
}

} // namespace
