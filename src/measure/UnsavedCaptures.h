#pragma once

#include "measure/CaptureJournalFormat.h"

#include <QObject>
#include <QStringList>
#include <memory>

class QThread;

namespace kx {

class CaptureSaver;
class Prompt;

// Offers back, one at a time and oldest first, the captures that were never saved: journals a
// crash, a killed session or an abandoned save left in the journal folder. For each: "Save"
// (the capture file's usual save dialog, then the save in the background), "Discard" (asked
// once more) or "Later" (kept for the next start). A journal that cannot be read is told
// about once and set aside under another name; one without rows goes quietly.
//
// Each journal is read through in the background before the question, for its row count.
class UnsavedCaptures : public QObject {
    Q_OBJECT
public:
    explicit UnsavedCaptures(Prompt& prompt, QObject* parent = nullptr);
    ~UnsavedCaptures() override;

    // Goes through the journals in `folder`; finished() once every one has an answer.
    void start(const QString& folder);
    // Stops the save under way; its capture is asked about again.
    void cancelSave();

    // A journal that cannot be read is renamed with this added.
    static constexpr char SetAsideSuffix[] = ".unreadable";

Q_SIGNALS:
    // A save of `rows` rows began; progress() follows it until saveEnded().
    void saveStarted(qint64 rows);
    void progress(int percent);
    void saveEnded();
    void finished();

private:
    // What reading a journal through found.
    struct Summary {
        QString path;
        bool readable = false;
        QString error;
        CaptureJournalHeader header;
        qint64 rows = 0;
    };

    void next();
    void summaryRead();
    void ask();
    void saveFinished(bool ok, const QString& error);

    Prompt& m_prompt;
    QStringList m_journals;
    std::unique_ptr<QThread> m_reading;
    std::shared_ptr<Summary> m_summary;
    CaptureSaver* m_saver;
    bool m_cancelled = false;
};

} // namespace kx
