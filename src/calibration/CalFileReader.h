#pragma once

#include "calibration/CalibrationRecord.h"

#include <QString>
#include <optional>
#include <vector>

class QIODevice;

namespace kx {

// Reads a calibration file: the record of 39 fields, or one of the shorter records of earlier
// versions, which end after field 17, 28 or 34. What a short record lacks is filled in: the
// linearity steps from `linearityLoads`, not taken; temperatures 0; the environment from
// `environment`. A damaged file gives nothing and a message naming what is wrong; nothing is
// allocated from a count the file has not shown it can hold.
class CalFileReader {
public:
    enum class Layout { ThroughField17, ThroughField28, ThroughField34, Full };

    CalFileReader(CalEnvironment environment, std::vector<float> linearityLoads);

    std::optional<CalibrationRecord> read(QIODevice& device);
    // Opens and reads the file at `path`; a folder or a file that cannot be opened is refused.
    std::optional<CalibrationRecord> readFile(const QString& path);

    const QString& errorString() const { return m_error; }
    Layout layout() const { return m_layout; }

private:
    CalEnvironment m_environment;
    std::vector<float> m_linearityLoads;
    QString m_error;
    Layout m_layout = Layout::Full;
};

} // namespace kx
