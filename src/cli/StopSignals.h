#pragma once

#include <QObject>

class QSocketNotifier;

namespace kx::cli {

// SIGINT (Ctrl+C) and SIGTERM as a Qt signal on the event loop. The handler only writes the
// signal's number into a socket pair; a notifier reads it and emits received(), so no work
// happens inside the handler. One instance at a time; its destruction gives both signals their
// default action back.
class StopSignals final : public QObject {
    Q_OBJECT
public:
    explicit StopSignals(QObject* parent = nullptr);
    ~StopSignals() override;

Q_SIGNALS:
    void received(int signal);

private:
    void readPending();

    QSocketNotifier* m_notifier = nullptr;
};

} // namespace kx::cli
