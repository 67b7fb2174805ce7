#pragma once

#include "sim/Scenario.h"

#include <QString>
#include <optional>

class QIODevice;

namespace kx {

// Reads scenario files: a plain text, INI-like format a technician can write by hand (see
// formatHelp()). A file that does not parse yields no scenario and an error that names the
// offending line.
class ScenarioReader {
public:
    std::optional<Scenario> read(QIODevice& device);
    std::optional<Scenario> readFile(const QString& path);
    const QString& errorString() const { return m_error; }

    // The format in brief, for the program's --help.
    static QString formatHelp();

private:
    QString m_error;
};

} // namespace kx
