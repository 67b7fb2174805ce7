#pragma once

#include <QString>
#include <QStringView>

namespace kx {

// The text without the spaces at its ends; other white space is kept, as the settings and
// folder rules trim spaces only.
QString trimSpaces(QStringView text);

} // namespace kx
