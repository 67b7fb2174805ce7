#include "measure/MeterReadout.h"

#include "resources/StringTable.h"
#include "support/NumberFormat.h"

#include <cmath>

namespace kx {

double meterPeriodMs(qint32 basePeriodMs, qint32 speed) {
    return std::ldexp(static_cast<double>(basePeriodMs), speed - meterspeed::Medium);
}

qint32 meterZeroCodes(int firmwareMajor) {
    return firmwareMajor < 2 ? 1 << 23 : 0;
}

QString meterLine(int channel, double volts) {
    static const NumberFormat signedVolts(u"+0.000000;-0.000000");
    return strings::text(strings::meter::ChannelPrefix) + QString::number(channel) + u' ' +
           signedVolts.format(volts) + strings::text(strings::meter::VoltsSuffix);
}

} // namespace kx
