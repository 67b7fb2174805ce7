#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace kx {

// Appends batches of bytes to a file on a thread of its own and waits there until each has
// reached the disk (fdatasync), so that neither the writing nor the disk's wait holds up the
// window. One batch at a time: the next is taken once the last is written.
class JournalFileWriter {
public:
    // Told on the writer's thread after each batch: empty, or why it failed. A failed batch
    // is cut off again, so the file ends where the last good batch ended.
    using Report = std::function<void(const QString& error)>;

    explicit JournalFileWriter(Report report);
    // Writes the batch in hand, then closes the file.
    ~JournalFileWriter();

    // Creates a new file (never replacing one) holding `header`, durably: its contents and its
    // name in the folder. Batches of up to `batchBytes` then take no allocation. False with
    // `error` when it cannot.
    bool create(const QString& path, const QByteArray& header, std::size_t batchBytes,
                QString& error);

    // Hands `bytes` over if no batch is in hand: `bytes` then comes back empty, with the room
    // of an earlier batch, so that the caller can go on appending without allocating. False,
    // leaving `bytes` alone, while the last batch is still being written, and for good once a
    // batch has failed: what follows a lost batch would stand in the wrong place.
    bool trySubmit(std::vector<char>& bytes);
    bool busy() const;
    void waitUntilIdle();

    // Waits for the batch in hand, then closes the file.
    void close();

private:
    void run();
    QString writeBatch();

    Report m_report;
    QFile m_file;
    qint64 m_goodSize = 0; // bytes on the disk, the last batch included
    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    std::condition_variable m_idle;
    std::vector<char> m_batch;
    bool m_hasBatch = false;
    bool m_failed = false;
    bool m_stopping = false;
    std::thread m_thread;
};

} // namespace kx
