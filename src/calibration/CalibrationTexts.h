#pragma once

#include <QString>
#include <QStringList>

namespace kx {

struct FitErrorRow;
struct OleDate;

// Texts of calibration values as the dialog shows them and the report prints them.

// The short date and the time to the second.
QString dateTimeText(const OleDate& date);

// A row of the error table: the point's number (from 1), Fz "0.000", X and Y "0.000000".
QStringList errorRowTexts(const FitErrorRow& row);

} // namespace kx
