#include "measure/CaptureFileWriter.h"

#include "measure/BackgroundPriority.h"
#include "measure/CaptureJournalReader.h"
#include "measure/DiskSync.h"
#include "support/NumberText.h"

#include <QDir>
#include <QIODevice>
#include <QSaveFile>
#include <QThread>
#include <algorithm>
#include <cstring>
#include <deque>
#include <future>
#include <string_view>
#include <thread>

namespace kx {
namespace {

constexpr std::string_view kHeader = "%Time(s), V1, V2, V3, Fz, Mx, My, CoPx, CoPy\r\n";
constexpr std::string_view kSeparatorLine = "%NaN, NaN, NaN, NaN, NaN, NaN, NaN, NaN, NaN\r\n";
constexpr std::string_view kNoCentreOfPressure = ", NaN, NaN\r\n";
constexpr int kDecimals = 6;

// Rows are formatted in chunks of this many, several at once on helper threads.
constexpr qint64 kChunkRows = 16 * 1024;
// A typical line is about 100 bytes; a chunk's text grows if its lines are longer.
constexpr qsizetype kLineBytesGuess = 128;
// The longest possible line: nine numbers, their separators and the line end.
constexpr qsizetype kMaxLineBytes = 9 * (kMaxNumberChars + 2) + 2;

char* append(char* out, std::string_view text) {
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

char* appendValue(char* out, float value) {
    *out++ = ',';
    *out++ = ' ';
    return appendFixed(out, value, kDecimals);
}

} // namespace

CaptureFileWriter::CaptureFileWriter(CaptureJournalReader& rows, float sampleFrequency, float minFz)
    : m_rows(rows)
    , m_sampleFrequency(sampleFrequency)
    , m_minFz(minFz) {}

void CaptureFileWriter::setProgressHandler(std::function<void(int)> handler) {
    m_progress = std::move(handler);
}

char* CaptureFileWriter::appendRow(char* out, const CaptureRow& row, qint64& time) const {
    if (row.isSeparator()) {
        time = 0;
        return append(out, kSeparatorLine);
    }
    ++time;
    out = appendFixed(out, static_cast<double>(time) / m_sampleFrequency, kDecimals);
    for (const float value : row.volts)
        out = appendValue(out, value);
    for (const float value : row.forces)
        out = appendValue(out, value);
    if (!(row.postural[0] < m_minFz))
        return append(out, kNoCentreOfPressure);
    out = appendValue(out, row.postural[1]);
    out = appendValue(out, row.postural[2]);
    return append(out, "\r\n");
}

QByteArray CaptureFileWriter::format(const Chunk& chunk) const {
    QByteArray text;
    text.resize(qsizetype(chunk.rows.size()) * kLineBytesGuess + kMaxLineBytes);
    char* out = text.data();
    qint64 time = chunk.time;
    for (const CaptureRow& row : chunk.rows) {
        if (text.size() - (out - text.data()) < kMaxLineBytes) {
            const qsizetype used = out - text.data();
            text.resize(2 * text.size());
            out = text.data() + used;
        }
        out = appendRow(out, row, time);
    }
    text.truncate(out - text.data());
    return text;
}

void CaptureFileWriter::reportProgress(qint64 rowsDone) {
    const qint64 rows = m_rows.rowCount();
    const int percent = rows == 0 ? 100 : static_cast<int>(rowsDone * 100 / rows);
    if (percent == m_percent)
        return;
    m_percent = percent;
    if (m_progress)
        m_progress(percent);
}

bool CaptureFileWriter::write(QIODevice& device) {
    m_percent = -1;
    const auto put = [&](const char* data, qint64 size) {
        if (device.write(data, size) == size)
            return true;
        m_error = device.errorString();
        return false;
    };
    reportProgress(0);
    if (!put(kHeader.data(), static_cast<qint64>(kHeader.size())))
        return false;

    // Helper threads format the next chunks while this one writes the oldest, in order. A
    // chunk's starting time counter comes from a look at the separators before it.
    const qint64 rows = m_rows.rowCount();
    const auto inFlight = std::clamp<std::size_t>(std::thread::hardware_concurrency(), 2, 8);
    std::deque<std::future<QByteArray>> pending;
    qint64 read = 0;
    qint64 time = 0;
    const auto launch = [&] {
        Chunk chunk{std::vector<CaptureRow>(std::size_t(std::min(rows - read, kChunkRows))), time};
        const qint64 got = m_rows.read(chunk.rows);
        if (got != qint64(chunk.rows.size())) {
            m_error = got < 0
                          ? m_rows.errorString()
                          : QStringLiteral("The capture journal holds fewer rows than it said.");
            return false;
        }
        for (const CaptureRow& row : chunk.rows)
            time = row.isSeparator() ? 0 : time + 1;
        read += got;
        // Formats on this thread instead when no thread can be had.
        pending.push_back(std::async(std::launch::async | std::launch::deferred,
                                     [this, chunk = std::move(chunk)] {
                                         lowerThisThreadsPriority();
                                         return format(chunk);
                                     }));
        return true;
    };
    qint64 written = 0;
    while (read < rows || !pending.empty()) {
        while (read < rows && pending.size() < inFlight) {
            if (!launch())
                return false;
        }
        const QByteArray text = pending.front().get();
        pending.pop_front();
        if (!put(text.constData(), text.size()))
            return false;
        written += std::min<qint64>(kChunkRows, rows - written);
        if (QThread::currentThread()->isInterruptionRequested()) {
            m_error = QStringLiteral("The save was stopped.");
            return false;
        }
        reportProgress(written);
    }
    reportProgress(rows);
    return true;
}

bool CaptureFileWriter::save(const QString& path) {
    QSaveFile file(path);
    const auto fail = [&](const QString& reason) {
        m_error = QStringLiteral("%1: %2").arg(QDir::toNativeSeparators(path), reason);
        file.cancelWriting();
        return false;
    };
    if (!file.open(QIODevice::WriteOnly))
        return fail(file.errorString());
    if (!write(file))
        return fail(m_error);
    // commit() does not notice a failure to flush what is still buffered, and would publish
    // a cut file.
    if (!file.flush())
        return fail(file.errorString());
    if (!file.commit())
        return fail(file.errorString());
    syncFolderOf(path);
    return true;
}

} // namespace kx
