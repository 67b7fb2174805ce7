#include "AcquireFixture.h"
#include "resources/StringTable.h"

#include <QGroupBox>
#include <QMouseEvent>
#include <array>

namespace kx::test {
namespace {

using AcquireDisplay = AcquireFixture;

QString caption(int id) {
    return strings::text(id);
}

// The mouse moving, with no button pressed, to `at` inside `widget`.
void moveMouse(QWidget* widget, QPoint at) {
    QMouseEvent move(QEvent::MouseMove, QPointF(at), widget->mapToGlobal(QPointF(at)), Qt::NoButton,
                     Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(widget, &move);
}

// The display streams into the charts. Choosing the set already shown changes nothing;
// another set clears the traces and their limits and sets the names and the smallest
// autoscale spans (× "Min Autoscale Res") of all three charts. Display OFF stops the plate.
TEST_F(AcquireDisplay, DisplayStreamsIntoTheChartsOfTheChosenSetAndOffStopsThePlate) {
    setNumber("Display Type", 0);
    setText("Min Autoscale Res", QStringLiteral("0.01"));
    open();
    placeWeight(50);
    clock.advance(500); // settled
    const int before = samples;

    dialog->cmdDisplay->click();
    EXPECT_EQ(dialog->cmdDisplay->text(), caption(4021));
    EXPECT_TRUE(dialog->cmdCapture->isEnabled());
    EXPECT_FALSE(dialog->cmdDrift->isEnabled());
    clock.advance(2000);
    EXPECT_GE(samples - before, 1990);
    EXPECT_NEAR(chart(0).Mean(), -50 * 9.80665, 5.0) << "Fz of the weight on chart 0";
    // The weight lands a millimetre or two off its point (490 N × 4.5 mm is 2.2 N·m) and the
    // factory matrix is good to a few tenths of a percent.
    EXPECT_NEAR(chart(1).Mean(), -50 * 9.80665 * 0.05, 3.0) << "Mx = Fz·y";
    const float shown = chart(0).Mean();
    const QString top = dialog->lblMax[0]->text();
    ASSERT_FALSE(top.isEmpty());
    dialog->optSignal[0]->click();
    EXPECT_EQ(chart(0).Mean(), shown);
    EXPECT_EQ(dialog->lblMax[0]->text(), top);
    const struct {
        int set;
        DisplayType type;
        int firstName;
        std::array<float, 3> minSpans;
    } sets[] = {{1, DisplayType::Voltages, 4420, {0.01f, 0.01f, 0.01f}},
                {2, DisplayType::Postural, 4430, {4, 0.005f, 0.005f}},
                {0, DisplayType::Forces, 4410, {4, 1, 1}}};
    for (const auto& c : sets) {
        SCOPED_TRACE(c.set);
        dialog->optSignal[static_cast<std::size_t>(c.set)]->click();
        EXPECT_EQ(dialog->displayType(), c.type);
        EXPECT_EQ(dialog->lblSignal[0]->text(), caption(c.firstName));
        EXPECT_EQ(chart(0).Mean(), 0.0f) << "a new set starts on empty charts";
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_FLOAT_EQ(chart(static_cast<int>(i)).MinSpan(), c.minSpans[i]) << i;
            EXPECT_TRUE(dialog->lblMax[i]->text().isEmpty() && dialog->lblMin[i]->text().isEmpty())
                << "the old limits are not shown beside the new signals, chart " << i;
        }
    }

    dialog->cmdDisplay->click();
    EXPECT_EQ(dialog->cmdDisplay->text(), caption(4020));
    EXPECT_FALSE(dialog->cmdCapture->isEnabled());
    EXPECT_TRUE(dialog->cmdDrift->isEnabled());
    const int received = samples;
    clock.advance(500);
    EXPECT_EQ(samples, received) << "the acquisition is stopped";
}

TEST_F(AcquireDisplay, PosturalBlanksTheCentreOfPressureOfAnUnloadedPlate) {
    setNumber("Display Type", 2);
    open();
    dialog->cmdDisplay->click();
    clock.advance(1000);
    EXPECT_EQ(chart(1).Mean(), 0.0f);
    moveMouse(&chart(1), QPoint(5, 10)); // sweeping: the trace starts at the left
    EXPECT_EQ(dialog->lblData->text(), caption(4231)) << "a blank has no value under the cursor";

    placeWeight(40, 0.12, -0.07);
    clock.advance(6000); // the blanks scroll off the chart
    EXPECT_NEAR(chart(1).Mean(), 0.12, 0.005);
    EXPECT_NEAR(chart(2).Mean(), -0.07, 0.005);
    moveMouse(&chart(1), QPoint(5, chart(1).height() / 2));
    EXPECT_NEAR(dialog->lblData->text().toDouble(), 0.12, 0.01) << "the value under the cursor";
    clock.advance(300);
    EXPECT_NEAR(dialog->lblAve->text().toDouble(), 0.12, 0.005);
    moveMouse(dialog->frmSignals, QPoint(2, 2));
    clock.advance(300);
    EXPECT_TRUE(dialog->lblAve->text().isEmpty()) << "no chart under the cursor any more";
}

struct SettingCase {
    const char* name;
    QString stored; // empty: store the number instead
    qint32 number;
    DisplayType type;
    float forcesMinSpan; // of chart 0 in Forces: 400 × "Min Autoscale Res"
    qint32 resolution;   // written to the plate at open
};

TEST_F(AcquireDisplay, TheWheelSpanIsSharedByTheChartsAndKeptPerMode) {
    open();
    dialog->cmdDisplay->click();
    EXPECT_FLOAT_EQ(chart(2).Span(), 5.0f) << "5000 points at 1000 Hz";
    turnWheel(&chart(1), -1);
    for (int i = 0; i < 3; ++i)
        EXPECT_FLOAT_EQ(chart(i).Span(), 10.0f) << i;
    dialog->cmdDisplay->click();

    dialog->cmdDrift->click(); // a point a second: the 5000 points are 5000 s
    EXPECT_FLOAT_EQ(chart(0).Span(), 5000.0f);
    turnWheel(&chart(0), 1);
    EXPECT_FLOAT_EQ(chart(2).Span(), 3600.0f);
    dialog->cmdDrift->click();
    dialog->close();
    EXPECT_EQ(text("Chart Span (s)"), QLatin1String("10"));
    EXPECT_EQ(text("Drift Chart Span (s)"), QLatin1String("3600"));

    openDialog(&plate);
    EXPECT_FLOAT_EQ(chart(0).Span(), 10.0f);
    dialog->cmdDrift->click();
    EXPECT_FLOAT_EQ(chart(0).Span(), 3600.0f);
    EXPECT_EQ(chart(0).pointsAcross(), 3600);
    dialog->cmdDrift->click();
}

TEST_F(AcquireDisplay, AStoredSpanNoChartCanShowLeavesTheChartsAsTheyAre) {
    for (const char* stored : {"-3", "0", "junk", "100000"}) {
        setText("Chart Span (s)", QLatin1String(stored));
        open();
        EXPECT_FLOAT_EQ(chart(0).Span(), 5.0f) << stored;
        dialog->cmdOK->click(); // an empty table: leaves without asking
        EXPECT_EQ(text("Chart Span (s)"), QLatin1String("0")) << stored;
    }
}

class AcquireSettingsFallback : public AcquireFixture,
                                public ::testing::WithParamInterface<SettingCase> {};

TEST_P(AcquireSettingsFallback, OutOfRangeValuesFallBack) {
    const SettingCase& c = GetParam();
    if (c.stored.isEmpty())
        setNumber(c.name, c.number);
    else
        setText(c.name, c.stored);
    open();
    EXPECT_EQ(dialog->displayType(), c.type);
    EXPECT_TRUE(dialog->optSignal[static_cast<std::size_t>(c.type)]->isChecked());
    EXPECT_EQ(plate.Resolution(), c.resolution);
    dialog->optSignal[0]->click();
    EXPECT_FLOAT_EQ(chart(0).MinSpan(), c.forcesMinSpan);
}

// "Display Type" 0 to 2, else 1; "Min Autoscale Res" 0.00001 to 1, else 0.001;
// "AD Resolution" 1 to 24, else 20.
INSTANTIATE_TEST_SUITE_P(
    Checks, AcquireSettingsFallback,
    ::testing::Values(
        SettingCase{"Display Type", {}, 7, DisplayType::Voltages, 0.4f, 20},
        SettingCase{"Display Type", {}, 3, DisplayType::Voltages, 0.4f, 20},
        SettingCase{"Display Type", {}, 2, DisplayType::Postural, 0.4f, 20},
        SettingCase{"Min Autoscale Res", "2", 0, DisplayType::Voltages, 0.4f, 20},
        SettingCase{"Min Autoscale Res", "0.000001", 0, DisplayType::Voltages, 0.4f, 20},
        SettingCase{"Min Autoscale Res", "0.00001", 0, DisplayType::Voltages, 0.004f, 20},
        SettingCase{"AD Resolution", "24", 0, DisplayType::Voltages, 0.4f, 24},
        SettingCase{"AD Resolution", "1", 0, DisplayType::Voltages, 0.4f, 1},
        SettingCase{"AD Resolution", "25", 0, DisplayType::Voltages, 0.4f, 20},
        SettingCase{"AD Resolution", "0", 0, DisplayType::Voltages, 0.4f, 20}));

TEST_F(AcquireDisplay, OverrunAndClippingShowABoxAndAFlagForOnePeriod) {
    open();
    const struct {
        PlateFault fault;
        int message;
        int flag;
    } cases[] = {{PlateFault::BufferOverRun, 4900, 4901}, {PlateFault::DataClipped, 4910, 4911}};
    for (const auto& c : cases) {
        prompt.messages.clear();
        dialog->cmdDisplay->click();
        clock.advance(300);
        driver.inject(QStringLiteral("20418"), c.fault);
        EXPECT_EQ(prompt.messages, QStringList{caption(c.message)});
        EXPECT_EQ(dialog->lblError->text(), caption(c.flag));
        clock.advance(1000);
        EXPECT_TRUE(dialog->lblError->isVisible()) << "no samples, no refresh";
        dialog->cmdDisplay->click(); // the display stays on until the user ends it
        EXPECT_FALSE(dialog->displaying());
        dialog->cmdDisplay->click();
        clock.advance(10);
        EXPECT_FALSE(dialog->lblError->isVisible());
        dialog->cmdDisplay->click();
    }
}

TEST_F(AcquireDisplay, ANonFiniteCentreOfPressureIsReportedNotPlotted) {
    setNumber("Display Type", 2);
    setNumber("Min Fz (mN)", 1000); // a positive threshold lets Fz = 0 through
    open();
    dialog->cmdDisplay->click();
    Q_EMIT plate.ForcesIn(1, Float3{0, 0, 0}, Float3{0.001f, 0, 0});
    EXPECT_EQ(prompt.messages, QStringList{QStringLiteral("Division by zero")});
    EXPECT_FALSE(dialog->displaying()) << "stopped before the box, so no sample follows it";
}

} // namespace
} // namespace kx::test
