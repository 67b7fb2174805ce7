#pragma once

#include <QString>

namespace kx {

// The splash screen's line naming the running system, from QSysInfo's kernel type and
// version: "For Linux 6.1.0-18-amd64", or on Windows the generic NT line with the major and
// minor version ("For Windows NT 10.0"; Qt runs on no Windows older than 10, which the
// named lines cover). Any other system is named by `productName`.
QString platformLine(const QString& kernelType, const QString& kernelVersion,
                     const QString& productName);

// The line for the system this program runs on.
QString currentPlatformLine();

} // namespace kx
