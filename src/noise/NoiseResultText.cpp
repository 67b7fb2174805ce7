#include "noise/NoiseResultText.h"

#include "noise/NoisePlan.h"
#include "noise/NoiseResults.h"
#include "support/NumberFormat.h"

namespace kx {

void printInZone(QString& line, const QString& item) {
    line += item;
    const qsizetype next = (line.size() / PrintZoneWidth + 1) * PrintZoneWidth;
    line.resize(next, u' ');
}

QByteArray noiseResultFile(const NoisePlan& plan, const NoiseResults& results) {
    static const NumberFormat excitationPattern(u"0.000");
    static const NumberFormat frequencyPattern(u"000.000");
    static const NumberFormat averagePattern(u"000000.000");
    static const NumberFormat spreadPattern(u"000.000");
    using enum NoiseResults::Statistic;

    QString text;
    QString line;
    for (qsizetype e = 0; e < results.excitations(); ++e) {
        line.clear();
        printInZone(line, excitationPattern.format(plan.excitations[e]));
        for (qsizetype f = 0; f < results.frequencies(); ++f) {
            printInZone(line, frequencyPattern.format(plan.frequencies[f]));
            for (qsizetype c = 0; c < results.channels(); ++c) {
                printInZone(line, averagePattern.format(results.value(R1, c, f, e)));
                printInZone(line, spreadPattern.format(results.value(R2, c, f, e)));
                printInZone(line, spreadPattern.format(results.value(R3, c, f, e)));
            }
        }
        text += line;
        text += u"\r\n";
    }
    return text.toLatin1();
}

QString noiseListLine(const NoisePlan& plan, const NoiseResults& results, qsizetype frequency,
                      qsizetype excitation) {
    static const NumberFormat excitationPattern(u"0.000");
    static const NumberFormat frequencyPattern(u"000.000");
    static const NumberFormat averagePattern(u"0000000.000");
    static const NumberFormat spreadPattern(u"00000.000");
    using enum NoiseResults::Statistic;

    QString line = excitationPattern.format(plan.excitations[excitation]) + QStringLiteral("   ") +
                   frequencyPattern.format(plan.frequencies[frequency]);
    for (qsizetype c = 0; c < results.channels(); ++c) {
        line += QStringLiteral("      ") +
                averagePattern.format(results.value(R1, c, frequency, excitation)) +
                QStringLiteral("   ") +
                spreadPattern.format(results.value(R2, c, frequency, excitation)) +
                QStringLiteral("   ") +
                spreadPattern.format(results.value(R3, c, frequency, excitation));
    }
    return line;
}

} // namespace kx
