#pragma once

#include "calibration/PlateDrawing.h"

#include <QColor>
#include <QFont>
#include <QPointF>
#include <QRectF>
#include <QWidget>

class QPainter;

namespace kx {

// Maps the plate top into a rectangle of a paint device, to scale (one factor for X and Y),
// centred, Y upward. The plate's origin lands wherever the extents put it.
class PlateView {
public:
    PlateView(const PlateDrawing& drawing, const QRectF& area);

    QPointF toDevice(QPointF plate) const;
    QPointF toPlate(QPointF device) const;
    double pixelsPerMetre() const { return m_scale; }
    QRectF plateRect() const;

private:
    double m_left;
    double m_bottom;
    double m_width;
    double m_height;
    QPointF m_origin; // device position of (left, bottom)
    double m_scale = 1;
};

// The part of a picture's area that the plate takes: all but the legend lines at the top.
QRectF plateArea(const QRectF& area, const QFont& font);

// Draws the plate top with its point marks, their states, the current point, a legend and,
// after a fit, each point's centre-of-pressure error as an arrow (PlateDrawing::Arrow) with the
// true size beside a shortened one, and a red ring round each point that does not fit. Paints
// onto any painter, so a printed report draws the same picture.
void paintPlate(QPainter& painter, const QRectF& area, const PlateDrawing& drawing);

// The colours a reader of the picture tells apart.
inline const QColor ErrorArrowColour(0, 64, 200);
inline const QColor DoesNotFitRing(220, 0, 0);

// `picPlate`: the plate picture of the calibration dialog. A click reports where it landed in
// plate coordinates; the tooltip names the point under the pointer and its state.
class PlatePicture : public QWidget {
    Q_OBJECT
public:
    explicit PlatePicture(QWidget* parent = nullptr);

    void setDrawing(PlateDrawing drawing);
    const PlateDrawing& drawing() const { return m_drawing; }
    PlateView view() const;

    QSize sizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

Q_SIGNALS:
    // Mouse-up on the picture, at this place of the plate (metres).
    void clicked(QPointF plate);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    bool event(QEvent* event) override;

private:
    PlateDrawing m_drawing;
};

} // namespace kx
