#pragma once

#include <QString>

namespace kx {

struct CalibrationReport;

// Lays the report out on A4 pages, the plate picture to scale, and writes it as a PDF. The file
// appears only once every page is painted and written; false when it could not be written,
// and then nothing is left at `path` (an earlier file there stays as it was).
bool writeReportPdf(const CalibrationReport& report, const QString& path);

} // namespace kx
