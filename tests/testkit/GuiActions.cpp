#include "GuiActions.h"

#include <QDir>
#include <QPixmap>
#include <QTest>

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

} // namespace kx::test
