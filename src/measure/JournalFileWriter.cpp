#include "measure/JournalFileWriter.h"

#include "measure/DiskSync.h"

#include <QDir>
#include <QFileInfo>

namespace kx {

JournalFileWriter::JournalFileWriter(Report report)
    : m_report(std::move(report)) {}

JournalFileWriter::~JournalFileWriter() {
    close();
}

bool JournalFileWriter::create(const QString& path, const QByteArray& header,
                               std::size_t batchBytes, QString& error) {
    if (!QDir().mkpath(QFileInfo(path).absolutePath())) {
        error = QStringLiteral("The folder %1 cannot be created.")
                    .arg(QDir::toNativeSeparators(QFileInfo(path).absolutePath()));
        return false;
    }
    m_file.setFileName(path);
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered)) {
        error = m_file.errorString();
        return false;
    }
    if (m_file.write(header) != header.size() || !syncToDisk(m_file.handle())) {
        error = m_file.errorString();
        m_file.close();
        m_file.remove();
        return false;
    }
    syncFolderOf(path);
    m_goodSize = header.size();
    m_batch.reserve(batchBytes);
    m_thread = std::thread([this] { run(); });
    return true;
}

bool JournalFileWriter::trySubmit(std::vector<char>& bytes) {
    {
        const std::lock_guard lock(m_mutex);
        if (m_hasBatch || m_failed || !m_thread.joinable())
            return false;
        std::swap(m_batch, bytes);
        m_hasBatch = true;
    }
    bytes.clear();
    m_wake.notify_one();
    return true;
}

bool JournalFileWriter::busy() const {
    const std::lock_guard lock(m_mutex);
    return m_hasBatch;
}

void JournalFileWriter::waitUntilIdle() {
    std::unique_lock lock(m_mutex);
    m_idle.wait(lock, [this] { return !m_hasBatch; });
}

void JournalFileWriter::close() {
    if (!m_thread.joinable())
        return;
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_wake.notify_one();
    m_thread.join();
    m_file.close();
}

void JournalFileWriter::run() {
    for (;;) {
        std::unique_lock lock(m_mutex);
        m_wake.wait(lock, [this] { return m_hasBatch || m_stopping; });
        if (!m_hasBatch)
            return;
        lock.unlock();
        const QString error = writeBatch(); // m_batch is this thread's until m_hasBatch drops
        lock.lock();
        m_batch.clear();
        m_hasBatch = false;
        m_failed = m_failed || !error.isEmpty();
        lock.unlock();
        m_idle.notify_all();
        m_report(error);
    }
}

QString JournalFileWriter::writeBatch() {
    const auto size = static_cast<qint64>(m_batch.size());
    if (m_file.write(m_batch.data(), size) == size && syncToDisk(m_file.handle())) {
        m_goodSize += size;
        return {};
    }
    QString error = m_file.errorString();
    if (error.isEmpty() || m_file.error() == QFileDevice::NoError)
        error = QStringLiteral("The disk took only part of the rows (is it full?).");
    // A part of a batch may have reached the file: cut it, so that what the file holds is
    // exactly what was reported written.
    m_file.resize(m_goodSize);
    m_file.seek(m_goodSize);
    return error;
}

} // namespace kx
