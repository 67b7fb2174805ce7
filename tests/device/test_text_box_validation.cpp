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

TEST_F(TextBoxValidationTest, FocusSelectsTheWholeText) {
    focus(box);
    EXPECT_EQ(box->selectedText(), QStringLiteral("1.000"));
    // A click that gives the focus selects too, and the click's cursor does not undo it.
    focus(other);
    QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(5, box->height() / 2));
    QCoreApplication::processEvents();
    EXPECT_EQ(box->selectedText(), QStringLiteral("1.000"));
}

TEST_F(TextBoxValidationTest, EnterOrLeavingValidatesAnEditOnce) {
    focus(box);
    QTest::keyClicks(box, QStringLiteral("20000"));
    QTest::keyClick(box, Qt::Key_Return);
    EXPECT_EQ(validated, QStringList{QStringLiteral("20000")});
    focus(other);
    EXPECT_EQ(validated.size(), 1) << "leaving after Enter does not validate the same edit again";
    EXPECT_EQ(left, 1);

    focus(box);
    QTest::keyClicks(box, QStringLiteral("7"));
    focus(other);
    EXPECT_EQ(validated, (QStringList{QStringLiteral("20000"), QStringLiteral("7")}));
}

TEST_F(TextBoxValidationTest, UntouchedBoxValidatesNothing) {
    focus(box);
    QTest::keyClick(box, Qt::Key_Return);
    focus(other);
    box->setText(QStringLiteral("set by the program"));
    focus(box);
    focus(other);
    EXPECT_TRUE(validated.isEmpty());
    EXPECT_EQ(left, 2);
}

TEST_F(TextBoxValidationTest, SwitchingWindowsIsNotLeaving) {
    focus(box);
    QTest::keyClicks(box, QStringLiteral("3"));
    QFocusEvent deactivated(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
    QApplication::sendEvent(box, &deactivated);
    EXPECT_TRUE(validated.isEmpty());
    EXPECT_EQ(left, 0);
    focus(other);
    EXPECT_EQ(validated, QStringList{QStringLiteral("3")});
}

} // namespace
} // namespace kx
