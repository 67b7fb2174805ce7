#include "app/frmSplash.h"

#include "app/PlatformLine.h"
#include "resources/ResourceFiles.h"
#include "resources/StringTable.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QScreen>
#include <QVBoxLayout>

namespace kx {

namespace {
QLabel* namedLabel(const QString& text, const char* name, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setObjectName(QLatin1String(name));
    return label;
}
} // namespace

frmSplash::frmSplash(QWidget* parent)
    : QFrame(parent, Qt::SplashScreen | Qt::WindowStaysOnTopHint)
    , lblTitle(namedLabel(strings::text(1), "lblTitle", this))
    , lblPlatform(namedLabel(currentPlatformLine(), "lblPlatform", this))
    , lblVersion(namedLabel(QStringLiteral("Version ") + QCoreApplication::applicationVersion(),
                            "lblVersion", this))
    , lblCompany(namedLabel(QStringLiteral("Quentral, LLC."), "lblCompany", this)) {
    setObjectName(QStringLiteral("frmSplash"));
    setFrameStyle(QFrame::Panel | QFrame::Raised);
    setLineWidth(2);
    setAttribute(Qt::WA_QuitOnClose, false);

    QFont titleFont = lblTitle->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.8);
    titleFont.setBold(true);
    lblTitle->setFont(titleFont);

    auto* picLogo = new QLabel(this);
    picLogo->setObjectName(QStringLiteral("picLogo"));
    picLogo->setPixmap(QIcon(resources::iconFile(48)).pixmap(48, 48));

    auto* texts = new QVBoxLayout;
    texts->addWidget(lblTitle);
    texts->addWidget(lblPlatform);
    texts->addSpacing(12);
    texts->addWidget(lblVersion);
    texts->addWidget(lblCompany);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(24, 24, 32, 24);
    layout->setSpacing(20);
    layout->addWidget(picLogo, 0, Qt::AlignTop);
    layout->addLayout(texts);

    adjustSize();
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        move(screen->geometry().center() - rect().center());
}

} // namespace kx
