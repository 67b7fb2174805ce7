#pragma once

#include "sim/PlateLoads.h"
#include "sim/PlateTopGeometry.h"

#include <QList>
#include <QPointF>
#include <QWidget>
#include <vector>

namespace kx {

// The plate's top to scale, seen from above: the loads on it, faint guide points, and a click
// on the top reported in plate coordinates.
class PlateTopView : public QWidget {
    Q_OBJECT
public:
    explicit PlateTopView(QWidget* parent = nullptr);

    void setGuidePoints(const QList<QPointF>& points);
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
    std::vector<PlateLoads::Placed> m_loads;
};

} // namespace kx
