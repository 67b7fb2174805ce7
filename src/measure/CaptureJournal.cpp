#include "measure/CaptureJournal.h"

#include "measure/JournalFileWriter.h"
#include "support/Clock.h"

#include <QDir>
#include <QFile>
#include <QThreadPool>
#include <algorithm>
#include <bit>

namespace kx {
namespace {

using journal::RecordSize;

constexpr int FlushIntervalMs = 1000;
// The buffer holds a few seconds of rows, so that a slow disk does not make it grow.
constexpr double BufferSeconds = 4;
constexpr qint64 MinBufferRecords = 1024;
constexpr qint64 MaxBufferRecords = 256 * 1024;
constexpr char Suffix[] = ".kxcj";
constexpr char SetAsideSuffix[] = ".removed";

// FNV-1a over the bits of a sample's volts and forces: what tells the plate's recording of a
// segment from the rows taken live without keeping them.
constexpr quint64 HashStart = 0xcbf29ce484222325ull;
quint64 hashSample(quint64 hash, const Float3& forces, const Float3& volts) {
    for (const Float3* values : {&volts, &forces}) {
        for (const float value : *values) {
            hash ^= std::bit_cast<quint32>(value);
            hash *= 0x100000001b3ull;
        }
    }
    return hash;
}

} // namespace

CaptureJournal::CaptureJournal(Clock& clock, QObject* parent)
    : QObject(parent)
    , m_flushTimer(clock.createTimer(this)) {
    connect(m_flushTimer, &Timer::timeout, this, &CaptureJournal::flush);
}

CaptureJournal::~CaptureJournal() {
    close();
}

QStringList CaptureJournal::journalsIn(const QString& folder) {
    const QDir dir(folder);
    QStringList paths;
    for (const QString& name :
         dir.entryList({u'*' + QLatin1String(Suffix)}, QDir::Files, QDir::Name))
        paths << dir.filePath(name);
    return paths;
}

void CaptureJournal::removeFile(const QString& path) {
    const QString setAside = path + QLatin1String(SetAsideSuffix);
    const QString doomed = QFile::rename(path, setAside) ? setAside : path;
    QThreadPool::globalInstance()->start([doomed] { QFile::remove(doomed); });
}

void CaptureJournal::removeSetAside(const QString& folder) {
    const QDir dir(folder);
    for (const QString& name :
         dir.entryList({u'*' + QLatin1String(Suffix) + QLatin1String(SetAsideSuffix)}, QDir::Files))
        QThreadPool::globalInstance()->start([path = dir.filePath(name)] { QFile::remove(path); });
}

bool CaptureJournal::create(const QString& folder, const CaptureJournalHeader& header) {
    close();
    m_header = header;
    m_records = m_rows = 0;
    m_written = m_buffered = {};
    m_failed = false;
    m_error.clear();
    const qint64 records = std::clamp(static_cast<qint64>(header.sampleFrequency * BufferSeconds),
                                      MinBufferRecords, MaxBufferRecords);
    m_bufferCapacity = static_cast<std::size_t>(records * RecordSize);
    m_buffer.reserve(m_bufferCapacity);

    // Named by when it began, so that journals sort oldest first; a second in the same
    // millisecond gets a number.
    const QString stem =
        QDir(folder).filePath(header.started.toString(QStringLiteral("yyyy-MM-dd hh.mm.ss.zzz")) +
                              u' ' + QString(header.plateSerial).replace(u'/', u'_'));
    // Reports of an earlier file's writer may still be on their way: they are not this one's.
    auto writer =
        std::make_unique<JournalFileWriter>([this, file = ++m_fileNumber](const QString& error) {
            QMetaObject::invokeMethod(
                this,
                [this, file, error] {
                    if (file == m_fileNumber)
                        batchWritten(error);
                },
                Qt::QueuedConnection);
        });
    for (int attempt = 0; attempt < 100; ++attempt) {
        const QString path =
            stem + (attempt ? QStringLiteral(" (%1)").arg(attempt) : QString()) + Suffix;
        if (QFile::exists(path))
            continue;
        if (!writer->create(path, journal::encodeHeader(header), m_bufferCapacity, m_error))
            return false;
        m_path = path;
        m_writer = std::move(writer);
        m_flushTimer->start(FlushIntervalMs);
        return true;
    }
    m_error = QStringLiteral("Too many journals began at %1.").arg(stem);
    return false;
}

char* CaptureJournal::reserveRecord() {
    if (m_buffer.size() + RecordSize > m_bufferCapacity)
        flush(); // a fast plate fills the buffer within the second
    m_buffer.resize(m_buffer.size() + RecordSize);
    ++m_records;
    ++m_buffered.records;
    return m_buffer.data() + m_buffer.size() - RecordSize;
}

void CaptureJournal::appendRecord(const CaptureRow& row) {
    journal::encodeRow(row, reserveRecord());
    ++m_rows;
    ++m_buffered.rows;
}

void CaptureJournal::append(const CaptureRow& row) {
    if (isOpen() && !m_failed)
        appendRecord(row);
}

void CaptureJournal::appendSample(const Float3& forces, const Float3& volts) {
    if (!isOpen() || m_failed)
        return;
    appendRecord(captureRowOf(forces, volts, m_header.minFz));
    if (m_live) {
        ++m_live->count;
        m_live->hash = hashSample(m_live->hash, forces, volts);
    }
}

void CaptureJournal::beginSegment() {
    endSegment();
    appendSeparator();
    if (isOpen() && !m_failed)
        m_live = LiveSegment{m_records, 0, HashStart};
}

void CaptureJournal::endSegment() {
    if (!m_live)
        return;
    m_waitingForBlock.push_back(*m_live);
    m_live.reset();
    for (const Block& block : std::exchange(m_deferredBlocks, {}))
        compareBlock(block);
}

void CaptureJournal::takeBlock(const QList<Float3>& forces, const QList<Float3>& volts) {
    if (!isOpen() || m_failed)
        return;
    if (m_live)
        m_deferredBlocks.push_back({forces, volts});
    else
        compareBlock({forces, volts});
}

void CaptureJournal::compareBlock(const Block& block) {
    const qsizetype count = std::min(block.forces.size(), block.volts.size());
    if (m_waitingForBlock.empty()) {
        appendSeparator();
        for (qsizetype i = 0; i < count; ++i)
            appendRecord(captureRowOf(block.forces[i], block.volts[i], m_header.minFz));
        return;
    }
    const LiveSegment live = m_waitingForBlock.front();
    m_waitingForBlock.pop_front();
    quint64 hash = HashStart;
    for (qsizetype i = 0; i < count; ++i)
        hash = hashSample(hash, block.forces[i], block.volts[i]);
    if (count == live.count && hash == live.hash)
        return;
    journal::encodeReplacement({live.first, live.count, count}, reserveRecord());
    for (qsizetype i = 0; i < count; ++i)
        appendRecord(captureRowOf(block.forces[i], block.volts[i], m_header.minFz));
    m_rows -= live.count;
}

void CaptureJournal::flush() {
    if (!isOpen() || m_failed || m_buffer.empty())
        return;
    if (!m_writer->trySubmit(m_buffer))
        return; // the disk is still busy with the last second: these rows go with the next
    m_inFlight.push_back(m_buffered);
    m_buffered = {};
}

void CaptureJournal::batchWritten(const QString& error) {
    if (!isOpen() || m_inFlight.empty())
        return;
    const Batch batch = m_inFlight.front();
    m_inFlight.pop_front();
    if (!error.isEmpty()) {
        fail(error);
        return;
    }
    m_written.records += batch.records;
    m_written.rows += batch.rows;
    if (m_inFlight.empty() && !m_waiters.empty()) {
        if (m_buffer.empty())
            runWaiters();
        else
            flush();
    }
}

void CaptureJournal::fail(const QString& error) {
    // What was appended after the failed batch would follow a gap: it goes too.
    m_failed = true;
    m_error = error;
    m_records = m_written.records;
    m_rows = m_written.rows;
    m_buffer.clear();
    m_buffered = {};
    m_inFlight.clear();
    m_live.reset();
    m_waitingForBlock.clear();
    m_deferredBlocks.clear();
    m_flushTimer->stop();
    Q_EMIT failed(error, m_rows);
    runWaiters();
}

void CaptureJournal::whenWritten(std::function<void()> then) {
    if (!isOpen() || m_failed || (m_buffer.empty() && m_inFlight.empty())) {
        then();
        return;
    }
    m_waiters.push_back(std::move(then));
    flush();
}

void CaptureJournal::runWaiters() {
    for (const auto& then : std::exchange(m_waiters, {}))
        then();
}

void CaptureJournal::close() {
    if (!m_writer)
        return;
    m_flushTimer->stop();
    if (!m_failed) {
        m_writer->waitUntilIdle();
        m_writer->trySubmit(m_buffer);
    }
    m_writer.reset(); // writes the batch in hand first
    m_buffer = {};
    m_inFlight.clear();
    m_live.reset();
    m_waitingForBlock.clear();
    m_deferredBlocks.clear();
    m_waiters.clear(); // whoever waited is going too
}

void CaptureJournal::remove() {
    close();
    if (!m_path.isEmpty())
        removeFile(m_path);
    m_path.clear();
}

} // namespace kx
