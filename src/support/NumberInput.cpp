#include "support/NumberInput.h"

#include <QLocale>
#include <cmath>

namespace kx {

std::optional<double> parseNumber(const QString& text) {
    static const QLocale plain = [] {
        QLocale c = QLocale::c();
        c.setNumberOptions(QLocale::RejectGroupSeparator);
        return c;
    }();
    bool ok = false;
    const double value = plain.toDouble(text.trimmed(), &ok);
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    return value;
}

} // namespace kx
