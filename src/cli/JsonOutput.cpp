#include "cli/JsonOutput.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <array>
#include <charconv>
#include <cstdlib>

namespace kx::cli {

double jsonSingle(float value) {
    std::array<char, 32> text{};
    const auto written = std::to_chars(text.data(), text.data() + text.size() - 1, value);
    *written.ptr = '\0';
    return std::strtod(text.data(), nullptr);
}

QString jsonText(const QJsonObject& object) {
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Indented));
}

} // namespace kx::cli
