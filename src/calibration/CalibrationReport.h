#pragma once

#include "calibration/CalMatrix.h"
#include "calibration/PlateDrawing.h"

#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

namespace kx {

struct Calibration;

// A labelled value: "Serial Number" "30417". Labels carry no colon; the layout separates them.
struct ReportField {
    QString label;
    QString value;
    friend bool operator==(const ReportField&, const ReportField&) = default;
};

// A table of texts: a header row, then the rows. The first column holds the rows' heads.
struct ReportTable {
    QStringList header;
    std::vector<QStringList> rows;
    friend bool operator==(const ReportTable&, const ReportTable&) = default;
};

// One part of a page, laid out in this order: its heading, its fields, its table, the plate
// picture (when `picture` is set) and its lines of text.
struct ReportSection {
    QString heading{};
    std::vector<ReportField> fields{};
    std::optional<ReportTable> table{};
    bool picture = false;
    QStringList notes{};
    friend bool operator==(const ReportSection&, const ReportSection&) = default;
};

struct ReportPage {
    std::vector<ReportSection> sections;
    friend bool operator==(const ReportPage&, const ReportPage&) = default;
};

// What a report states that the calibration itself does not hold.
struct ReportFacts {
    QString serial;
    QString firmware;    // "2.3"; empty when not known
    QString calFileName; // the calibration file's name; empty when never saved
    float maxZeroStdDev; // converter codes
    float maxDataStdDev; // normalised volts
    // The matrix the plate held when the report was made, all nine cells read back; none when
    // it was not read. The report says the plate holds the scaled matrix when each cell is the
    // single-precision value OK writes for it.
    std::optional<CalMatrix> plateMatrix{};
};

// The calibration certificate as words and numbers, laid out by a painter of its own: title,
// pages of sections, the plate drawing and the page-number pattern. Everything printed is
// decided here, with the number patterns of the dialog.
struct CalibrationReport {
    QString title;
    std::vector<ReportPage> pages;
    PlateDrawing plate;  // to scale, without a current point
    QString pageNumbers; // %1 this page, %2 the count

    // Nothing when the calibration has no fitted matrix, or its fit is no longer the fit of its
    // points: a certificate states a matrix with the points it was fitted to. The operator is
    // the current one, or the one on file when none is given. The scaled matrix is said to be
    // in the plate only when the plate held it.
    static std::optional<CalibrationReport> build(const Calibration& calibration,
                                                  const ReportFacts& facts);

    friend bool operator==(const CalibrationReport&, const CalibrationReport&) = default;
};

} // namespace kx
