#include "noise/NoiseResultText.h"

#include "noise/NoisePlan.h"
#include "noise/NoiseResults.h"
#include "resources/StringTable.h"
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

namespace {

// The list's columns: the blanks before each item and the item's pattern.
const QString ExcitationPattern = QStringLiteral("0.000");
const QString FrequencyPattern = QStringLiteral("000.000");
const QString AveragePattern = QStringLiteral("0000000.000");
const QString SpreadPattern = QStringLiteral("00000.000");
constexpr qsizetype FrequencyGap = 3;
constexpr qsizetype ChannelGap = 6;
constexpr qsizetype StatisticGap = 3;
constexpr qsizetype SuspicionGap = 3;

} // namespace

QString noiseListLine(const NoisePlan& plan, const NoiseResults& results, qsizetype frequency,
                      qsizetype excitation) {
    static const NumberFormat excitationPattern(ExcitationPattern);
    static const NumberFormat frequencyPattern(FrequencyPattern);
    static const NumberFormat averagePattern(AveragePattern);
    static const NumberFormat spreadPattern(SpreadPattern);
    using enum NoiseResults::Statistic;

    QString line = excitationPattern.format(plan.excitations[excitation]) +
                   QString(FrequencyGap, u' ') +
                   frequencyPattern.format(plan.frequencies[frequency]);
    for (qsizetype c = 0; c < results.channels(); ++c) {
        line += QString(ChannelGap, u' ') +
                averagePattern.format(results.value(R1, c, frequency, excitation)) +
                QString(StatisticGap, u' ') +
                spreadPattern.format(results.value(R2, c, frequency, excitation)) +
                QString(StatisticGap, u' ') +
                spreadPattern.format(results.value(R3, c, frequency, excitation));
    }
    if (const QString suspicion = suspicionText(results.marks(frequency, excitation));
        !suspicion.isEmpty())
        line += QString(SuspicionGap, u' ') + suspicion;
    return line;
}

QStringList noiseListHeading(qsizetype channels) {
    namespace s = strings::noise;
    QStringList lines(2);
    // Each name ends where its column's figures end.
    const auto column = [&lines](qsizetype gap, const QString& pattern, const QString& name,
                                 const QString& unit) {
        lines[0] += QString(gap, u' ') + name.rightJustified(pattern.size());
        lines[1] += QString(gap, u' ') + unit.rightJustified(pattern.size());
    };
    column(0, ExcitationPattern, strings::text(s::HeadExcitation), strings::text(s::HeadVolts));
    column(FrequencyGap, FrequencyPattern, strings::text(s::HeadFrequency),
           strings::text(s::HeadHertz));
    const QString codes = strings::text(s::HeadCodes);
    for (qsizetype c = 0; c < channels; ++c) {
        column(ChannelGap, AveragePattern, strings::text(s::HeadAverage).arg(c + 1), codes);
        column(StatisticGap, SpreadPattern, strings::text(s::HeadDeviation), codes);
        column(StatisticGap, SpreadPattern, strings::text(s::HeadRange), codes);
    }
    return lines;
}

QString suspicionText(quint8 marks) {
    namespace s = strings::noise;
    QStringList reasons;
    for (const auto& [mark, text] : {std::pair{NoiseResults::Overrun, s::SuspectOverrun},
                                     std::pair{NoiseResults::Clipping, s::SuspectClipping},
                                     std::pair{NoiseResults::LoadChange, s::SuspectLoadChange}}) {
        if (marks & mark)
            reasons << strings::text(text);
    }
    return reasons.isEmpty() ? QString()
                             : strings::text(s::Suspect) + reasons.join(QStringLiteral(", "));
}

} // namespace kx
