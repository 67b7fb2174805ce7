#include "noise/NoiseTimeline.h"

#include "noise/NoisePlan.h"
#include "noise/NoiseSequence.h"
#include "resources/StringTable.h"
#include "support/Rounding.h"

#include <QLocale>
#include <algorithm>

namespace kx {

namespace {

constexpr qint64 TickMs = 1000;

qint64 waitMs(const NoisePlan& plan, const NoiseSequence& sequence) {
    return qint64{roundHalfEven(sequence.waitSeconds(plan))} * TickMs + TickMs;
}

} // namespace

NoiseTimeline NoiseTimeline::at(const NoisePlan& plan, const NoiseSequence& sequence,
                                bool measuring, quint32 elapsedMs) {
    const qint64 testMs = roundHalfEven(static_cast<double>(plan.testDuration) * 1000.0);
    NoiseTimeline timeline;
    timeline.tests = plan.frequencyCount() * plan.excitationCount();
    timeline.test =
        sequence.excitationIndex() * plan.frequencyCount() + sequence.frequencyIndex() + 1;
    if (measuring) {
        timeline.remainingMs = std::max<qint64>(testMs - elapsedMs, 0);
    } else {
        timeline.startsInMs = std::max<qint64>(waitMs(plan, sequence) - elapsedMs, 0);
        timeline.remainingMs = *timeline.startsInMs + testMs;
    }
    NoiseSequence later = sequence;
    while (later.advance())
        timeline.remainingMs += waitMs(plan, later) + testMs;
    return timeline;
}

QString NoiseTimeline::text(const QDateTime& now) const {
    namespace s = strings::noise;
    const QDateTime end = now.addMSecs(remainingMs);
    const QString endText =
        QLocale().toString(end, end.date() == now.date() ? u"HH:mm" : u"ddd HH:mm");
    if (startsInMs)
        return strings::text(s::RunWaiting)
            .arg(test)
            .arg(tests)
            .arg(formatDuration(*startsInMs), endText);
    return strings::text(s::RunMeasuring).arg(test).arg(tests).arg(endText);
}

QString formatDuration(qint64 ms) {
    const qint64 seconds = ms / 1000;
    return QStringLiteral("%1:%2:%3")
        .arg(seconds / 3600)
        .arg(seconds / 60 % 60, 2, 10, QLatin1Char('0'))
        .arg(seconds % 60, 2, 10, QLatin1Char('0'));
}

} // namespace kx
