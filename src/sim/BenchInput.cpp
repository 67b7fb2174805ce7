#include "sim/BenchInput.h"

#include <QLineEdit>
#include <QLocale>
#include <cmath>

namespace kx {

namespace {

constexpr const char* AcceptedText = "kxAcceptedText";

QString number(double value) {
    return QLocale::c().toString(value, 'g', 6);
}

} // namespace

BenchReading readBenchNumber(const QString& text, const BenchRange& range) {
    bool ok = false;
    const double value = QLocale::c().toDouble(text.trimmed(), &ok);
    if (ok && std::isfinite(value) && value >= range.minimum && value <= range.maximum)
        return {value, {}};
    return {std::nullopt, QStringLiteral("%1: \"%2\" refused; give a number from %3 to %4 %5.")
                              .arg(range.caption, text.trimmed(), number(range.minimum),
                                   number(range.maximum), range.unit)};
}

std::optional<double> takeNumber(QLineEdit& box, const BenchRange& range,
                                 const std::function<void(const QString&)>& refuse) {
    const BenchReading reading = readBenchNumber(box.text(), range);
    if (reading.value) {
        box.setProperty(AcceptedText, box.text());
        return reading.value;
    }
    box.setText(box.property(AcceptedText).toString());
    refuse(reading.refusal);
    return std::nullopt;
}

void showNumber(QLineEdit& box, const QString& text) {
    box.setText(text);
    box.setProperty(AcceptedText, text);
}

} // namespace kx
