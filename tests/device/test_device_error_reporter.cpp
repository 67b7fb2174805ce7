#include "RecordingPrompt.h"
#include "device/DeviceErrorReporter.h"
#include "resources/StringTable.h"
#include "support/ManualClock.h"

#include <gtest/gtest.h>
#include <optional>

namespace kx {
namespace {

namespace s = strings;

// Journal entries: where a text of the string table was shown.
QString box(int id) {
    return QStringLiteral("box:") + s::text(id);
}
QString status(int id) {
    return QStringLiteral("status:") + s::text(id);
}
QString label(int id) {
    return QStringLiteral("label:") + s::text(id);
}
const QString stop = QStringLiteral("stop");
const QString recover = QStringLiteral("recover");

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
        return window.findChild<QObject*>(QLatin1String(name))->property("enabled").toString();
    }

    QObject window;
    ManualClock clock;
    test::RecordingPrompt prompt;
    QStringList journal;
    std::function<void()> duringBox;
    int openBoxes = 0;
    int maxOpenBoxes = 0;
};

// Which reactions stop the window's own run and which abort the plate's acquisition, in that
// order, for time-outs and for overrun or clipping; nothing: the events are not handled.
TEST(DeviceErrorProfiles, StopAndAbortWhereEachWindowDoes) {
    using R = ReactionStep;
    using Steps = std::optional<QList<R>>;
    const struct {
        int block;
        Steps timeouts;
        Steps faults;
    } cases[] = {
        {s::ZeroBlock, QList{R::Stop, R::Abort}, QList{R::Stop, R::Abort}},
        {s::MeterBlock, QList{R::Stop}, QList<R>{}},
        {s::ScaleBlock, QList{R::Stop, R::Abort}, QList{R::Stop, R::Abort}},
        {s::AcquireBlock, QList{R::Stop}, QList{R::Stop}},
        {s::NoiseBlock, QList{R::Stop, R::Abort}, std::nullopt},
        {s::CalibrateBlock, QList{R::Abort}, QList{R::Abort}},
        {s::PlateInfoExBlock, QList<R>{}, std::nullopt},
        {s::ProgramIdBlock, std::nullopt, std::nullopt},
        {s::EncoderBlock, std::nullopt, std::nullopt},
    };
    const auto stopping = [](const DeviceErrorReaction& reaction) -> Steps {
        if (reaction.steps.isEmpty())
            return std::nullopt;
        QList<R> kept;
        for (const R step : reaction.steps) {
            if (step == R::Stop || step == R::Abort)
                kept << step;
        }
        return kept;
    };
    for (const auto& c : cases) {
        const DeviceErrorProfile profile = deviceErrorProfile(c.block);
        EXPECT_EQ(stopping(profile.timeouts), c.timeouts) << c.block;
        EXPECT_EQ(stopping(profile.faults), c.faults) << c.block;
    }
}

// Each window's reaction: its steps in order, with the texts of its own block.
TEST_F(ReporterTest, ReactionsRunTheDialogsStepsInOrderWithItsTexts) {
    using E = DeviceEvent;
    const struct {
        int block;
        DeviceEvent event;
        QStringList expected;
    } cases[] = {
        {s::AcquireBlock, E::ReadTimeout, {stop, box(4930), recover}},
        {s::AcquireBlock, E::DataClipped, {stop, box(4910), label(4911)}},
        {s::MeterBlock, E::DataClipped, {label(2910)}},
        {s::ScaleBlock, E::ReadTimeout, {stop, box(3930), status(3931)}},
        {s::ScaleBlock, E::BufferOverRun, {stop, status(3901), box(3902), label(3900)}},
        {s::CalibrateBlock, E::BufferOverRun, {box(8900)}},
        {s::CalibrateBlock, E::WriteTimeout, {box(8940), recover}},
        {s::NoiseBlock, E::DataClipped, {}},
        {s::MainBlock, E::NotResponding, {box(930)}},
        {s::MainBlock, E::Removal, {}}, // the main window learns of removals from the driver
        {s::NoiseBlock, E::Removal, {box(7920), QStringLiteral("close")}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.block << " " << int(c.event));
        journal.clear();
        make(c.block)->report(c.event);
        EXPECT_EQ(journal, c.expected);
    }
}

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

TEST_F(ReporterTest, EventsDuringABoxWaitInOrderAndARemovalClosesHalfASecondLater) {
    auto* reporter = make(s::AcquireBlock);
    duringBox = [&] {
        reporter->report(DeviceEvent::DataClipped);
        reporter->report(DeviceEvent::DataClipped); // already waiting: not queued twice
        reporter->report(DeviceEvent::Removal);
        reporter->report(DeviceEvent::ReadTimeout); // after the removal: dropped
    };
    reporter->report(DeviceEvent::BufferOverRun);
    EXPECT_EQ(maxOpenBoxes, 1);
    const QStringList boxes{stop, box(4900), label(4901), stop, box(4910), label(4911), box(4920)};
    EXPECT_EQ(journal, boxes);
    EXPECT_TRUE(reporter->removed());
    reporter->report(DeviceEvent::ReadTimeout);
    clock.advance(499);
    EXPECT_EQ(journal, boxes);
    clock.advance(1);
    clock.advance(5000);
    EXPECT_EQ(journal, boxes + QStringList{QStringLiteral("close")}) << "closed once";
}

} // namespace
} // namespace kx
