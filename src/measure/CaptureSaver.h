#pragma once

#include "measure/CaptureTable.h"

#include <QObject>
#include <QString>
#include <memory>

class QThread;

namespace kx {

// Saves a capture table in the background, so that the window stays responsive while hours
// of samples are written (see CaptureFileWriter for the file and for how a failed save
// leaves the folder).
//
// The table is read on a worker thread from start() until finished(): the caller keeps it
// alive and unchanged until then (appends no rows, does not clear it). After a failed save
// the table is still the caller's, whole, to be saved elsewhere.
class CaptureSaver : public QObject {
    Q_OBJECT
public:
    explicit CaptureSaver(QObject* parent = nullptr);
    // A save still running is stopped and its file not written.
    ~CaptureSaver() override;

    // Starts writing `table` to `path`; returns at once. One save at a time.
    void start(const CaptureTable& table, const QString& path, float sampleFrequency, float minFz);
    bool isRunning() const { return m_thread != nullptr; }

Q_SIGNALS:
    // Rows written so far, in percent; delivered on this object's thread.
    void progress(int percent);
    // The save is over: ok, or the reason it failed, for the user.
    void finished(bool ok, const QString& error);

private:
    struct Result {
        bool ok = false;
        QString error;
    };
    void onThreadFinished();

    std::unique_ptr<QThread> m_thread;
    std::shared_ptr<Result> m_result;
};

} // namespace kx
