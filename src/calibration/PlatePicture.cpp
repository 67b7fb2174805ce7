#include "calibration/PlatePicture.h"

#include "resources/StringTable.h"

#include <QHelpEvent>
#include <QLineF>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

namespace kx {

PlatePicture::PlatePicture(QWidget* parent)
    : QWidget(parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setMinimumSize(220, 200);
}

void PlatePicture::setDrawing(PlateDrawing drawing) {
    m_drawing = std::move(drawing);
    update();
}

PlateView PlatePicture::view() const {
    return PlateView(m_drawing, plateArea(QRectF(rect()), font()));
}

QSize PlatePicture::sizeHint() const {
    return {360, heightForWidth(360)};
}

int PlatePicture::heightForWidth(int width) const {
    return plateHeightForWidth(m_drawing, width, font());
}

void PlatePicture::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintPlate(painter, QRectF(rect()), m_drawing);
}

void PlatePicture::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        Q_EMIT clicked(view().toPlate(event->position()));
    QWidget::mouseReleaseEvent(event);
}

bool PlatePicture::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    auto* help = static_cast<QHelpEvent*>(event);
    const QPointF at = view().toPlate(help->pos());
    for (std::size_t i = 0; i < m_drawing.marks.size(); ++i) {
        const PlateDrawing::Mark& mark = m_drawing.marks[i];
        if (QLineF(at, mark.position).length() <= m_drawing.markRadius) {
            QToolTip::showText(help->globalPos(),
                               strings::text(strings::calibrate::PicturePoint)
                                   .arg(i + 1)
                                   .arg(markState(m_drawing, i)),
                               this);
            return true;
        }
    }
    QToolTip::hideText();
    event->ignore();
    return true;
}

} // namespace kx
