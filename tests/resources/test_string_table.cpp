#include "resources/StringTable.h"

#include <QSet>
#include <QStringList>
#include <QtGlobal>
#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

namespace {

using namespace kx::strings;

std::vector<int> range(int first, int last, int step = 1) {
    std::vector<int> ids;
    for (int id = first; id <= last; id += step) {
        ids.push_back(id);
    }
    return ids;
}

void append(std::vector<int>& to, const std::vector<int>& ids) {
    to.insert(to.end(), ids.begin(), ids.end());
}

// Every number that the windows' descriptions give, written out.
std::vector<int> namedNumbers() {
    std::vector<int> ids{1};
    append(ids, range(10, 28));
    append(ids, {100, 110, 120, 130, 140, 150, 160, 170, 180, 190, 200, 210, 220, 300, 310,
                 320, 330, 350, 360, 400, 410, 420, 430, 440, 500, 510, 520, 530, 540, 600,
                 610, 620, 630, 635, 640, 650, 700, 710, 720, 730, 740, 750, 760, 770, 780,
                 800, 810, 820, 830, 840, 850, 860, 870, 900, 910, 920, 921, 930});
    // frmZero
    append(ids, {1000, 1010, 1020, 1030, 1100, 1110, 1120, 1130, 1200, 1210, 1211, 1212, 1220, 1221,
                 1222, 1230, 1231, 1232, 1233});
    append(ids, range(1900, 1940, 10));
    // frmMeter
    append(ids, {2000, 2010, 2020, 2030, 2100, 2110, 2111, 2120, 2130, 2200});
    append(ids, range(2900, 2940, 10));
    // frmScale
    append(ids, {3000, 3010, 3020, 3030, 3040, 3100, 3900, 3901, 3902, 3910, 3911, 3912, 3920, 3930,
                 3931, 3940, 3941});
    // frmAcquire
    append(ids, {4000, 4010, 4020, 4021, 4030, 4031, 4040, 4041, 4050, 4100, 4110, 4120,
                 4121, 4122, 4130, 4140, 4150, 4200, 4210, 4220, 4230, 4240, 4250, 4300,
                 4310, 4311, 4400, 4410, 4411, 4412, 4420, 4421, 4422, 4430, 4431, 4432,
                 4500, 4510, 4520, 4900, 4901, 4910, 4911, 4920, 4930, 4940});
    // frmProgramID
    append(ids, {5000, 5010, 5020, 5030, 5100, 5110, 5120, 5130, 5200, 5210});
    append(ids, range(5900, 5940, 10));
    // frmEncoder
    append(ids, {6000, 6010, 6100});
    append(ids, range(6900, 6940, 10));
    // frmNoise
    append(ids, {7010, 7020, 7030});
    append(ids, range(7100, 7150, 10));
    append(ids, {7200, 7210, 7220, 7230, 7231, 7232});
    append(ids, range(7900, 7940, 10));
    // frmCalibrate
    append(ids, {8758, 8900, 8901, 8910, 8911, 8920, 8930, 8940, 8950});
    // frmPlateInfoEx
    append(ids, {9000, 9010, 9020, 9030, 9040, 9100, 9110, 9111, 9120, 9130, 9140, 9150, 9160, 9170,
                 9200, 9210, 9211, 9220, 9221});
    append(ids, range(9900, 9940, 10));
    return ids;
}

struct AssignedGroup {
    int block;
    std::vector<int> ids;
};

// The numbers given here to texts that came without one, by the names dialogs use.
std::vector<AssignedGroup> assignedNumbers() {
    namespace c = calibrate;
    AssignedGroup cal{CalibrateBlock,
                      {c::Title,
                       c::Ok,
                       c::Cancel,
                       c::AcqParamFrame,
                       c::Excitation,
                       c::SampFreq,
                       c::Duration,
                       c::OperatorFrame,
                       c::OpPast,
                       c::OpNow,
                       c::FileFrame,
                       c::SerialNumFile,
                       c::FileSave,
                       c::FileName,
                       c::FileDialogTitle,
                       c::FileDialogExtension,
                       c::FileDialogFilter,
                       c::CalibrationFrame,
                       c::CommandsFrame,
                       c::Next,
                       c::Zero,
                       c::Data,
                       c::Matrix,
                       c::MatrixFrame,
                       c::MatrixCaption,
                       c::ErrorsFrame,
                       c::ErrorsColumnPoint,
                       c::ErrorsColumnFz,
                       c::ErrorsColumnX,
                       c::ErrorsColumnY,
                       c::ConditionsFrame,
                       c::CTemp,
                       c::CRH,
                       c::CPres,
                       c::ZeroFrame,
                       c::ZeroAverage,
                       c::ZeroSDev,
                       c::ZeroT,
                       c::ZeroDate,
                       c::DataFrame,
                       c::DataAverage,
                       c::DataSDev,
                       c::DataT,
                       c::DataDate,
                       c::ScalingFrame,
                       c::ScaleZero,
                       c::ScalingValueFrame,
                       c::Scale,
                       c::ScaleStored,
                       c::ScaleSuggested,
                       c::LinearityColumnFz,
                       c::LinearityColumnLoad,
                       c::LinearityColumnUnload,
                       c::LinearityColumnScale,
                       c::ScaledMatrixFrame,
                       c::ScaledMatrixCaption,
                       c::SignalsFrame,
                       c::Scroll,
                       c::Grid,
                       c::AutoScale,
                       c::DisplayOn,
                       c::DisplayOff,
                       c::Max,
                       c::Min,
                       c::StatusNoPlate,
                       c::StatusReady,
                       c::StatusAcquiringZero,
                       c::StatusAcquiringData,
                       c::StatusComputingMatrix,
                       c::InvalidOperator,
                       c::MissingConditions,
                       c::InvalidCondition,
                       c::ExcitationNote,
                       c::TooNoisy,
                       c::TooNoisyScaling}};
    for (int i = 0; i < 3; ++i) {
        cal.ids.push_back(c::ZeroCh + i);
        cal.ids.push_back(c::DataCh + i);
    }
    for (int step = 1; step <= 8; ++step) {
        cal.ids.push_back(c::ScaleLoad + step - 1);
    }
    return {
        {MainBlock, {mainwindow::SplashLinux, mainwindow::RefreshDevices}},
        {MeterBlock, {meter::ChannelPrefix, meter::VoltsSuffix}},
        {AcquireBlock,
         {acquire::SignalForces, acquire::SignalVoltages, acquire::SignalPostural,
          acquire::NotAvailable, acquire::CaptureTime, acquire::CaptureSamples,
          acquire::CaptureFrequency}},
        {NoiseBlock,
         {noise::Title, noise::TestParamFrame, noise::TitleF, noise::TitleV, noise::SampFreq,
          noise::Duration, noise::ExcTitke, noise::Of, noise::TestsDone, noise::ResultsFrame}},
        cal,
    };
}

const std::vector<int> DialogBlocks{ZeroBlock,    MeterBlock,     ScaleBlock,
                                    AcquireBlock, ProgramIdBlock, EncoderBlock,
                                    NoiseBlock,   CalibrateBlock, PlateInfoExBlock};

TEST(StringTable, EveryNamedNumberHasAText) {
    for (int id : namedNumbers()) {
        EXPECT_TRUE(contains(id)) << id;
        EXPECT_FALSE(text(id).isEmpty()) << id;
    }
}

TEST(StringTable, AssignedNumbersLieInTheirBlockAndHaveTexts) {
    for (const auto& [block, ids] : assignedNumbers()) {
        for (int id : ids) {
            EXPECT_GE(id, block) << id;
            EXPECT_LT(id, block + 1000) << id;
            EXPECT_FALSE(text(id).isEmpty()) << id;
        }
    }
}

// A row under a mistyped number would pass the lookups above and still be unreachable.
TEST(StringTable, HoldsExactlyTheNamedAndAssignedNumbersOnce) {
    QSet<int> expected;
    for (int id : namedNumbers()) {
        expected.insert(id);
    }
    for (const auto& group : assignedNumbers()) {
        for (int id : group.ids) {
            expected.insert(id);
        }
    }
    const QList<int> table = ids();
    EXPECT_TRUE(std::ranges::adjacent_find(table, std::greater_equal{}) == table.end())
        << "numbers must be unique and ascending";
    QList<int> wanted(expected.begin(), expected.end());
    std::ranges::sort(wanted);
    EXPECT_EQ(table, wanted);
}

struct ExactText {
    int id;
    const char* text;
};

TEST(StringTable, TextsAreExactIncludingMnemonicsBreaksAndKeptSpellings) {
    const ExactText cases[] = {
        {1, "KX Plates Control Panel"},
        {16, "For Windows"},
        {29, "For Linux"},
        {100, "KX Force Platforms Control Panel"},
        {190, "Ca&librate Device"},
        {330, "Extended Device &Info..."},
        {635, "Dunlith"},
        {900, "Updating device List ..."},
        {920, " Plates Installed - "},
        {921, " HID devices"},
        {930, "A Connected KX Force Platform is not Responding\nTo Communications Attempt From The "
              "Computer!\n\nPlease Disconnect and then Reconnect all\nKX Force Platforms."},
        {1910, "Error: A/D Signals Clipped!\n\nMake sure nothing is in contact with the plate\n"
               "and try the acquisition again.\n\nIf the problem persists, check the bridges' "
               "trim."},
        {2200, "Fast|Medium|Slow|"},
        {3902, "Error: A/D Buffer Overrun!\n\nTry the zero again.\n\nIf the problem persists, "
               "the selected\nsamping frequency might be too high.\nTry selecting a lower "
               "sampling frequency."},
        {3941, "Ready (Timeout Occurred)"},
        {4000, "KX Force Platforms Control Panel - Real Time Signals Display and Data "
               "Acquisition"},
        {4520, "All Files (*.*)|*.*|Text Files (*.txt)|*.txt"},
        {4900, "Error: A/D Buffer Overrun!\n\nTry the acquisition again.\n\nIf the problem "
               "persists, the selected\nsamping frequency might be too high.\nTry selecting a "
               "lower sampling frequency."},
        {4920, "The Force Platform Has Been Disconnected!!!\n\nThis window will now Close!"},
        {4930, "Error: Time-out while reading from the platform!\n\nIf the problem persists, "
               "close this window and\ntry unplugging and then re-plugging the platform\n\nIf "
               "the problem continues, try restarting the computer and\nmake sure no other "
               "application (including any antivirus application) is running."},
        {5000, "Program Device VID/PID/DID"},
        {7220, "Waiting to start test "},
        {noise::TestsDone, "Tests Done - press OK ot save and exit"},
        {noise::Of, " of "},
        {calibrate::CTemp, "T (°C):"},
        {calibrate::ScaleLoad + 4, "Unload &100 kg"},
        {calibrate::ExcitationNote,
         "for compatibility with previously collected data\nthe bridge excitation has been set "
         "to "},
        {8758, "Suggested: "},
        {8950, "Error: Signal Too Noisy!\n\n\n\nTry the acquisition again."},
        {calibrate::TooNoisyScaling, "Error: Signal Too Noisy!\nTry the acquisition again."},
        {9170, "Approximate Total Time in Service:"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(text(c.id), QString::fromUtf8(c.text)) << c.id;
    }
}

TEST(StringTable, EveryDialogBlockReportsRemovalAndBothTimeOutsAlike) {
    const QString removal = text(AcquireBlock + RemovalOffset);
    const QString readTimeout = text(AcquireBlock + ReadTimeoutOffset);
    ASSERT_TRUE(readTimeout.contains(u"reading from"));
    for (int block : DialogBlocks) {
        EXPECT_EQ(text(block + RemovalOffset), removal) << block;
        const QString read = text(block + ReadTimeoutOffset);
        EXPECT_EQ(read, readTimeout) << block;
        EXPECT_EQ(
            text(block + WriteTimeoutOffset),
            QString(read).replace(QStringLiteral("reading from"), QStringLiteral("writing to")))
            << block;
    }
}

struct OverrunTexts {
    int block;
    int overrunMessage; // 0: the block shows no message box
    int clippingMessage;
    int overrunLabel; // 0: no short label
    int clippingLabel;
};

TEST(StringTable, OverrunAndClippingTextsSitWhereEachBlockReportsThem) {
    const OverrunTexts cases[] = {
        {ZeroBlock, 1900, 1910, 0, 0},        {MeterBlock, 0, 0, 2900, 2910},
        {ScaleBlock, 3902, 3912, 3900, 3910}, {AcquireBlock, 4900, 4910, 4901, 4911},
        {ProgramIdBlock, 5900, 5910, 0, 0},   {EncoderBlock, 6900, 6910, 0, 0},
        {NoiseBlock, 7900, 7910, 0, 0},       {CalibrateBlock, 8900, 8910, 8901, 8911},
        {PlateInfoExBlock, 9900, 9910, 0, 0},
    };
    for (const auto& c : cases) {
        EXPECT_TRUE(contains(c.block + OverrunOffset)) << c.block;
        EXPECT_TRUE(contains(c.block + ClippingOffset)) << c.block;
        if (c.overrunMessage != 0) {
            EXPECT_TRUE(text(c.overrunMessage).startsWith(u"Error: A/D Buffer Overrun!\n\n"))
                << c.overrunMessage;
            EXPECT_TRUE(text(c.overrunMessage).contains(u"samping frequency")) << c.block;
            EXPECT_TRUE(text(c.clippingMessage).startsWith(u"Error: A/D Signals Clipped!\n\n"))
                << c.clippingMessage;
        }
        if (c.overrunLabel != 0) {
            EXPECT_EQ(text(c.overrunLabel), u"Overrun!") << c.overrunLabel;
            EXPECT_EQ(text(c.clippingLabel), u"Clipping!") << c.clippingLabel;
        }
    }
}

// Captures warnings for the duration of one test.
class WarningLog {
public:
    WarningLog() { m_previous = qInstallMessageHandler(&WarningLog::handle); }
    ~WarningLog() { qInstallMessageHandler(m_previous); }
    static QStringList& messages() {
        static QStringList list;
        return list;
    }

private:
    static void handle(QtMsgType type, const QMessageLogContext&, const QString& message) {
        if (type == QtWarningMsg) {
            messages().append(message);
        }
    }
    QtMessageHandler m_previous;
};

TEST(StringTable, UnknownNumberGivesEmptyTextAndWarnsOncePerNumber) {
    WarningLog log;
    WarningLog::messages().clear();
    EXPECT_FALSE(contains(4999));
    EXPECT_TRUE(text(4999).isEmpty());
    EXPECT_TRUE(text(4999).isEmpty());
    EXPECT_TRUE(text(-1).isEmpty());
    ASSERT_EQ(WarningLog::messages().size(), 2);
    EXPECT_TRUE(WarningLog::messages().at(0).contains(u"4999"));
    EXPECT_TRUE(WarningLog::messages().at(1).contains(u"-1"));
}

} // namespace
