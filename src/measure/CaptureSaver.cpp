#include "measure/CaptureSaver.h"

#include "measure/BackgroundPriority.h"
#include "measure/CaptureFileWriter.h"
#include "measure/CaptureJournalReader.h"

#include <QDir>
#include <QThread>

namespace kx {

CaptureSaver::CaptureSaver(QObject* parent)
    : QObject(parent) {}

CaptureSaver::~CaptureSaver() {
    if (m_thread) {
        m_thread->requestInterruption();
        m_thread->wait();
    }
}

void CaptureSaver::start(const QString& journalPath, const QString& path, float sampleFrequency,
                         float minFz) {
    Q_ASSERT(!isRunning());
    m_result = std::make_shared<Result>();
    m_thread.reset(QThread::create([this, journalPath, path, sampleFrequency, minFz,
                                    result = m_result] {
        lowerThisThreadsPriority();
        CaptureJournalReader journal;
        if (!journal.open(journalPath)) {
            result->error = QStringLiteral("The capture journal %1 cannot be read: %2.")
                                .arg(QDir::toNativeSeparators(journalPath), journal.errorString());
            return;
        }
        CaptureFileWriter writer(journal, sampleFrequency, minFz);
        // Queued to this object's thread; dropped if this object is gone by then.
        writer.setProgressHandler([this](int percent) {
            QMetaObject::invokeMethod(
                this, [this, percent] { Q_EMIT progress(percent); }, Qt::QueuedConnection);
        });
        result->ok = writer.save(path);
        result->error = writer.errorString();
    }));
    connect(m_thread.get(), &QThread::finished, this, &CaptureSaver::onThreadFinished);
    m_thread->start();
}

void CaptureSaver::cancel() {
    if (m_thread)
        m_thread->requestInterruption();
}

void CaptureSaver::onThreadFinished() {
    // The thread has left its function; wait() only lets it end.
    m_thread->wait();
    m_thread.reset();
    const Result result = *m_result;
    m_result.reset();
    Q_EMIT finished(result.ok, result.error);
}

} // namespace kx
