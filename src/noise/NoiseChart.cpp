#include "noise/NoiseChart.h"

#include "noise/NoisePlan.h"
#include "noise/NoiseResults.h"
#include "resources/StringTable.h"
#include "support/NumberFormat.h"

#include <QBuffer>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

namespace kx {

namespace {

constexpr int LeftMargin = 58;
constexpr int RightMargin = 12;
constexpr int TitleHeight = 28; // the title, and room for the top label
constexpr int AxisHeight = 34;
constexpr int LegendHeight = 34;
constexpr int PanelGap = 6;
constexpr int SuspectRadius = 5;
const QColor SuspectColour(200, 0, 0);

struct LogRange {
    double low = 0; // log10 of the ends
    double high = 1;
    double at(double value) const { return (std::log10(value) - low) / (high - low); }
};

QColor excitationColour(qsizetype index, qsizetype count) {
    const double share = count > 1 ? double(index) / double(count - 1) : 0.0;
    return QColor::fromHsvF(float(0.66 * (1.0 - share)), 0.85f, 0.85f);
}

// Whole decades around every measured positive deviation; 1 to 1000 codes when none.
LogRange deviationRange(const NoiseResults* results) {
    double low = INFINITY;
    double high = -INFINITY;
    if (results) {
        for (qsizetype c = 0; c < results->channels(); ++c) {
            for (qsizetype e = 0; e < results->excitations(); ++e) {
                for (qsizetype f = 0; f < results->frequencies(); ++f) {
                    const double d = results->value(NoiseResults::R2, c, f, e);
                    if (results->measured(f, e) && d > 0 && std::isfinite(d)) {
                        low = std::min(low, std::log10(d));
                        high = std::max(high, std::log10(d));
                    }
                }
            }
        }
    }
    if (low > high)
        return {0, 3};
    const double floor = std::floor(low);
    return {floor, std::max(std::ceil(high), floor + 1)};
}

LogRange frequencyRange(const NoisePlan* plan) {
    if (!plan || plan->frequencies.isEmpty())
        return {1, 3};
    const auto [low, high] = std::ranges::minmax(plan->frequencies);
    const double margin = 0.12 * std::max(1.0, std::log10(double(high) / double(low)));
    return {std::log10(double(low)) - margin, std::log10(double(high)) + margin};
}

} // namespace

NoiseChart::NoiseChart(QWidget* parent)
    : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void NoiseChart::setData(const NoisePlan* plan, const NoiseResults* results) {
    m_plan = plan;
    m_results = results;
    update();
}

QSize NoiseChart::sizeHint() const {
    return {380, 480};
}

QImage NoiseChart::picture() const {
    const int channels = m_results ? int(m_results->channels()) : 3;
    QImage image(900, 60 + channels * 260, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QFont font = painter.font();
    font.setPixelSize(13);
    painter.setFont(font);
    paint(painter, image.rect().adjusted(8, 8, -8, -8));
    return image;
}

QByteArray NoiseChart::png() const {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    picture().save(&buffer, "PNG");
    return bytes;
}

void NoiseChart::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
    painter.setRenderHint(QPainter::Antialiasing);
    paint(painter, rect().adjusted(4, 4, -4, -4));
}

void NoiseChart::paint(QPainter& painter, const QRect& area) const {
    const QFontMetrics metrics = painter.fontMetrics();
    const qsizetype channels = m_results ? m_results->channels() : 3;
    const qsizetype excitations = m_plan ? m_plan->excitations.size() : 0;
    const LogRange x = frequencyRange(m_plan);
    const LogRange y = deviationRange(m_results);
    const int panelHeight = int((area.height() - LegendHeight - PanelGap * (channels - 1)) /
                                std::max<qsizetype>(channels, 1));
    const QPen axisPen(QColor(60, 60, 60), 1);
    const QPen gridPen(QColor(225, 225, 225), 1);
    const QPen minorPen(QColor(242, 242, 242), 1);
    const QPen suspectPen(SuspectColour, 1.8);
    QList<QPointF> suspects;

    for (qsizetype c = 0; c < channels; ++c) {
        const int top = area.top() + int(c) * (panelHeight + PanelGap);
        const QRect plot(area.left() + LeftMargin, top + TitleHeight,
                         area.width() - LeftMargin - RightMargin,
                         panelHeight - TitleHeight - AxisHeight);
        const auto px = [&](double hz) { return plot.left() + x.at(hz) * plot.width(); };
        const auto py = [&](double codes) { return plot.bottom() - y.at(codes) * plot.height(); };

        painter.setPen(axisPen);
        painter.drawText(QRect(area.left(), top, area.width(), TitleHeight - 8),
                         Qt::AlignLeft | Qt::AlignVCenter,
                         strings::text(strings::noise::ChartChannel) + QString::number(c + 1) +
                             QStringLiteral("  -  ") +
                             strings::text(strings::noise::ChartDeviation));

        // Decades and their minor lines across, the plan's frequencies up.
        for (int decade = int(y.low); decade <= int(y.high); ++decade) {
            const double value = std::pow(10.0, decade);
            for (int step = 2; step < 10 && decade < int(y.high); ++step) {
                painter.setPen(minorPen);
                painter.drawLine(QPointF(plot.left(), py(step * value)),
                                 QPointF(plot.right(), py(step * value)));
            }
            painter.setPen(gridPen);
            painter.drawLine(QPointF(plot.left(), py(value)), QPointF(plot.right(), py(value)));
            painter.setPen(axisPen);
            painter.drawText(QRectF(area.left(), py(value) - 10, LeftMargin - 6, 20),
                             Qt::AlignRight | Qt::AlignVCenter, formatGeneral(value));
        }
        if (m_plan) {
            for (float hz : m_plan->frequencies) {
                painter.setPen(gridPen);
                painter.drawLine(QPointF(px(hz), plot.top()), QPointF(px(hz), plot.bottom()));
                painter.setPen(axisPen);
                painter.drawText(QRectF(px(hz) - 40, plot.bottom() + 2, 80, metrics.height()),
                                 Qt::AlignHCenter | Qt::AlignTop, formatGeneral(hz));
            }
        }
        painter.setPen(axisPen);
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(plot);
        painter.drawText(QRect(plot.left(), plot.bottom() + 2 + metrics.height(), plot.width(),
                               AxisHeight - metrics.height() - 2),
                         Qt::AlignHCenter | Qt::AlignTop,
                         strings::text(strings::noise::ChartFrequency));

        if (!m_results || !m_plan)
            continue;
        painter.save();
        painter.setClipRect(
            plot.adjusted(-SuspectRadius, -SuspectRadius, SuspectRadius, SuspectRadius));
        for (qsizetype e = 0; e < excitations; ++e) {
            QPainterPath line;
            const QColor colour = excitationColour(e, excitations);
            painter.setPen(QPen(colour, 1.6));
            painter.setBrush(colour);
            for (qsizetype f = 0; f < m_results->frequencies(); ++f) {
                const double d = m_results->value(NoiseResults::R2, c, f, e);
                if (!m_results->measured(f, e) || !(d > 0) || !std::isfinite(d))
                    continue;
                const QPointF point(px(m_plan->frequencies[f]), py(d));
                if (line.elementCount() == 0)
                    line.moveTo(point);
                else
                    line.lineTo(point);
                painter.drawEllipse(point, 2.2, 2.2);
                if (m_results->marks(f, e) != NoiseResults::NotSuspect)
                    suspects << point;
            }
            painter.setBrush(Qt::NoBrush);
            painter.drawPath(line);
        }
        // Over every line, so that no colour hides a mark.
        painter.setPen(suspectPen);
        for (const QPointF& point : std::as_const(suspects))
            painter.drawEllipse(point, SuspectRadius, SuspectRadius);
        suspects.clear();
        painter.restore();
    }

    if (m_results && m_results->suspectCount() > 0)
        paintSuspectKey(painter, area);
    // The colour key: a bar from the first excitation to the last.
    if (!m_plan || excitations == 0)
        return;
    const int keyTop = area.bottom() - LegendHeight + 10;
    const QString caption = strings::text(strings::noise::ExcTitke);
    const int captionWidth = metrics.horizontalAdvance(caption) + 8;
    // To the millivolt, as the excitation box shows it.
    const QString first = formatNumber(m_plan->excitations.front(), u"0.000");
    const QString last = formatNumber(m_plan->excitations.back(), u"0.000");
    const int firstWidth = metrics.horizontalAdvance(first) + 6;
    const int lastWidth = metrics.horizontalAdvance(last) + 6;
    const QRect bar(area.left() + LeftMargin + captionWidth + firstWidth, keyTop,
                    std::max(40, area.width() - LeftMargin - RightMargin - captionWidth -
                                     firstWidth - lastWidth),
                    12);
    QLinearGradient gradient(bar.topLeft(), bar.topRight());
    for (qsizetype e = 0; e < excitations; ++e)
        gradient.setColorAt(excitations > 1 ? double(e) / double(excitations - 1) : 0.0,
                            excitationColour(e, excitations));
    painter.setPen(Qt::NoPen);
    painter.fillRect(bar, gradient);
    painter.setPen(axisPen);
    painter.drawText(QRect(area.left() + LeftMargin, keyTop - 4, captionWidth, 20),
                     Qt::AlignLeft | Qt::AlignVCenter, caption);
    painter.drawText(QRect(bar.left() - firstWidth, keyTop - 4, firstWidth - 4, 20),
                     Qt::AlignRight | Qt::AlignVCenter, first);
    painter.drawText(QRect(bar.right() + 4, keyTop - 4, lastWidth, 20),
                     Qt::AlignLeft | Qt::AlignVCenter, last);
}

void NoiseChart::paintSuspectKey(QPainter& painter, const QRect& area) const {
    // At the right of the first title row, where it never crowds the colour key.
    const QString text = strings::text(strings::noise::ChartSuspect);
    const int textWidth = painter.fontMetrics().horizontalAdvance(text) + 4;
    const QRectF label(area.right() - RightMargin - textWidth, area.top(), textWidth,
                       TitleHeight - 8);
    painter.setPen(QPen(SuspectColour, 1.8));
    painter.drawEllipse(QPointF(label.left() - 4 - SuspectRadius, label.center().y()),
                        SuspectRadius, SuspectRadius);
    painter.setPen(QColor(60, 60, 60));
    painter.drawText(label, Qt::AlignLeft | Qt::AlignVCenter, text);
}

} // namespace kx
