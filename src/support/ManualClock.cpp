#include "support/ManualClock.h"

#include <algorithm>

namespace kx {

class ManualTimer final : public Timer {
public:
    ManualTimer(ManualClock& clock, QObject* parent)
        : Timer(parent)
        , m_clock(&clock) {
        m_clock->m_timers.push_back(this);
    }
    ~ManualTimer() override {
        if (!m_clock)
            return;
        m_clock->disarm(this);
        std::erase(m_clock->m_timers, this);
    }
    void fire(qint64 due) {
        // Re-arm before the handler runs, so a handler that changes the timer wins.
        m_clock->arm(this, due + interval());
        Q_EMIT timeout();
    }
    void forget() { m_clock = nullptr; }

protected:
    void rearm() override {
        if (!m_clock)
            return;
        if (isRunning())
            m_clock->arm(this, m_clock->m_now + interval());
        else
            m_clock->disarm(this);
    }

private:
    ManualClock* m_clock;
};

QDateTime ManualClock::defaultOrigin() {
    return QDateTime(QDate(2024, 3, 14), QTime(9, 30));
}

ManualClock::ManualClock(quint32 start, const QDateTime& origin)
    : m_now(start)
    , m_start(start)
    , m_origin(origin) {}

ManualClock::~ManualClock() {
    // Timers may outlive the clock (their parents own them): cut them loose.
    for (ManualTimer* timer : m_timers)
        timer->forget();
}

Timer* ManualClock::createTimer(QObject* parent) {
    return new ManualTimer(*this, parent);
}

void ManualClock::singleShot(int ms, QObject* context, std::function<void()> action) {
    m_pending.push_back(Pending{m_now + std::max(ms, 0), m_order++, context, std::move(action),
                                context != nullptr});
    if (m_scheduled)
        m_scheduled();
}

void ManualClock::arm(ManualTimer* timer, qint64 due) {
    disarm(timer);
    m_armed.push_back(Armed{timer, due, m_order++});
    if (m_scheduled)
        m_scheduled();
}

void ManualClock::disarm(ManualTimer* timer) {
    std::erase_if(m_armed, [timer](const Armed& a) { return a.timer == timer; });
}

void ManualClock::advance(qint64 ms) {
    const qint64 target = m_now + std::max<qint64>(ms, 0);
    for (;;) {
        auto byTime = [](qint64 due, quint64 order) { return std::pair(due, order); };
        auto timer = std::min_element(m_armed.begin(), m_armed.end(), [&](auto& a, auto& b) {
            return byTime(a.due, a.order) < byTime(b.due, b.order);
        });
        auto shot = std::min_element(m_pending.begin(), m_pending.end(), [&](auto& a, auto& b) {
            return byTime(a.due, a.order) < byTime(b.due, b.order);
        });
        const bool timerDue = timer != m_armed.end() && timer->due <= target;
        const bool shotDue = shot != m_pending.end() && shot->due <= target;
        if (!timerDue && !shotDue)
            break;
        if (timerDue &&
            (!shotDue || byTime(timer->due, timer->order) < byTime(shot->due, shot->order))) {
            m_now = timer->due;
            timer->timer->fire(timer->due);
        } else {
            Pending p = std::move(*shot);
            m_pending.erase(shot);
            m_now = p.due;
            if (!p.hasContext || p.context)
                p.action();
        }
    }
    // A nested advance may already have gone further.
    m_now = std::max(m_now, target);
}

std::optional<qint64> ManualClock::msUntilNextDue() const {
    std::optional<qint64> due;
    const auto consider = [&](qint64 at) { due = std::min(due.value_or(at), at); };
    for (const Armed& a : m_armed)
        consider(a.due);
    for (const Pending& p : m_pending)
        consider(p.due);
    if (due)
        *due = std::max<qint64>(*due - m_now, 0);
    return due;
}

} // namespace kx
