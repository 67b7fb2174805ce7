#pragma once

#include "measure/CaptureRow.h"

#include <QString>
#include <functional>
#include <vector>

class QIODevice;

namespace kx {

class CaptureJournalReader;

// Writes the rows of a capture journal as the comma-separated text file that numerical packages
// read directly: a "%Time(s), ..." header, then one line per row, every line ended by CR LF. A
// separator row becomes a "%NaN, NaN, ..." comment line and restarts the time counter k; every
// other row is "k / f, V1, V2, V3, Fz, Mx, My, CoPx, CoPy" with k counting from 1 in its segment
// (so the first line of a segment is at 1/f, and drift rows are timed as if they were single
// samples), every value with six decimals and "." as decimal sign, and "NaN, NaN" for the centre of
// pressure of a row whose postural Fz is not below minFz.
//
// The rows are read in chunks and formatted on helper threads while the writer writes the
// chunks before, so memory stays bounded whatever the capture's length. The journal is read
// from its next row on, once. Either write call stops early, failing, when the running
// QThread is asked to stop (QThread::requestInterruption).
class CaptureFileWriter {
public:
    CaptureFileWriter(CaptureJournalReader& rows, float sampleFrequency, float minFz);

    // Called with the percentage of rows written, 0 to 100, each time it changes.
    void setProgressHandler(std::function<void(int percent)> handler);

    // Writes the file's text into an open device. False on a failed write or read.
    bool write(QIODevice& device);

    // Writes the file at `path` through a temporary file in the same folder that replaces
    // the target only once complete and on the disk, so no reader ever sees a part of the
    // file, a failed save leaves no file behind (and an older file at `path` as it was), and a
    // save that succeeded survives a power cut.
    bool save(const QString& path);

    // What went wrong, for the user, after a false return.
    QString errorString() const { return m_error; }

private:
    // Consecutive rows; time is the time counter k before the first of them.
    struct Chunk {
        std::vector<CaptureRow> rows;
        qint64 time;
    };
    QByteArray format(const Chunk& chunk) const;
    char* appendRow(char* out, const CaptureRow& row, qint64& time) const;
    void reportProgress(qint64 rowsDone);

    CaptureJournalReader& m_rows;
    double m_sampleFrequency;
    float m_minFz;
    int m_percent = -1;
    std::function<void(int)> m_progress;
    QString m_error;
};

} // namespace kx
