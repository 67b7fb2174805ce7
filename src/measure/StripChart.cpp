#include "measure/StripChart.h"

#include "measure/TimeAxis.h"
#include "support/Clock.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <limits>

namespace kx {
namespace {

const QColor kBackground(0, 0, 0);
const QColor kGrid(0, 110, 0);
constexpr int kWheelNotch = 120; // eighths of a degree
constexpr int kTickLength = 4;
constexpr int kLabelGap = 4; // pixels between neighbouring time labels

} // namespace

StripChart::StripChart(Clock& clock, QWidget* parent, qsizetype pointsAcross)
    : QWidget(parent)
    , m_timer(clock.createWallTimer(this))
    , m_trace(pointsAcross) {
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    m_timer->setInterval(m_refreshInterval);
    connect(m_timer, &Timer::timeout, this, [this] {
        if (!showNewPoints())
            m_timer->stop();
    });
    m_trace.setColumns(width());
}

void StripChart::AddPoint(float value) {
    m_trace.add(std::isfinite(value) ? value : std::numeric_limits<float>::quiet_NaN());
    pointAdded();
}

void StripChart::AddBlank(bool, bool, float, float) {
    m_trace.add(std::numeric_limits<float>::quiet_NaN());
    pointAdded();
}

void StripChart::pointAdded() {
    m_newPoints = true;
    // Enabling restarts the countdown, so only a stopped timer is touched.
    if (!m_timer->isEnabled())
        m_timer->setEnabled(true);
}

void StripChart::Clear() {
    m_trace.clear();
    update();
}

void StripChart::StopPlot() {
    showNewPoints();
    m_timer->stop();
}

bool StripChart::showNewPoints() {
    if (!m_newPoints)
        return false;
    m_newPoints = false;
    rescale();
    update();
    return true;
}

void StripChart::rescale() {
    if (!m_autoScale)
        return;
    const auto range = m_trace.range();
    if (!range || !m_scale.fit(range->first, range->second, m_minSpan))
        return;
    const auto top = static_cast<float>(m_scale.top());
    const auto bottom = static_cast<float>(m_scale.bottom());
    if (m_shownTop != top) {
        m_shownTop = top;
        Q_EMIT ScaleTopChanged(top);
    }
    if (m_shownBottom != bottom) {
        m_shownBottom = bottom;
        Q_EMIT ScaleBottomChanged(bottom);
    }
}

float StripChart::Mean() const {
    const auto statistics = m_trace.statistics();
    return statistics ? statistics->mean : 0.0f;
}

float StripChart::StdDev() const {
    const auto statistics = m_trace.statistics();
    return statistics ? statistics->standardDeviation : 0.0f;
}

void StripChart::setRefreshInterval(int ms) {
    m_refreshInterval = ms;
    // A timer of 0 ms never fires, and the chart would never show its points.
    m_timer->setInterval(std::max(ms, 1));
}

void StripChart::setRightToLeft(bool rightToLeft) {
    m_rightToLeft = rightToLeft;
    update();
}

void StripChart::setScrolling(bool scrolling) {
    m_scrolling = scrolling;
    update();
}

void StripChart::setAutoScale(bool autoScale) {
    m_autoScale = autoScale;
    rescale();
    update();
}

void StripChart::setGridStyle(int style) {
    m_gridStyle = style;
    update();
}

void StripChart::setTraceColor(const QColor& color) {
    m_traceColor = color;
    update();
}

void StripChart::setMinSpan(float span) {
    m_minSpan = span;
    rescale();
    update();
}

float StripChart::Span() const {
    return static_cast<float>(static_cast<double>(m_trace.capacity()) / pointRate());
}

void StripChart::setSpan(float spanSeconds) {
    const qsizetype points = TimeAxis::pointsForSpan(spanSeconds, pointRate());
    if (points == m_trace.capacity())
        return;
    TraceBuffer resized(points);
    const qint64 count = m_trace.pointCount();
    const qint64 kept = std::min<qint64>({count, m_trace.capacity(), points});
    for (qint64 g = count - kept; g < count; ++g)
        resized.add(m_trace.point(g));
    m_trace = std::move(resized);
    resizeEvent(nullptr);
    rescale();
    update();
    Q_EMIT SpanChanged(Span());
}

void StripChart::wheelEvent(QWheelEvent* event) {
    // Turning the wheel away from the user shows less time, as zooming in does elsewhere.
    m_wheelAngle += event->angleDelta().y();
    const int notches = m_wheelAngle / kWheelNotch;
    m_wheelAngle -= notches * kWheelNotch;
    if (notches != 0)
        setSpan(static_cast<float>(TimeAxis::steppedSpan(Span(), -notches, pointRate())));
    event->accept();
}

void StripChart::resizeEvent(QResizeEvent*) {
    m_trace.setColumns(width());
    m_lines.reserve(2 * static_cast<std::size_t>(m_trace.bucketCount()));
}

// The pixel column at the middle of a bucket slot, mirrored for right to left.
int StripChart::columnOfSlot(int slot) const {
    const qint64 width = std::max(this->width(), 1);
    const auto column =
        static_cast<int>((2 * qint64(slot) + 1) * width / (2 * qint64(m_trace.bucketCount())));
    return m_rightToLeft ? static_cast<int>(width) - 1 - column : column;
}

int StripChart::yOf(float value) const {
    const double pixels = std::max(height() - 1, 1);
    const double y = (m_scale.top() - value) / (m_scale.top() - m_scale.bottom()) * pixels;
    // Values beyond the limits (AutoScale off) are pinned just outside the plot.
    return static_cast<int>(std::lround(std::clamp(y, -1.0, pixels + 1)));
}

void StripChart::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), kBackground);
    drawGrid(painter);
    drawTimeAxis(painter); // under the trace, which matters more
    drawTrace(painter);
}

double StripChart::shownSeconds() const {
    const auto slots = qint64(m_trace.bucketCount()) * m_trace.pointsPerBucket();
    return static_cast<double>(slots) / pointRate();
}

// The column of a time from the edge where the trace starts, as the cursor read-out counts it.
int StripChart::xOfSeconds(double seconds) const {
    const double width = std::max(this->width(), 1);
    const auto column = static_cast<int>(std::clamp(std::lround(seconds / shownSeconds() * width),
                                                    0L, static_cast<long>(width) - 1));
    return m_rightToLeft ? static_cast<int>(width) - 1 - column : column;
}

void StripChart::drawTimeAxis(QPainter& painter) const {
    painter.setPen(QPen(kGrid, 0));
    const QFontMetrics metrics = painter.fontMetrics();
    const int bottom = height() - 1;
    const int baseline = bottom - kTickLength;
    QRect previous;
    for (const TimeAxis::Tick& tick : TimeAxis::ticks(shownSeconds())) {
        const int x = xOfSeconds(tick.seconds);
        painter.drawLine(x, bottom - kTickLength, x, bottom);
        // A label sits on the later side of its tick unless that leaves the chart; one that
        // would run into its neighbour is left out.
        const int textWidth = metrics.horizontalAdvance(tick.label);
        const int after = m_rightToLeft ? x - 2 - textWidth : x + 2;
        const int before = m_rightToLeft ? x + 2 : x - 2 - textWidth;
        const int left = after >= 0 && after + textWidth < width() ? after : before;
        const QRect label(left, baseline - metrics.ascent(), textWidth, metrics.ascent());
        if (label.intersects(previous.adjusted(-kLabelGap, 0, kLabelGap, 0)))
            continue;
        painter.drawText(left, baseline, tick.label);
        previous = label;
    }
}

void StripChart::drawGrid(QPainter& painter) const {
    painter.setPen(QPen(kGrid, 0, Qt::DotLine));
    if (m_gridStyle & kHorizontalGrid) {
        const double step = m_scale.step();
        // Whole steps between the limits; the tolerance keeps limits that are steps themselves.
        const auto first = static_cast<qint64>(std::ceil(m_scale.bottom() / step - 1e-9));
        const auto last = static_cast<qint64>(std::floor(m_scale.top() / step + 1e-9));
        for (qint64 n = first; n <= last; ++n) {
            const int y = yOf(static_cast<float>(static_cast<double>(n) * step));
            painter.drawLine(0, y, width() - 1, y);
        }
    }
    if (m_gridStyle & kVerticalGrid) {
        for (const TimeAxis::Tick& tick : TimeAxis::ticks(shownSeconds())) {
            const int x = xOfSeconds(tick.seconds);
            painter.drawLine(x, 0, x, height() - 1);
        }
    }
}

void StripChart::drawTrace(QPainter& painter) {
    m_lines.clear();
    qint64 previous = -2;
    int previousX = 0;
    float previousLast = 0;
    for (int slot = 0; slot < m_trace.bucketCount(); ++slot) {
        const qint64 b = m_trace.bucketAtSlot(slot, m_scrolling);
        if (b < 0) {
            previous = -2;
            continue;
        }
        const TraceBuffer::Bucket& bucket = m_trace.bucket(b);
        const int x = columnOfSlot(slot);
        // Joined to the bucket before unless a blank or the sweep's front lies between.
        if (b == previous + 1 && !std::isnan(previousLast) && !std::isnan(bucket.first))
            m_lines.emplace_back(previousX, yOf(previousLast), x, yOf(bucket.first));
        if (bucket.hasValue())
            m_lines.emplace_back(x, yOf(bucket.max), x, yOf(bucket.min));
        previous = b;
        previousX = x;
        previousLast = bucket.last;
    }
    painter.setPen(QPen(m_traceColor, 0));
    painter.drawLines(m_lines.data(), static_cast<int>(m_lines.size()));
}

void StripChart::mouseMoveEvent(QMouseEvent* event) {
    const QPoint position = event->position().toPoint();
    const qint64 width = std::max(this->width(), 1);
    const qint64 column =
        std::clamp<qint64>(m_rightToLeft ? width - 1 - position.x() : position.x(), 0, width - 1);
    // The point slot under the mouse, counted from the edge where the trace starts.
    const qint64 perBucket = m_trace.pointsPerBucket();
    const qint64 slots = qint64(m_trace.bucketCount()) * perBucket;
    const qint64 slot = (2 * column + 1) * slots / (2 * width);
    const qint64 b = m_trace.bucketAtSlot(static_cast<int>(slot / perBucket), m_scrolling);
    const float value = b < 0 ? std::numeric_limits<float>::quiet_NaN()
                              : m_trace.point(b * perBucket + slot % perBucket);
    const bool valid = !std::isnan(value);

    const double rate = pointRate();
    const double pixels = std::max(height() - 1, 1);
    const double y = m_scale.top() - position.y() / pixels * (m_scale.top() - m_scale.bottom());
    Q_EMIT CursorMove(m_index, static_cast<float>(static_cast<double>(slot) / rate),
                      static_cast<float>(y), valid, valid ? value : 0.0f);
}

} // namespace kx
