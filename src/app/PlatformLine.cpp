#include "app/PlatformLine.h"

#include "resources/StringTable.h"

#include <QStringList>
#include <QSysInfo>

namespace kx {

namespace {
constexpr int WindowsNtLine = 28;
}

QString platformLine(const QString& kernelType, const QString& kernelVersion,
                     const QString& productName) {
    if (kernelType == QLatin1String("linux"))
        return strings::text(strings::mainwindow::SplashLinux) + u' ' + kernelVersion;
    if (kernelType == QLatin1String("winnt")) {
        const QStringList parts = kernelVersion.split(u'.');
        return strings::text(WindowsNtLine) + u' ' + parts.value(0, QStringLiteral("0")) + u'.' +
               parts.value(1, QStringLiteral("0"));
    }
    return productName;
}

QString currentPlatformLine() {
    return platformLine(QSysInfo::kernelType(), QSysInfo::kernelVersion(),
                        QSysInfo::prettyProductName());
}

} // namespace kx
