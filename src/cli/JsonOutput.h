#pragma once

#include <QString>

class QJsonObject;

namespace kx::cli {

// A single-precision plate value as JSON shows it: the double nearest to the float's shortest
// decimal form, so 0.01f reads 0.01 and not 0.009999999776482582.
double jsonSingle(float value);

// One JSON document, indented, ending in a line break.
QString jsonText(const QJsonObject& object);

} // namespace kx::cli
