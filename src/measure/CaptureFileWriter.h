#pragma once

#include "measure/CaptureTable.h"

#include <QString>
#include <functional>

class QIODevice;

namespace kx {

// Writes a capture table as the comma-separated text file that numerical packages read
// directly: a "%Time(s), ..." header, then one line per row, every line ended by CR LF.
// A separator row becomes a "%NaN, NaN, ..." comment line and restarts the time counter k;
// every other row is "k / f, V1, V2, V3, Fz, Mx, My, CoPx, CoPy" with k counting from 1 in
// its segment (so the first line of a segment is at 1/f, and drift rows are timed as if they
// were single samples), every value with six decimals and "." as decimal sign, and
// "NaN, NaN" for the centre of pressure of a row whose postural Fz is not below minFz.
//
// The writer only reads the table, from the thread that runs it and from helper threads that
// format blocks of rows while it writes: the table must stay unchanged until write() or
// save() has returned. Either call stops early, failing, when the running QThread is asked to
// stop (QThread::requestInterruption).
class CaptureFileWriter {
public:
    CaptureFileWriter(const CaptureTable& table, float sampleFrequency, float minFz);

    // Called with the percentage of rows written, 0 to 100, each time it changes.
    void setProgressHandler(std::function<void(int percent)> handler);

    // Writes the file's text into an open device. False on a failed write.
    bool write(QIODevice& device);

    // Writes the file at `path` through a temporary file in the same folder that replaces
    // the target only once complete, so no reader ever sees a part of the file and a failed
    // save leaves no file behind (and an older file at `path` as it was).
    bool save(const QString& path);

    // What went wrong, for the user, after a false return.
    QString errorString() const { return m_error; }

private:
    // Rows [first, end) of the table; time is the time counter k before the first of them.
    struct Chunk {
        qint32 first;
        qint32 end;
        qint64 time;
    };
    QByteArray format(const Chunk& chunk) const;
    char* appendRow(char* out, const CaptureRow& row, qint64& time) const;
    void reportProgress(qint64 rowsDone);

    const CaptureTable& m_table;
    double m_sampleFrequency;
    float m_minFz;
    int m_percent = -1;
    std::function<void(int)> m_progress;
    QString m_error;
};

} // namespace kx
