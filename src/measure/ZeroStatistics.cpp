#include "measure/ZeroStatistics.h"

#include "support/NumberFormat.h"

#include <algorithm>
#include <cmath>

namespace kx {

namespace {
constexpr double FullScaleCodes = 16777216.0; // 2^24
constexpr double FullScaleVolts = 10.0;

double decibels(double ratio) {
    return 20.0 * std::log(ratio) / std::log(10.0);
}
} // namespace

double zeroCodesToVolts(double codes) {
    return codes * FullScaleVolts / FullScaleCodes;
}

double zeroSnrDb(double deviation, int firmwareMajor, int resolutionBits) {
    if (deviation <= 0.0)
        return decibels(std::ldexp(1.0, resolutionBits));
    const double range = firmwareMajor > 1 ? FullScaleCodes : FullScaleCodes / 2.0;
    return decibels(range / deviation);
}

QList<ZeroReadout> zeroReadouts(const ChannelValues& average, const ChannelValues& deviation,
                                int firmwareMajor, int resolutionBits, qsizetype channels) {
    QList<ZeroReadout> readouts;
    const qsizetype reported = std::min({average.size(), deviation.size(), channels});
    for (qsizetype i = 0; i < reported; ++i) {
        ZeroReadout r;
        r.average = average[i];
        r.deviation = deviation[i];
        r.volts = zeroCodesToVolts(r.average);
        r.snrDb = zeroSnrDb(r.deviation, firmwareMajor, resolutionBits);
        r.averageText = formatNumber(r.average, u"0");
        r.voltsText = formatNumber(r.volts, u"0.000");
        r.deviationText = formatNumber(r.deviation, u"0.0");
        r.snrText = formatNumber(r.snrDb, u"0.0");
        readouts.append(r);
    }
    return readouts;
}

} // namespace kx
