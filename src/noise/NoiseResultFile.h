#pragma once

#include <QByteArray>
#include <QString>
#include <utility>

namespace kx {

// The result file of one dialog opening: folder/<serial>_Noise_<n>.TXT with the first n from 1
// whose file does not exist yet.
QString firstFreeNoiseFile(const QString& folder, const QString& serial);

// Keeps the result file whole: every save replaces it atomically, so a crash or a full disk
// leaves the previous complete version. A failed save is reported once, when a run of
// failures begins; the next save simply tries again.
class NoiseResultFile {
public:
    enum class Outcome {
        Saved,
        Failed,      // the first failure since the last save that worked: tell the user
        StillFailing // tried again and failed again: the user knows already
    };

    explicit NoiseResultFile(QString path = {})
        : m_path(std::move(path)) {}

    const QString& path() const { return m_path; }
    // True while the last save failed.
    bool failing() const { return m_failing; }

    Outcome save(const QByteArray& contents);

private:
    QString m_path;
    bool m_failing = false;
};

} // namespace kx
