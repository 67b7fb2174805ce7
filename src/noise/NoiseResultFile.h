#pragma once

#include <QByteArray>
#include <QString>
#include <utility>

namespace kx {

// The result file of one dialog opening: folder/<serial>_Noise_<n>.TXT with the first n from 1
// whose file does not exist yet.
QString firstFreeNoiseFile(const QString& folder, const QString& serial);

// A file kept beside the results, named as they are with another extension (".png", ".log").
QString besideResultFile(const QString& resultPath, const QString& extension);

// A file the noise test rewrites whole (the results, the picture, the run's log): every save
// replaces it atomically, so a crash or a full disk leaves the previous complete version. A
// failed save is reported once, when a run of failures begins; the next save simply tries
// again, and the failure stays known until a save works.
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
    // True while the last save failed; error() says why.
    bool failing() const { return !m_error.isEmpty(); }
    const QString& error() const { return m_error; }

    Outcome save(const QByteArray& contents);
    // Saves to another place from now on (where the user chose after failures here).
    Outcome saveAs(const QString& path, const QByteArray& contents);

private:
    QString m_path;
    QString m_error;
};

} // namespace kx
