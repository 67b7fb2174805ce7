#pragma once

#include "sim/PlateLoads.h"
#include "sim/PlateTopGeometry.h"

#include <QList>
#include <QPointF>
#include <QWidget>
#include <vector>

namespace kx {

// The plate's top to scale, seen from above: the loads on it, faint numbered guide points
// (the calibration's, with the one it is at ringed), and a click on the top reported in plate
// coordinates.
class PlateTopView : public QWidget {
    Q_OBJECT
public:
    explicit PlateTopView(QWidget* parent = nullptr);

    // Numbered from 1 in the order given, as the calibration numbers its points.
    void setGuidePoints(const QList<QPointF>& points);
    const QList<QPointF>& guidePoints() const { return m_guides; }
    // The guide point a calibration is at, ringed; -1 for none.
    void setCurrentGuide(int index);
    int currentGuide() const { return m_current; }
    void setLoads(const std::vector<PlateLoads::Placed>& loads);
    QSize sizeHint() const override { return {380, 360}; }
    // Where the top lies in the picture at its present size.
    PlateTopGeometry topGeometry() const;

Q_SIGNALS:
    void clickedAt(QPointF plate);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    QList<QPointF> m_guides;
    int m_current = -1;
    std::vector<PlateLoads::Placed> m_loads;
};

} // namespace kx
