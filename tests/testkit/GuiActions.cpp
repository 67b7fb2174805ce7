#include "GuiActions.h"

#include <QDir>
#include <QPixmap>
#include <QTest>
#include <QWheelEvent>

namespace kx::test {

void retype(QLineEdit* box, const QString& typed) {
    box->setFocus();
    box->selectAll();
    if (typed.isEmpty())
        QTest::keyClick(box, Qt::Key_Backspace);
    else
        QTest::keyClicks(box, typed);
}

void typeInto(QLineEdit* box, const QString& typed) {
    retype(box, typed);
    QTest::keyClick(box, Qt::Key_Return);
}

void keepScreenshot(QWidget& widget, const QString& name) {
    const QPixmap picture = widget.grab();
    EXPECT_FALSE(picture.isNull()) << name.toStdString();
    if (const QString folder = qEnvironmentVariable("KX_SCREENSHOT_DIR"); !folder.isEmpty()) {
        EXPECT_TRUE(picture.save(QDir(folder).filePath(name + QStringLiteral(".png"))));
    }
}

void turnWheel(QWidget* widget, int notches) {
    const QPointF at(10, 10);
    QWheelEvent wheel(at, widget->mapToGlobal(at), QPoint(), QPoint(0, 120 * notches), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(widget, &wheel);
}

} // namespace kx::test
