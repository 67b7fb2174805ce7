#pragma once

#include <QObject>
#include <QString>
#include <memory>

class QThread;

namespace kx {

// Writes the capture file of a capture journal in the background, so that the window stays
// responsive while hours of samples are written (see CaptureFileWriter for the file and for
// how a failed save leaves the folder).
//
// The journal is read on a worker thread from start() until finished(): the caller appends
// nothing to it until then. It is only read: after a failed save it is whole, to be saved
// elsewhere.
class CaptureSaver : public QObject {
    Q_OBJECT
public:
    explicit CaptureSaver(QObject* parent = nullptr);
    // A save still running is stopped and its file not written.
    ~CaptureSaver() override;

    // Starts writing the rows of the journal at `journalPath` to `path`; returns at once. One
    // save at a time.
    void start(const QString& journalPath, const QString& path, float sampleFrequency, float minFz);
    bool isRunning() const { return m_thread != nullptr; }
    // Stops a save as soon as it can: it then finishes, failed, without its file.
    void cancel();

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
