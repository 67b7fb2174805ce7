#pragma once

#include "calibration/Calibration.h"
#include "support/SaveAtomically.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <optional>

namespace kx {

// Calibration work no file keeps yet, as it is kept safe between runs: the record with what
// the technician was doing (current point, operator, the condition boxes as typed, the file
// the work continues) and when it was kept.
struct KeptWork {
    QString serial; // the plate the work was done on
    QDateTime keptAt;
    Calibration calibration; // record, current point, operators, serial on file, excitation
    QString openFile;        // the calibration file the work continues; empty for a new one
    QString temperature;     // the condition boxes as typed
    QString humidity;
    QString pressure;
};

// The file that keeps a plate's unsaved calibration work: "Recovery/<serial>.calwork" in the
// user's data folder. Each write replaces it whole (written aside, synced, renamed), so a
// crash or a kill leaves the previous version or the new one, never a part.
//
// Layout: the bytes "KXCALWORK", a 32-bit version (little-endian), then a Qt data stream of
// the fields of KeptWork and the calibration record as the calibration file writes it.
class CalibrationRecovery {
public:
    explicit CalibrationRecovery(const QString& serial);

    const QString& path() const { return m_path; }
    bool exists() const;

    [[nodiscard]] SaveResult write(const KeptWork& work) const;
    // The work kept, or nothing with `error` saying why it cannot be read.
    std::optional<KeptWork> read(QString& error) const;
    // Removes the file; true when none is left.
    bool remove() const;
    // Renames an unreadable file out of the way so that new work does not replace it; the name
    // it now has, or empty when it could not be moved.
    QString setAside() const;

    static QByteArray encode(const KeptWork& work);
    static std::optional<KeptWork> decode(const QByteArray& bytes, QString& error);

private:
    QString m_path;
};

} // namespace kx
