#include "device/TextBoxValidation.h"

#include <QApplication>
#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>
#include <QWidget>
#include <gtest/gtest.h>

namespace kx {
namespace {

class TextBoxValidationTest : public ::testing::Test {
protected:
    void SetUp() override {
        auto* layout = new QVBoxLayout(&window);
        layout->addWidget(box);
        layout->addWidget(other);
        TextBoxValidation::attach(
            box, [this] { validated << box->text(); }, [this] { ++left; });
        box->setText(QStringLiteral("1.000"));
        window.show();
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    void focus(QWidget* widget) {
        widget->setFocus(Qt::TabFocusReason);
        QCoreApplication::processEvents();
    }

    QWidget window;
    QLineEdit* box = new QLineEdit;
    QLineEdit* other = new QLineEdit;
    QStringList validated;
    int left = 0;
};

TEST_F(TextBoxValidationTest, EnterOrLeavingValidatesAnEditOnce) {
    // A click that gives the focus selects the whole text; the click's cursor does not undo it.
    QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(5, box->height() / 2));
    QCoreApplication::processEvents();
    EXPECT_EQ(box->selectedText(), QStringLiteral("1.000"));
    QTest::keyClick(box, Qt::Key_Return);
    focus(other);
    EXPECT_TRUE(validated.isEmpty()) << "an untouched box validates nothing";
    focus(box);
    QTest::keyClicks(box, QStringLiteral("20000"));
    QTest::keyClick(box, Qt::Key_Return);
    focus(other);
    EXPECT_EQ(validated, QStringList{QStringLiteral("20000")}) << "not again on leaving";
    EXPECT_EQ(left, 2);

    focus(box);
    QTest::keyClicks(box, QStringLiteral("7"));
    // Switching to another window is not leaving the box.
    QFocusEvent deactivated(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
    QApplication::sendEvent(box, &deactivated);
    EXPECT_EQ(validated.size(), 1);
    focus(other);
    EXPECT_EQ(validated, (QStringList{QStringLiteral("20000"), QStringLiteral("7")}));
}

} // namespace
} // namespace kx
