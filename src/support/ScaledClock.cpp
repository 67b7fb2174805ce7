#include "support/ScaledClock.h"

#include <algorithm>
#include <cmath>

namespace kx {

namespace {

// A step's work is looked at after every few ms of base time's worth of it, so that a step
// that overruns its budget is noticed soon.
constexpr double ChunkMs = 5;
// The achieved speed is measured over about this much base time, ms.
constexpr quint32 MeasuredOverMs = 1000;
constexpr quint32 ProgressEveryMs = 100;

} // namespace

std::optional<double> speedFromText(const QString& text) {
    bool ok = false;
    const int speed = text.toInt(&ok);
    if (!ok || speed < ScaledClock::MinSpeed || speed > ScaledClock::MaxSpeed)
        return std::nullopt;
    return speed;
}

QString speedRefusal(const QString& text) {
    return QStringLiteral("--speed %1: give a whole number from %2 to %3.")
        .arg(text)
        .arg(ScaledClock::MinSpeed)
        .arg(ScaledClock::MaxSpeed);
}

ScaledClock::ScaledClock(Clock& base, double speed, const std::optional<QDateTime>& origin,
                         QObject* parent)
    : QObject(parent)
    , m_base(base)
    , m_time(base.tickCount(), origin.value_or(base.currentDateTime()))
    , m_wake(base.createTimer(this))
    , m_speed(std::clamp(speed, MinSpeed, MaxSpeed))
    , m_lastBase(base.tickCount()) {
    connect(m_wake, &Timer::timeout, this, &ScaledClock::wake);
    m_progress.push_back({m_lastBase, 0});
    // Something scheduled sooner than the planned wake moves the wake forward.
    m_time.setScheduleListener([this] {
        if (m_depth == 0)
            planWake(true);
    });
    planWake(false);
}

void ScaledClock::setSpeed(double speed) {
    speed = std::clamp(speed, MinSpeed, MaxSpeed);
    if (speed == m_speed)
        return;
    // What passed at the old speed stays owed at the old speed.
    takeBaseTime();
    m_speed = speed;
    m_progress.assign(1, {m_lastBase, m_ownElapsed});
    planWake(false);
    Q_EMIT speedChanged(m_speed);
}

double ScaledClock::achievedSpeed() const {
    const Progress& first = m_progress.front();
    const Progress& last = m_progress.back();
    const quint32 base = last.base - first.base;
    if (base < MeasuredOverMs)
        return m_speed;
    return double(last.own - first.own) / double(base);
}

void ScaledClock::takeBaseTime() {
    const quint32 now = m_base.tickCount();
    m_owedMs += double(quint32(now - m_lastBase)) * m_speed;
    m_lastBase = now;
}

void ScaledClock::wake() {
    takeBaseTime();
    const quint32 began = m_lastBase;
    const double chunk = m_speed * ChunkMs;
    ++m_depth;
    // At least one step, if only to fire what fell due meanwhile at no time.
    do {
        const auto step = static_cast<qint64>(std::min(m_owedMs, chunk));
        m_owedMs -= double(step);
        m_ownElapsed += step;
        m_time.advance(step);
    } while (m_owedMs >= 1 && quint32(m_base.tickCount() - began) < quint32(WorkBudgetMs));
    --m_depth;
    // Behind further than a short stall explains (the machine busy elsewhere for a moment):
    // the handlers cannot keep up, and the time beyond is given up, so the program stays
    // responsive and runs as fast as the machine allows.
    m_owedMs = std::min(m_owedMs, m_speed * MaxBacklogMs);
    noteProgress();
    planWake(false);
}

void ScaledClock::planWake(bool onlyIfSooner) {
    double wallMs = MaxWakeMs;
    if (const std::optional<qint64> due = m_time.msUntilNextDue())
        wallMs = std::min(wallMs, (double(*due) - m_owedMs) / m_speed);
    const int interval = std::clamp(static_cast<int>(std::ceil(wallMs)), 1, MaxWakeMs);
    const quint32 at = m_base.tickCount() + quint32(interval);
    if (onlyIfSooner && m_wake->isEnabled() && qint32(at - m_wakeAt) >= 0)
        return;
    m_wakeAt = at;
    m_wake->start(interval);
}

void ScaledClock::noteProgress() {
    if (quint32(m_lastBase - m_progress.back().base) < ProgressEveryMs)
        return;
    m_progress.push_back({m_lastBase, m_ownElapsed});
    // Keep the newest entry that is at least the measuring time old, and those after it.
    while (m_progress.size() > 2 && m_progress.back().base - m_progress[1].base >= MeasuredOverMs)
        m_progress.pop_front();
}

} // namespace kx
