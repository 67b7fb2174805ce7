#pragma once

#include <QByteArray>
#include <QImage>
#include <QWidget>

class QPainter;

namespace kx {

class NoiseResults;
struct NoisePlan;

// The noise run as a picture: per channel the deviation (R2, converter codes) against the
// sampling frequency, one line per excitation coloured from blue (lowest) to red (highest),
// both axes logarithmic and one deviation scale for every channel so they compare at a glance.
// Only measured tests with a positive deviation are drawn; suspect ones are ringed in red.
class NoiseChart : public QWidget {
    Q_OBJECT
public:
    explicit NoiseChart(QWidget* parent = nullptr);

    // What to draw; both must outlive the chart or be replaced. Null draws empty axes.
    void setData(const NoisePlan* plan, const NoiseResults* results);

    QSize sizeHint() const override;
    // The chart on a white background, at a size that suits a report.
    QImage picture() const;
    // picture() as PNG bytes.
    QByteArray png() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void paint(QPainter& painter, const QRect& area) const;
    void paintSuspectKey(QPainter& painter, const QRect& area) const;

    const NoisePlan* m_plan = nullptr;
    const NoiseResults* m_results = nullptr;
};

} // namespace kx
