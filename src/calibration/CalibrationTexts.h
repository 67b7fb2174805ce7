#pragma once

#include "support/NumberFormat.h"

#include <QString>
#include <QStringList>
#include <QStringView>
#include <cmath>
#include <optional>

namespace kx {

struct FitErrorRow;
struct OleDate;

// Texts of calibration values as the dialog shows them and the report prints them.

// The short date and the time to the second.
QString dateTimeText(const OleDate& date);

// A value with its pattern (a float in single precision); empty for a value that is not a
// finite number, so that no "Inf" or "NaN" ever reaches the technician.
template <typename T>
QString shownNumber(T value, QStringView pattern) {
    return std::isfinite(value) ? formatNumber(value, pattern) : QString();
}

// A row of the error table: the point's number (from 1), Fz "0.000", X and Y "0.000000".
QStringList errorRowTexts(const FitErrorRow& row);

// What a cell of the matrix means, in words: "Fz per volt of bridge 1: -1234.6 N/V, known to
// ±2.8 N/V". The uncertainty keeps two significant figures and the value is rounded to the
// same place; without a finite uncertainty the value keeps three decimals.
QString matrixCellTip(int row, int column, float value, std::optional<double> uncertainty);

} // namespace kx
