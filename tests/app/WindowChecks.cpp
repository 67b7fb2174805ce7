#include "WindowChecks.h"

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <algorithm>
#include <gtest/gtest.h>

namespace kx::test {

namespace {

// What a desktop's title bar takes above a window, when the screen's own frame is thinner.
constexpr int TitleBarHeight = 30;

std::string nameOf(const QWidget& widget) {
    return (widget.objectName().isEmpty() ? QString::fromLatin1(widget.metaObject()->className())
                                          : widget.objectName())
        .toStdString();
}

std::string text(const QRect& r) {
    return QStringLiteral("%1 x %2 at (%3, %4)")
        .arg(r.width())
        .arg(r.height())
        .arg(r.x())
        .arg(r.y())
        .toStdString();
}

bool scrollsInto(const QWidget& parent) {
    const auto* area = qobject_cast<const QAbstractScrollArea*>(parent.parentWidget());
    return area && area->viewport() == &parent;
}

} // namespace

void expectEveryTextWhole(const QWidget& window) {
    for (const QWidget* w : window.findChildren<QWidget*>()) {
        if (!w->isVisible())
            continue;
        // Fixed-width push buttons need room for their caption, not for the style's padding.
        if (const auto* push = qobject_cast<const QPushButton*>(w)) {
            EXPECT_LT(push->fontMetrics().horizontalAdvance(push->text().remove(u'&')),
                      push->width())
                << nameOf(*push);
        } else if (const auto* label = qobject_cast<const QLabel*>(w); label && label->wordWrap()) {
            EXPECT_GE(label->height(), label->heightForWidth(label->width())) << nameOf(*label);
        } else if (qobject_cast<const QLabel*>(w) || qobject_cast<const QAbstractButton*>(w)) {
            EXPECT_GE(w->width(), w->sizeHint().width()) << nameOf(*w);
        }
    }
}

void expectWholeOnTheScreen(const QWidget& window) {
    ASSERT_NE(window.screen(), nullptr);
    const QRect screen = window.screen()->availableGeometry();
    const QRect frame = window.frameGeometry();
    const int titleBar = std::max(0, TitleBarHeight - (window.geometry().top() - frame.top()));
    EXPECT_TRUE(frame.width() <= screen.width() && frame.height() + titleBar <= screen.height())
        << nameOf(window) << ": " << frame.width() << " x " << frame.height() + titleBar
        << " with a title bar, on " << text(screen);
    EXPECT_TRUE(screen.contains(frame))
        << nameOf(window) << ": " << text(frame) << " on " << text(screen);
    for (const QWidget* w : window.findChildren<QWidget*>()) {
        const QWidget* parent = w->parentWidget();
        if (!w->isVisible() || w->isWindow() || scrollsInto(*parent))
            continue;
        EXPECT_TRUE(parent->rect().contains(w->geometry()))
            << nameOf(window) << ": " << nameOf(*w) << " " << text(w->geometry()) << " outside "
            << nameOf(*parent) << " " << text(parent->rect());
    }
}

} // namespace kx::test
