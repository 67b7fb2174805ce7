#include "noise/NoiseResultFile.h"

#include "support/SaveAtomically.h"

#include <QFileInfo>
#include <utility>

namespace kx {

QString firstFreeNoiseFile(const QString& folder, const QString& serial) {
    const QString stem = folder + u'/' + serial + QStringLiteral("_Noise_");
    for (qint64 n = 1;; ++n) {
        const QString path = stem + QString::number(n) + QStringLiteral(".TXT");
        if (!QFileInfo::exists(path))
            return path;
    }
}

NoiseResultFile::Outcome NoiseResultFile::save(const QByteArray& contents) {
    if (saveAtomically(m_path, contents)) {
        m_failing = false;
        return Outcome::Saved;
    }
    return std::exchange(m_failing, true) ? Outcome::StillFailing : Outcome::Failed;
}

} // namespace kx
