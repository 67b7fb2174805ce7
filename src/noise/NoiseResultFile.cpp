#include "noise/NoiseResultFile.h"

#include "support/SaveAtomically.h"

#include <QDir>
#include <QFileInfo>

namespace kx {

QString firstFreeNoiseFile(const QString& folder, const QString& serial) {
    const QString stem = folder + u'/' + serial + QStringLiteral("_Noise_");
    for (qint64 n = 1;; ++n) {
        const QString path = stem + QString::number(n) + QStringLiteral(".TXT");
        if (!QFileInfo::exists(path))
            return path;
    }
}

QString besideResultFile(const QString& resultPath, const QString& extension) {
    const QFileInfo results(resultPath);
    return results.dir().filePath(results.completeBaseName() + extension);
}

NoiseResultFile::Outcome NoiseResultFile::save(const QByteArray& contents) {
    const bool wasFailing = failing();
    m_error = saveAtomically(m_path, contents).error;
    if (!failing())
        return Outcome::Saved;
    return wasFailing ? Outcome::StillFailing : Outcome::Failed;
}

NoiseResultFile::Outcome NoiseResultFile::saveAs(const QString& path, const QByteArray& contents) {
    m_path = path;
    return save(contents);
}

} // namespace kx
