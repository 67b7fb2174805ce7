#include "measure/StripChart.h"
#include "support/ManualClock.h"

#include <QApplication>
#include <QImage>
#include <QSignalSpy>
#include <QWheelEvent>
#include <cmath>
#include <gtest/gtest.h>

using namespace kx;

namespace {

const QRgb kGreen = qRgb(0, 255, 0);

// A chart of 250 x 100 pixels on screen, without grid lines to tell apart from the trace.
struct ChartFixture : testing::Test {
    void SetUp() override {
        chart.setGridStyle(0);
        chart.setRefreshInterval(20);
        chart.resize(250, 100);
        chart.show();
    }
    QImage frame() {
        clock.advance(20); // the refresh that rescales
        QImage image(chart.size(), QImage::Format_RGB32);
        chart.render(&image);
        return image;
    }
    // Rows of the trace's colour in column x, top first.
    static std::vector<int> traceRows(const QImage& image, int x) {
        std::vector<int> rows;
        for (int y = 0; y < image.height(); ++y)
            if (image.pixel(x, y) == kGreen)
                rows.push_back(y);
        return rows;
    }

    ManualClock clock;
    StripChart chart{clock, nullptr, 5000}; // 20 points per column
};

TEST_F(ChartFixture, OneSampleSpikeSurvivesTheReductionToColumns) {
    QSignalSpy top(&chart, &StripChart::ScaleTopChanged);
    for (int i = 0; i < 5000; ++i)
        chart.AddPoint(i == 2507 ? 100.0f : 0.0f);
    const QImage image = frame();
    ASSERT_FALSE(top.isEmpty());
    EXPECT_GE(top.last().at(0).toFloat(), 100.0f);
    // Point 2507 is in column 125: the only one whose trace reaches the upper half.
    for (int x = 0; x < 250; ++x) {
        const std::vector<int> rows = traceRows(image, x);
        ASSERT_FALSE(rows.empty()) << x;
        EXPECT_EQ(rows.front() < 50, x == 125) << x;
    }
}

TEST_F(ChartFixture, BlanksLeaveAGapInBothDirectionsAndModes) {
    for (int i = 0; i < 5000; ++i) {
        if (i >= 2000 && i < 3000)
            chart.AddBlank(false, false, 0, 0);
        else
            chart.AddPoint(float(i % 3));
    }
    chart.AddPoint(INFINITY); // not finite: kept as a blank too
    for (int i = 0; i < 19; ++i)
        chart.AddPoint(1.0f);
    for (const bool rightToLeft : {false, true}) {
        for (const bool scrolling : {false, true}) {
            chart.setRightToLeft(rightToLeft);
            chart.setScrolling(scrolling);
            const QImage image = frame();
            // Scrolling moved the points one column on; the blank fifth stays a gap.
            const int shift = scrolling ? -1 : 0;
            for (int column = 0; column < 250; ++column) {
                const int x = rightToLeft ? 249 - column : column;
                const bool blank = column >= 100 + shift && column < 150 + shift;
                EXPECT_EQ(traceRows(image, x).empty(), blank)
                    << x << " rtl " << rightToLeft << " scrolling " << scrolling;
            }
        }
    }
}

TEST_F(ChartFixture, MeanAndStdDevOfThePointsOnScreen) {
    for (int i = 0; i < 5000; ++i)
        chart.AddPoint(100.0f);
    for (int i = 0; i < 5000; ++i) {
        if (i % 20 >= 18)
            chart.AddBlank(false, false, 0, 0);
        else
            chart.AddPoint(i % 2 ? 3.0f : 1.0f);
    }
    EXPECT_FLOAT_EQ(chart.Mean(), 2.0f);
    EXPECT_FLOAT_EQ(chart.StdDev(), 1.0f);
    for (int i = 0; i < 5000; ++i)
        chart.AddBlank(false, false, 0, 0);
    EXPECT_EQ(chart.Mean(), 0.0f);
    EXPECT_EQ(chart.StdDev(), 0.0f);
}

// Counts the paint events a widget receives.
struct PaintCounter : QObject {
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint)
            ++paints;
        return false;
    }
    int paints = 0;
};

TEST_F(ChartFixture, RepaintsFollowTheRefreshTimerNotThePoints) {
    QApplication::processEvents();
    PaintCounter counter;
    chart.installEventFilter(&counter);
    // 50 points every millisecond for 100 ms: five refreshes of 20 ms.
    for (int ms = 0; ms < 100; ++ms) {
        for (int i = 0; i < 50; ++i)
            chart.AddPoint(float(i));
        clock.advance(1);
        QApplication::processEvents();
    }
    EXPECT_EQ(counter.paints, 5);
    // Points without time passing, and time passing without points, paint nothing.
    for (int i = 0; i < 1000; ++i)
        chart.AddPoint(1.0f);
    QApplication::processEvents();
    EXPECT_EQ(counter.paints, 5);
    chart.StopPlot(); // shows the pending points at once, then stops
    QApplication::processEvents();
    EXPECT_EQ(counter.paints, 6);
    clock.advance(1000);
    QApplication::processEvents();
    EXPECT_EQ(counter.paints, 6);
}

// Columns of the bottom row but one that hold the solid grid colour: the time ticks.
std::vector<int> tickColumns(const QImage& image) {
    std::vector<int> columns;
    const int y = image.height() - 2;
    for (int x = 0; x < image.width(); ++x)
        if (image.pixel(x, y) == qRgb(0, 110, 0))
            columns.push_back(x);
    return columns;
}

void turnWheel(StripChart& chart, int eighthsOfADegree) {
    const QPointF at(100, 50);
    QWheelEvent event(at, chart.mapToGlobal(at), QPoint(), QPoint(0, eighthsOfADegree),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&chart, &event);
}

TEST_F(ChartFixture, TimeTicksFollowTheSpanAndTheDirection) {
    // 5 s across 250 columns: a tick every 0.5 s is every 25 columns, the last one at the edge.
    std::vector<int> tenths;
    for (int x = 0; x < 250; x += 25)
        tenths.push_back(x);
    tenths.push_back(249);
    EXPECT_EQ(tickColumns(frame()), tenths);

    // 30 s: a tick every 5 s, a sixth of the width apart.
    chart.setSpan(30);
    EXPECT_EQ(tickColumns(frame()), (std::vector<int>{0, 42, 83, 125, 167, 208, 249}));
    chart.setRightToLeft(true);
    EXPECT_EQ(tickColumns(frame()), (std::vector<int>{0, 41, 82, 124, 166, 207, 249}));
}

TEST_F(ChartFixture, WheelStepsTheSpanAndANewSpanKeepsTheNewestPoints) {
    QSignalSpy spans(&chart, &StripChart::SpanChanged);
    EXPECT_FLOAT_EQ(chart.Span(), 5.0f);
    turnWheel(chart, -60); // half a notch does nothing yet
    EXPECT_TRUE(spans.isEmpty());
    turnWheel(chart, -60);
    EXPECT_FLOAT_EQ(chart.Span(), 10.0f);
    EXPECT_EQ(chart.pointsAcross(), 10000);
    turnWheel(chart, 3 * 120);
    EXPECT_FLOAT_EQ(chart.Span(), 1.0f);
    ASSERT_EQ(spans.size(), 2);
    EXPECT_FLOAT_EQ(spans.last().at(0).toFloat(), 1.0f);

    // Drift points, one a second: the same points are 5000 s, and the wheel stops at 4 h.
    chart.setSampleRate(1);
    chart.setSpan(5000);
    turnWheel(chart, -10 * 120);
    EXPECT_FLOAT_EQ(chart.Span(), 14400.0f);

    // A new span keeps the newest points: 2000 points are 3000 .. 4999, and nothing older
    // comes back when the span grows again.
    for (int i = 0; i < 5000; ++i)
        chart.AddPoint(static_cast<float>(i));
    chart.setSpan(2000);
    EXPECT_NEAR(chart.Mean(), 3999.5f, 0.01f);
    chart.setSpan(10000);
    EXPECT_NEAR(chart.Mean(), 3999.5f, 0.01f);
    chart.AddPoint(5000);
    EXPECT_NEAR(chart.Mean(), 4000.0f, 0.01f);
}

} // namespace
