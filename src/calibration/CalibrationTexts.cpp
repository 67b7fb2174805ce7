#include "calibration/CalibrationTexts.h"

#include "calibration/MatrixFit.h"
#include "calibration/OleDate.h"
#include "resources/StringTable.h"
#include "support/DateFormat.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kx {

namespace {
namespace c = strings::calibrate;
} // namespace

QString dateTimeText(const OleDate& date) {
    const QDateTime when = date.toDateTime();
    return formatShortDate(when.date()) + u' ' + when.time().toString(QStringLiteral("HH:mm:ss"));
}

QStringList errorRowTexts(const FitErrorRow& row) {
    return {QString::number(row.point + 1), shownNumber(row.fz, u"0.000"),
            shownNumber(row.x, u"0.000000"), shownNumber(row.y, u"0.000000")};
}

QString matrixCellTip(int row, int column, float value, std::optional<double> uncertainty) {
    static constexpr std::array<const char*, 3> Outputs{"Fz", "Mx", "My"};
    const QString output = QLatin1String(Outputs[std::size_t(row)]);
    const QString units = strings::text(row == 0 ? c::UnitsPerVoltForce : c::UnitsPerVoltMoment);
    if (!uncertainty || !std::isfinite(*uncertainty) || *uncertainty <= 0)
        return strings::text(c::CellTipWithoutUncertainty)
            .arg(output)
            .arg(column + 1)
            .arg(shownNumber(value, u"0.000"), units);
    const int decimals = std::clamp(1 - int(std::floor(std::log10(*uncertainty))), 0, 9);
    const QString pattern =
        decimals > 0 ? QStringLiteral("0.") + QString(decimals, u'0') : QStringLiteral("0");
    return strings::text(c::CellTip)
        .arg(output)
        .arg(column + 1)
        .arg(shownNumber(value, pattern), units, shownNumber(*uncertainty, pattern));
}

} // namespace kx
