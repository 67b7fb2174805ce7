#pragma once

#include "calibration/PlatePainting.h"

#include <QWidget>

namespace kx {

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
