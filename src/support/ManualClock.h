#pragma once

#include "support/Clock.h"

#include <QPointer>
#include <functional>
#include <optional>
#include <vector>

namespace kx {

// A clock that moves only when told to. advance() fires every timer and single shot that
// falls due on the way, in time order (ties in the order they were scheduled), each with the
// tick count set to its own due time, so a five-hour run takes as long as its handlers do.
// Its calendar is a fixed origin plus the time advanced, so dates in tests are exact whatever
// the day they run.
class ManualClock final : public Clock {
public:
    // 14 March 2024, 09:30 local time.
    static QDateTime defaultOrigin();

    explicit ManualClock(quint32 start = 0, const QDateTime& origin = defaultOrigin());
    ~ManualClock() override;

    quint32 tickCount() const override { return static_cast<quint32>(m_now); }
    QDateTime currentDateTime() const override { return m_origin.addMSecs(m_now - m_start); }
    Timer* createTimer(QObject* parent) override;
    void singleShot(int ms, QObject* context, std::function<void()> action) override;

    // A handler may advance again (a nested event loop does): time then never goes back.
    void advance(qint64 ms);
    // Fires what is due now without moving time (events "after the call returns").
    void settle() { advance(0); }

    // Milliseconds until the earliest timer or single shot falls due (0 when one is due now),
    // none when nothing is scheduled.
    std::optional<qint64> msUntilNextDue() const;
    // Told whenever something is scheduled, so that whoever moves this clock can look at
    // msUntilNextDue() again.
    void setScheduleListener(std::function<void()> listener) { m_scheduled = std::move(listener); }

private:
    friend class ManualTimer;
    struct Pending {
        qint64 due;
        quint64 order;
        QPointer<QObject> context;
        std::function<void()> action;
        bool hasContext;
    };
    struct Armed {
        class ManualTimer* timer;
        qint64 due;
        quint64 order;
    };

    void arm(ManualTimer* timer, qint64 due);
    void disarm(ManualTimer* timer);

    qint64 m_now;
    qint64 m_start;
    QDateTime m_origin;
    quint64 m_order = 0;
    std::vector<Pending> m_pending;
    std::vector<Armed> m_armed;
    std::vector<class ManualTimer*> m_timers;
    std::function<void()> m_scheduled;
};

} // namespace kx
