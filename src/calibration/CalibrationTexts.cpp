#include "calibration/CalibrationTexts.h"

#include "calibration/MatrixFit.h"
#include "calibration/OleDate.h"
#include "support/DateFormat.h"
#include "support/NumberFormat.h"

namespace kx {

QString dateTimeText(const OleDate& date) {
    const QDateTime when = date.toDateTime();
    return formatShortDate(when.date()) + u' ' + when.time().toString(QStringLiteral("HH:mm:ss"));
}

QStringList errorRowTexts(const FitErrorRow& row) {
    return {QString::number(row.point + 1), formatNumber(row.fz, u"0.000"),
            formatNumber(row.x, u"0.000000"), formatNumber(row.y, u"0.000000")};
}

} // namespace kx
