#include "noise/NoiseRunLog.h"

namespace kx {

void NoiseRunLog::add(const QDateTime& when, const QString& entry) {
    m_lines << when.toString(u"yyyy-MM-dd HH:mm:ss") + QStringLiteral("  ") + entry;
    save();
}

void NoiseRunLog::save() {
    // CR LF, as the result file beside it.
    m_file.save((m_lines.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n")).toUtf8());
}

} // namespace kx
