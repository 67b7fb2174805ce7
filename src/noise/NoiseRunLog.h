#pragma once

#include "noise/NoiseResultFile.h"

#include <QDateTime>
#include <QStringList>

namespace kx {

// The account of an unattended run kept beside its result file, for whoever reads the results
// in the morning: when the run started and on what plan, every test that is suspect and why,
// files that could not be saved, and how the run ended. One line per entry, each beginning
// with its date and time; rewritten whole after every entry, like the result file, so it
// survives a crash. The result file's own layout stays as it always was.
class NoiseRunLog {
public:
    void setPath(const QString& path) { m_file = NoiseResultFile(path); }
    const NoiseResultFile& file() const { return m_file; }

    // Forgets the previous run's entries: one log holds the latest run of the dialog.
    void clear() { m_lines.clear(); }
    // Adds an entry and saves the log.
    void add(const QDateTime& when, const QString& entry);
    // Saves the log again (after failures).
    void save();
    const QStringList& lines() const { return m_lines; }

private:
    NoiseResultFile m_file;
    QStringList m_lines;
};

} // namespace kx
