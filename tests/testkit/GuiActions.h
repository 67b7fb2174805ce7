#pragma once

#include <QApplication>
#include <QLineEdit>
#include <QString>
#include <QWidget>
#include <gtest/gtest.h>

namespace kx::test {

// The control named objectName under parent; a missing one fails the test and gives null.
template <typename T = QWidget>
T* child(const QObject* parent, const QString& objectName) {
    T* found = parent->findChild<T*>(objectName);
    EXPECT_NE(found, nullptr) << objectName.toStdString();
    return found;
}

// The one visible top-level widget of type T (a dialog a button opened), or null.
template <typename T>
T* shownDialog() {
    T* found = nullptr;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* dialog = qobject_cast<T*>(widget); dialog && dialog->isVisible()) {
            EXPECT_EQ(found, nullptr) << "more than one " << T::staticMetaObject.className();
            found = dialog;
        }
    }
    return found;
}

// Replaces the box's text with keystrokes as a user would (an empty text clears it).
void retype(QLineEdit* box, const QString& typed);
// Replaces the box's text and confirms it with Enter.
void typeInto(QLineEdit* box, const QString& typed);
// Turns the mouse wheel over the widget by whole notches; negative turns it towards the user.
void turnWheel(QWidget* widget, int notches);
// Saves a picture of the widget as <name>.png into KX_SCREENSHOT_DIR when that is set.
void keepScreenshot(QWidget& widget, const QString& name);

} // namespace kx::test
