#pragma once

#include <QString>
#include <functional>
#include <optional>

class QLineEdit;

namespace kx {

// A number the bench accepts: its caption for messages, the range that makes physical sense
// and its unit.
struct BenchRange {
    QString caption;
    double minimum;
    double maximum;
    QString unit;
};

struct BenchReading {
    std::optional<double> value;
    QString refusal; // why the text was refused, empty when accepted
};

// Reads a number written with "." as decimal sign, whatever the user's locale.
BenchReading readBenchNumber(const QString& text, const BenchRange& range);

// Takes the box's number when it is in range. Otherwise the box gets back the text it had
// when last accepted (or shown), `refuse` hears why, and nothing is returned.
std::optional<double> takeNumber(QLineEdit& box, const BenchRange& range,
                                 const std::function<void(const QString&)>& refuse);
// Shows a value in the box and remembers it as the one to go back to.
void showNumber(QLineEdit& box, const QString& text);

} // namespace kx
