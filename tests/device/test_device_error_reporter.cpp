#include "RecordingPrompt.h"
#include "device/DeviceErrorReporter.h"
#include "resources/StringTable.h"
#include "support/ManualClock.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace kx {
namespace {

namespace s = strings;

QString box(int id) {
    return QStringLiteral("box:") + s::text(id);
}
QString status(int id) {
    return QStringLiteral("status:") + s::text(id);
}
QString label(int id) {
    return QStringLiteral("label:") + s::text(id);
}

// A window with the controls the profiles name, and a journal of every action the reporter
// takes, message boxes included, in order.
class ReporterTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* name :
             {"cmdAcquire", "cmdCancel", "cmdOK", "cmdResetTemp", "cmdResetEnum", "cmdResetTime"}) {
            auto* control = new QObject(&window);
            control->setObjectName(QString::fromLatin1(name));
            control->setProperty("enabled", QStringLiteral("untouched"));
        }
        prompt.whileMessageOpen = [this](const QString& text) {
            journal << QStringLiteral("box:") + text;
            ++openBoxes;
            maxOpenBoxes = std::max(maxOpenBoxes, openBoxes);
            if (duringBox)
                std::exchange(duringBox, nullptr)();
            --openBoxes;
        };
    }

    DeviceErrorReporter* make(int block) {
        auto* reporter = new DeviceErrorReporter(deviceErrorProfile(block), clock, prompt, &window);
        reporter->setActions({
            .stop = [this] { journal << QStringLiteral("stop"); },
            .showStatus = [this](const QString& t) { journal << QStringLiteral("status:") + t; },
            .showLabel = [this](const QString& t) { journal << QStringLiteral("label:") + t; },
            .recover = [this](DeviceEvent) { journal << QStringLiteral("recover"); },
            .close = [this] { journal << QStringLiteral("close"); },
        });
        return reporter;
    }

    QString enabled(const char* name) const {
        return window.findChild<QObject*>(QString::fromLatin1(name))
            ->property("enabled")
            .toString();
    }

    QObject window;
    ManualClock clock;
    test::RecordingPrompt prompt;
    QStringList journal;
    std::function<void()> duringBox;
    int openBoxes = 0;
    int maxOpenBoxes = 0;
};

struct ReactionCase {
    const char* name;
    int block;
    DeviceEvent event;
    QStringList expected;
};

class Reactions : public ReporterTest, public ::testing::WithParamInterface<ReactionCase> {};

TEST_P(Reactions, RunTheDialogsStepsInOrderWithItsTexts) {
    const ReactionCase& c = GetParam();
    make(c.block)->report(c.event);
    EXPECT_EQ(journal, c.expected);
}

const QString stop = QStringLiteral("stop");
const QString recover = QStringLiteral("recover");

INSTANTIATE_TEST_SUITE_P(
    DeviceErrors, Reactions,
    ::testing::Values(
        ReactionCase{"AcquireTimeoutEndsTheDisplay",
                     s::AcquireBlock,
                     DeviceEvent::ReadTimeout,
                     {stop, box(4930), recover}},
        ReactionCase{"AcquireClippingLeavesItsLabel",
                     s::AcquireBlock,
                     DeviceEvent::DataClipped,
                     {stop, box(4910), label(4911)}},
        ReactionCase{"AcquireOverrun",
                     s::AcquireBlock,
                     DeviceEvent::BufferOverRun,
                     {stop, box(4900), label(4901)}},
        ReactionCase{
            "MeterClippingNeverOpensABox", s::MeterBlock, DeviceEvent::DataClipped, {label(2910)}},
        ReactionCase{"MeterWriteTimeout",
                     s::MeterBlock,
                     DeviceEvent::WriteTimeout,
                     {stop, box(2940), recover}},
        ReactionCase{"ScaleTimeoutLeavesItsStatus",
                     s::ScaleBlock,
                     DeviceEvent::ReadTimeout,
                     {stop, box(3930), status(3931)}},
        ReactionCase{"ScaleOverrunStatusBeforeTheBox",
                     s::ScaleBlock,
                     DeviceEvent::BufferOverRun,
                     {stop, status(3901), box(3902), label(3900)}},
        ReactionCase{"ScaleClipping",
                     s::ScaleBlock,
                     DeviceEvent::DataClipped,
                     {stop, status(3911), box(3912), label(3910)}},
        ReactionCase{"ZeroClippingHasItsOwnText",
                     s::ZeroBlock,
                     DeviceEvent::DataClipped,
                     {stop, box(1910), recover}},
        ReactionCase{"CalibrateOverrunOnlyAborts",
                     s::CalibrateBlock,
                     DeviceEvent::BufferOverRun,
                     {box(8900)}},
        ReactionCase{"CalibrateTimeoutReturnsToIdle",
                     s::CalibrateBlock,
                     DeviceEvent::WriteTimeout,
                     {box(8940), recover}},
        ReactionCase{"NoiseIgnoresClipping", s::NoiseBlock, DeviceEvent::DataClipped, {}},
        ReactionCase{"NoiseTimeout", s::NoiseBlock, DeviceEvent::ReadTimeout, {stop, box(7930)}},
        ReactionCase{
            "PlateInfoExTimeout", s::PlateInfoExBlock, DeviceEvent::WriteTimeout, {box(9940)}},
        ReactionCase{"ProgramIdIgnoresTimeouts", s::ProgramIdBlock, DeviceEvent::ReadTimeout, {}},
        ReactionCase{"EncoderIgnoresOverruns", s::EncoderBlock, DeviceEvent::BufferOverRun, {}},
        ReactionCase{
            "MainWindowNotResponding", s::MainBlock, DeviceEvent::NotResponding, {box(930)}},
        ReactionCase{"MainWindowLeavesRemovalsToTheDriver", s::MainBlock, DeviceEvent::Removal, {}},
        ReactionCase{"NoiseClosesAtOnceAfterRemoval",
                     s::NoiseBlock,
                     DeviceEvent::Removal,
                     {box(7920), QStringLiteral("close")}}),
    [](const auto& param) { return std::string(param.param.name); });

TEST_F(ReporterTest, ControlsAreEnabledAndDisabledByName) {
    make(s::NoiseBlock)->report(DeviceEvent::WriteTimeout);
    EXPECT_EQ(enabled("cmdAcquire"), QStringLiteral("true"));
    EXPECT_EQ(enabled("cmdCancel"), QStringLiteral("true"));
    EXPECT_EQ(enabled("cmdOK"), QStringLiteral("false"));

    make(s::PlateInfoExBlock)->report(DeviceEvent::ReadTimeout);
    for (const char* name : {"cmdOK", "cmdResetTemp", "cmdResetEnum", "cmdResetTime"})
        EXPECT_EQ(enabled(name), QStringLiteral("true")) << name;
}

TEST_F(ReporterTest, AWindowCanDeclineEventsInItsPresentStateButNeverTheRemoval) {
    DeviceErrorReporter* reporter = make(s::ScaleBlock);
    bool busy = false;
    DeviceErrorActions actions{.close = [this] { journal << QStringLiteral("close"); },
                               .applies = [&](DeviceEvent) { return busy; }};
    reporter->setActions(actions);
    reporter->report(DeviceEvent::BufferOverRun);
    EXPECT_TRUE(journal.isEmpty());
    busy = true;
    reporter->report(DeviceEvent::BufferOverRun);
    EXPECT_EQ(journal, QStringList{box(3902)});
    busy = false;
    reporter->report(DeviceEvent::Removal);
    clock.advance(500);
    EXPECT_EQ(journal, (QStringList{box(3902), box(3920), QStringLiteral("close")}));
}

TEST_F(ReporterTest, StreamingDialogClosesHalfASecondAfterTheRemovalBox) {
    auto* reporter = make(s::ScaleBlock);
    reporter->report(DeviceEvent::Removal);
    EXPECT_EQ(journal, QStringList{box(3920)});
    EXPECT_TRUE(reporter->removed());
    clock.advance(499);
    EXPECT_EQ(journal.size(), 1);
    clock.advance(1);
    EXPECT_EQ(journal, (QStringList{box(3920), QStringLiteral("close")}));
    clock.advance(5000);
    EXPECT_EQ(journal.size(), 2) << "the close timer fires once";
}

TEST_F(ReporterTest, EventsAfterARemovalAreIgnored) {
    auto* reporter = make(s::AcquireBlock);
    reporter->report(DeviceEvent::Removal);
    reporter->report(DeviceEvent::ReadTimeout);
    reporter->report(DeviceEvent::Removal);
    clock.advance(500);
    EXPECT_EQ(journal, (QStringList{box(4920), QStringLiteral("close")}));
}

TEST_F(ReporterTest, EventsDuringAnOpenBoxWaitBehindItAndNeverStack) {
    auto* reporter = make(s::AcquireBlock);
    duringBox = [&] {
        reporter->report(DeviceEvent::DataClipped);
        reporter->report(DeviceEvent::ReadTimeout);
        reporter->report(DeviceEvent::DataClipped); // already waiting: not queued twice
    };
    reporter->report(DeviceEvent::BufferOverRun);
    EXPECT_EQ(maxOpenBoxes, 1);
    EXPECT_EQ(journal, (QStringList{stop, box(4900), label(4901), // the first event
                                    stop, box(4910), label(4911), // then the clipping
                                    stop, box(4930), recover}));  // then the time-out
}

TEST_F(ReporterTest, ARemovalDuringAnOpenBoxClosesAfterItAndDropsTheRest) {
    auto* reporter = make(s::ZeroBlock);
    duringBox = [&] {
        reporter->report(DeviceEvent::Removal);
        reporter->report(DeviceEvent::DataClipped);
    };
    reporter->report(DeviceEvent::ReadTimeout);
    clock.advance(500);
    EXPECT_EQ(maxOpenBoxes, 1);
    EXPECT_EQ(journal, (QStringList{stop, box(1930), recover, box(1920), QStringLiteral("close")}));
}

TEST_F(ReporterTest, AnEventAfterTheBoxClosedIsReportedAgain) {
    auto* reporter = make(s::MeterBlock);
    reporter->report(DeviceEvent::ReadTimeout);
    reporter->report(DeviceEvent::ReadTimeout);
    EXPECT_EQ(prompt.messages, (QStringList{s::text(2930), s::text(2930)}));
}

TEST(DeviceErrorProfile, OnlyWindowBlocksHaveProfiles) {
    EXPECT_THROW(deviceErrorProfile(1500), std::out_of_range);
    for (int block : {s::MainBlock, s::ZeroBlock, s::MeterBlock, s::ScaleBlock, s::AcquireBlock,
                      s::ProgramIdBlock, s::EncoderBlock, s::NoiseBlock, s::CalibrateBlock,
                      s::PlateInfoExBlock})
        EXPECT_EQ(deviceErrorProfile(block).block, block);
}

TEST(DeviceErrorProfile, RemovalClosesAtOnceOrThroughTheTimer) {
    for (int block : {s::NoiseBlock, s::PlateInfoExBlock, s::ProgramIdBlock})
        EXPECT_EQ(deviceErrorProfile(block).removalCloseDelayMs, 0) << block;
    for (int block : {s::AcquireBlock, s::CalibrateBlock, s::MeterBlock, s::ScaleBlock,
                      s::ZeroBlock, s::EncoderBlock})
        EXPECT_EQ(deviceErrorProfile(block).removalCloseDelayMs, 500) << block;
}

} // namespace
} // namespace kx
