#pragma once

#include "measure/ChartScale.h"
#include "measure/TraceBuffer.h"

#include <QColor>
#include <QLine>
#include <QWidget>
#include <optional>
#include <vector>

namespace kx {

class Clock;
class Timer;

// A scrolling strip chart with one trace, drawn like an oscilloscope: the trace in
// TraceColor on black, with dotted dark-green grid lines.
//
// Time across: the chart shows the last pointsAcross points (5000 by default: 5 s of a
// 1000 Hz plate, or 83 minutes of drift points at one a second), as many of them as fill
// whole pixel columns. Each column shows the lowest and highest of its points joined to its
// neighbours, so a one-sample spike stays visible. "Left to Right" (RightToLeft false) means
// time runs to the right: when scrolling, the newest point is at the right edge and the trace
// moves left; when sweeping, the trace is written from the left edge to the right and then
// over itself again from the left. Blank points leave gaps.
//
// Points are only stored as they come; the chart redraws on its own refresh timer (a Clock
// timer of RefreshInterval ms, which runs only while new points arrive), never per point.
// With AutoScale on, each redraw fits the limits to the points on screen (see ChartScale)
// and reports them through ScaleTopChanged / ScaleBottomChanged when they change; with
// AutoScale off the limits stay where they are (-1 to 1 before the first fit).
//
// Cursor read-out: moving the mouse over the chart emits CursorMove with X = the time
// position in seconds across the chart, counted from the edge where the trace starts (the
// point position / SampleRate, so a full chart reads about pointsAcross / SampleRate at the
// far edge), Y = the value at the mouse's height, and data = the trace's point under the
// mouse (valid false when there is none or it is blank).
//
// Time axis: ticks along the bottom edge labelled in seconds from the edge where the trace
// starts (minutes for spans of 5 minutes and more, see TimeAxis), with the vertical grid lines
// at the ticks. The mouse wheel lengthens (turned towards the user) or shortens the span along
// TimeAxis's ladder; the chart then keeps that many points and reports the span through
// SpanChanged. Span is the span in seconds at SampleRate.
class StripChart : public QWidget {
    Q_OBJECT
    Q_PROPERTY(int RefreshInterval READ RefreshInterval WRITE setRefreshInterval)
    Q_PROPERTY(float SampleRate READ SampleRate WRITE setSampleRate)
    Q_PROPERTY(bool RightToLeft READ RightToLeft WRITE setRightToLeft)
    Q_PROPERTY(bool Scrolling READ Scrolling WRITE setScrolling)
    Q_PROPERTY(bool AutoScale READ AutoScale WRITE setAutoScale)
    Q_PROPERTY(int GridStyle READ GridStyle WRITE setGridStyle)
    Q_PROPERTY(QColor TraceColor READ TraceColor WRITE setTraceColor)
    Q_PROPERTY(float MinSpan READ MinSpan WRITE setMinSpan)
    Q_PROPERTY(float Mean READ Mean)
    Q_PROPERTY(float StdDev READ StdDev)
    Q_PROPERTY(int index READ index WRITE setIndex)
    Q_PROPERTY(float Span READ Span WRITE setSpan NOTIFY SpanChanged)

public:
    static constexpr qsizetype kDefaultPointsAcross = 5000;
    // GridStyle bits: horizontal lines at the scale steps, vertical lines at the time ticks.
    static constexpr int kHorizontalGrid = 1;
    static constexpr int kVerticalGrid = 2;

    explicit StripChart(Clock& clock, QWidget* parent = nullptr,
                        qsizetype pointsAcross = kDefaultPointsAcross);

    // Appends one point; a value that is not finite is kept as a blank.
    void AddPoint(float value);
    // Appends a blank point (a gap); the arguments are accepted and not used.
    void AddBlank(bool, bool, float, float);
    // Erases the trace (the limits stay until new points move them).
    void Clear();
    // Shows what is pending and stops the refresh timer until the next point.
    void StopPlot();

    // Mean and standard deviation (population form) of the points on screen, blanks left
    // out; 0 when there are none.
    float Mean() const;
    float StdDev() const;

    // Redraw period in ms; below 1 ms the chart redraws every millisecond.
    int RefreshInterval() const { return m_refreshInterval; }
    void setRefreshInterval(int ms);
    // Points per second, for the cursor's X, the time axis and Span (which count points when
    // it is not positive). The chart keeps its points across when the rate changes.
    float SampleRate() const { return m_sampleRate; }
    void setSampleRate(float pointsPerSecond) { m_sampleRate = pointsPerSecond; }
    bool RightToLeft() const { return m_rightToLeft; }
    void setRightToLeft(bool rightToLeft);
    bool Scrolling() const { return m_scrolling; }
    void setScrolling(bool scrolling);
    bool AutoScale() const { return m_autoScale; }
    void setAutoScale(bool autoScale);
    // 3 (kHorizontalGrid | kVerticalGrid) with grids, 0 without.
    int GridStyle() const { return m_gridStyle; }
    void setGridStyle(int style);
    QColor TraceColor() const { return m_traceColor; }
    void setTraceColor(const QColor& color);
    // The smallest span between the limits that AutoScale may choose.
    float MinSpan() const { return m_minSpan; }
    void setMinSpan(float span);

    // Seconds across the chart at SampleRate (points across when SampleRate is not positive).
    float Span() const;
    // Keeps spanSeconds worth of points at SampleRate (within TimeAxis's point limits), keeping
    // the newest points already there.
    void setSpan(float spanSeconds);
    qsizetype pointsAcross() const { return m_trace.capacity(); }

    // The chart's number in its dialog, passed with CursorMove.
    int index() const { return m_index; }
    void setIndex(int index) { m_index = index; }

Q_SIGNALS:
    void CursorMove(int index, float X, float Y, bool valid, float data);
    void ScaleTopChanged(float value);
    void ScaleBottomChanged(float value);
    void SpanChanged(float spanSeconds);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void pointAdded();
    // Rescales and schedules a repaint when points arrived since the last time; false when
    // none did.
    bool showNewPoints();
    void rescale();
    int columnOfSlot(int slot) const;
    int yOf(float value) const;
    void drawGrid(QPainter& painter) const;
    void drawTrace(QPainter& painter);
    void drawTimeAxis(QPainter& painter) const;
    double pointRate() const { return m_sampleRate > 0 ? m_sampleRate : 1.0; }
    // Seconds across the columns actually drawn (whole buckets, a little under Span).
    double shownSeconds() const;
    int xOfSeconds(double seconds) const;

    Timer* m_timer;
    TraceBuffer m_trace;
    ChartScale m_scale;
    std::optional<float> m_shownTop;
    std::optional<float> m_shownBottom;
    std::vector<QLine> m_lines; // reused by every frame
    bool m_newPoints = false;

    int m_refreshInterval = 50;
    float m_sampleRate = 1000;
    bool m_rightToLeft = false;
    bool m_scrolling = true;
    bool m_autoScale = true;
    int m_gridStyle = kHorizontalGrid | kVerticalGrid;
    QColor m_traceColor{0, 255, 0};
    float m_minSpan = 0;
    int m_index = 0;
    int m_wheelAngle = 0; // eighths of a degree not yet turned into a step
};

} // namespace kx
