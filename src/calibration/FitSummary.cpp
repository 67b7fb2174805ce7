#include "calibration/FitSummary.h"

#include "calibration/MatrixFit.h"
#include "resources/StringTable.h"
#include "support/NumberFormat.h"

#include <QStringList>
#include <algorithm>
#include <cmath>

namespace kx {

namespace {
namespace c = strings::calibrate;
} // namespace

FitSummary::Spread FitSummary::spread(double conditionNumber) {
    if (conditionNumber < 100)
        return Spread::Good;
    return conditionNumber < 1000 ? Spread::Fair : Spread::Poor;
}

std::optional<double> FitSummary::largestRelativeUncertainty(const FitResult& fit) {
    const auto& uncertainty = fit.diagnostics.uncertainty;
    if (!uncertainty)
        return std::nullopt;
    double largest = 0;
    for (int row = 0; row < 3; ++row) {
        double scale = 0;
        for (int column = 0; column < 3; ++column)
            scale = std::max(scale, std::abs(double(fit.matrix[row][column])));
        if (scale <= 0)
            continue;
        for (int column = 0; column < 3; ++column)
            largest = std::max(largest, (*uncertainty)[row][column] / scale * 100);
    }
    return largest;
}

QString FitSummary::text(const FitResult& fit, Uncertainty uncertainty) {
    const FitDiagnostics& d = fit.diagnostics;
    QStringList lines;
    lines << strings::text(c::FitPoints).arg(fit.points.size()).arg(fit.m);
    lines << strings::text(c::FitSpread)
                 .arg(strings::text(c::FitSpreadGood + static_cast<int>(spread(d.conditionNumber))))
                 .arg(formatNumber(d.conditionNumber, u"0"));
    lines << strings::text(c::FitScatter)
                 .arg(formatNumber(d.residualRms[0], u"0.000"))
                 .arg(formatNumber(d.residualRms[1], u"0.0000"))
                 .arg(formatNumber(d.residualRms[2], u"0.0000"));
    if (!d.uncertainty) {
        lines << strings::text(c::FitNoUncertainty).arg(fit.m + MinDegreesOfFreedom);
    } else {
        const QString k = formatNumber(d.coverageFactor, u"0.00");
        if (uncertainty == Uncertainty::Summarised)
            lines << strings::text(c::FitUncertainty)
                         .arg(formatNumber(largestRelativeUncertainty(fit).value_or(0), u"0.000"),
                              k, QString::number(d.degreesOfFreedom));
        else
            lines << strings::text(c::FitExpandedUncertainty)
                         .arg(k, QString::number(d.degreesOfFreedom),
                              formatNumber(FitDiagnostics::CellCurvature * 100, u"0.000"));
        if (d.degreesOfFreedom < MinDegreesOfFreedom)
            lines << strings::text(c::FitFewDegrees)
                         .arg(d.degreesOfFreedom)
                         .arg(fit.m)
                         .arg(fit.m + MinDegreesOfFreedom);
    }
    QStringList outliers;
    for (std::size_t k = 0; k < d.flagged.size() && k < fit.points.size(); ++k) {
        if (d.flagged[k])
            outliers << QString::number(fit.points[k] + 1);
    }
    if (outliers.isEmpty())
        lines << strings::text(c::FitAllPointsFit);
    else if (outliers.size() == 1)
        lines << strings::text(c::FitPointDoesNotFit).arg(outliers[0]);
    else
        lines << strings::text(c::FitPointsDoNotFit).arg(outliers.join(QStringLiteral(", ")));
    return lines.join(u'\n');
}

} // namespace kx
