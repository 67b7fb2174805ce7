#pragma once

#include "calibration/CalibrationRecord.h"
#include "support/SaveAtomically.h"

#include <QByteArray>
#include <QString>

namespace kx {

// The calibration file: little-endian, no header, the 39 fields in their order. Arrays carry
// a dimension count and per dimension an element count and a lower bound of 0, the first index
// varying fastest (channel before point, step before channel). Booleans are 2 bytes (−1 true).
// Fields the record leaves to us: 2 the point-hit radius (m); 18 the number of linearity steps;
// 24 the scaling zero's standard deviations; 27 each step's applied load (N).
QByteArray writeCalFile(const CalibrationRecord& record);

// Writes the file atomically; false when it could not be written.
SaveResult saveCalFile(const QString& path, const CalibrationRecord& record);

// "<folder>/<serial>_<n>.cal" with n the first number from 1 whose file does not exist.
QString nextCalFileName(const QString& folder, const QString& serial);

} // namespace kx
