#include "measure/CaptureFileWriter.h"

#include "support/NumberText.h"

#include <QDir>
#include <QIODevice>
#include <QSaveFile>
#include <QThread>
#include <cstring>
#include <string_view>
#include <vector>

namespace kx {
namespace {

constexpr std::string_view kHeader = "%Time(s), V1, V2, V3, Fz, Mx, My, CoPx, CoPy\r\n";
constexpr std::string_view kSeparatorLine = "%NaN, NaN, NaN, NaN, NaN, NaN, NaN, NaN, NaN\r\n";
constexpr std::string_view kNoCentreOfPressure = ", NaN, NaN\r\n";
constexpr int kDecimals = 6;

// Text is gathered into blocks of this size before each write.
constexpr std::size_t kBlockBytes = 1 << 20;
// The longest possible line: nine numbers, their separators and the line end.
constexpr std::size_t kMaxLineBytes = 9 * (kMaxNumberChars + 2) + 2;

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

CaptureFileWriter::CaptureFileWriter(const CaptureTable& table, float sampleFrequency, float minFz)
    : m_table(table)
    , m_sampleFrequency(sampleFrequency)
    , m_minFz(minFz) {}

void CaptureFileWriter::setProgressHandler(std::function<void(int)> handler) {
    m_progress = std::move(handler);
}

char* CaptureFileWriter::appendRow(char* out, const CaptureRow& row) {
    if (row.isSeparator()) {
        m_time = 0;
        return append(out, kSeparatorLine);
    }
    ++m_time;
    out = appendFixed(out, static_cast<double>(m_time) / m_sampleFrequency, kDecimals);
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

void CaptureFileWriter::reportProgress(qint64 rowsDone) {
    const qint64 rows = m_table.rowCount();
    const int percent = rows == 0 ? 100 : static_cast<int>(rowsDone * 100 / rows);
    if (percent == m_percent)
        return;
    m_percent = percent;
    if (m_progress)
        m_progress(percent);
}

bool CaptureFileWriter::write(QIODevice& device) {
    m_time = 0;
    m_percent = -1;
    std::vector<char> block(kBlockBytes);
    char* const first = block.data();
    char* const last = first + block.size() - kMaxLineBytes;
    const auto flush = [&](char* end) {
        const auto size = static_cast<qint64>(end - first);
        if (device.write(first, size) == size)
            return true;
        m_error = device.errorString();
        return false;
    };

    reportProgress(0);
    char* out = append(first, kHeader);
    qint64 done = 0;
    for (const CaptureRow& row : m_table) {
        out = appendRow(out, row);
        ++done;
        if (out < last)
            continue;
        if (!flush(out))
            return false;
        out = first;
        if (QThread::currentThread()->isInterruptionRequested()) {
            m_error = QStringLiteral("The save was stopped.");
            return false;
        }
        reportProgress(done);
    }
    if (!flush(out))
        return false;
    reportProgress(done);
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
    return true;
}

} // namespace kx
