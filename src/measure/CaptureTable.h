#pragma once

#include "device/PlateTypes.h"

#include <QList>
#include <QtGlobal>
#include <deque>

namespace kx {

// One row of the capture table: the three parallel tables (volts, forces, postural) at the
// same index, kept together as nine singles.
struct CaptureRow {
    Float3 volts;    // V1, V2, V3
    Float3 forces;   // Fz, Mx, My
    Float3 postural; // Fz, CoPx, CoPy of a loaded sample; all 0 when the plate was unloaded

    // A row whose three voltages are exactly 0 starts a new capture segment.
    bool isSeparator() const { return volts == Float3{}; }
};
static_assert(sizeof(CaptureRow) == 9 * sizeof(float), "a capture hour must stay near 130 MB");

// The captured rows of one signals-display session, in order. Rows are stored in fixed-size
// blocks, so the table grows without ever copying what it holds: an hour at 1000 Hz
// (3.6 million rows) takes about 135 MB. Not thread-safe: a reader on another thread (the
// capture-file writer) needs the table left unchanged until it is done.
class CaptureTable {
public:
    qint32 rowCount() const { return static_cast<qint32>(m_rows.size()); }
    bool isEmpty() const { return m_rows.empty(); }
    const CaptureRow& row(qint32 index) const { return m_rows[static_cast<std::size_t>(index)]; }

    auto begin() const { return m_rows.cbegin(); }
    auto end() const { return m_rows.cend(); }

    // Empties the table and gives its memory back.
    void clear();

    void append(const CaptureRow& row) { m_rows.push_back(row); }
    // A row of nine zeros.
    void appendSeparator() { m_rows.push_back(CaptureRow{}); }

    // A block of samples recorded by the plate library: a separator row, then one row per
    // sample with volts and forces as delivered and the postural part from the threshold
    // minFz (see CentreOfPressure.h). The block is as long as the shorter of the two lists.
    void appendBlock(const QList<Float3>& forces, const QList<Float3>& volts, float minFz);

private:
    std::deque<CaptureRow> m_rows;
};

// The postural part of a capture row: (Fz, CoPx, CoPy) when loaded, else (0, 0, 0).
Float3 posturalOf(const Float3& forces, float minFz);

} // namespace kx
